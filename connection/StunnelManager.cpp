#include "StunnelManager.h"

#include "FreePort.h"

#include <QDebug>
#include <QFile>
#include <QTextStream>

StunnelManager::StunnelManager(QObject* parent)
    : QObject(parent)
    , process(new QProcess(this))
    , program(QStringLiteral("stunnel4"))
    , pidFile(QStringLiteral("/tmp/tavrin-stunnel.pid"))
{ }

StunnelManager::~StunnelManager()
{
    killProcess();
}

void StunnelManager::setConfigAndRunProcess(const QString& host, int port, const QString& sni)
{
    killProcess();
    localPort = getAvailablePort();
    if (!makeConfigFile(host, port, sni))
        return;
    const QStringList arguments {configFilePath()};
    qDebug() << "Run stunnel:" << program << "with args:" << arguments;
    process->start(program, arguments, QIODevice::ReadWrite);
}

int StunnelManager::getPort() const
{
    return localPort;
}

int StunnelManager::getAvailablePort()
{
    return findFreeLocalPort();
}

QString StunnelManager::configFilePath() const
{
    return configDir.path() + QStringLiteral("/stunnel.conf");
}

bool StunnelManager::makeConfigFile(const QString& host, int port, const QString& sni)
{
    if (!configDir.isValid())
        return false;
    QFile file(configFilePath());
    const bool opened = file.open(QIODevice::WriteOnly | QIODevice::Truncate);
    const QStringList lines {
        QStringLiteral("sslVersion = all"),
        QStringLiteral("socket = l:TCP_NODELAY=1"),
        QStringLiteral("socket = r:TCP_NODELAY=1"),
        QStringLiteral("pid =%1").arg(pidFile),
        QStringLiteral("[openvpn]"),
        QStringLiteral("client = yes"),
        QStringLiteral("sni = %1").arg(sni),
        QStringLiteral("accept = 127.0.0.1:%1").arg(localPort),
        QStringLiteral("connect = %1:%2").arg(host).arg(port),
    };
    for (const QString& line : lines)
        file.write((line + QStringLiteral("\r\n")).toUtf8());
    file.close();
    qDebug() << "Stunnel config file: " << file.fileName();
    return opened;
}

void StunnelManager::killProcess()
{
    QFile file(pidFile);
    int pid = 0;
    if (file.open(QIODevice::ReadOnly | QIODevice::Text))
        pid = QTextStream(&file).readLine().toInt();
    if (pid < 1) {
        qDebug() << "Can't kill stunnel. Invalid pid.";
        return;
    }
    QProcess::execute(QStringLiteral("kill"), {QString::number(pid)});
}

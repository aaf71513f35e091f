#include "OpenVpnLauncher.h"

#include "OpenVpnArguments.h"
#include "OpenVpnConfigCheck.h"
#include "TrustedFile.h"

#include <QDebug>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>

namespace {
constexpr qint64 MaxConfigSize = 1 << 20;
constexpr int StopTimeoutMs = 5000;
constexpr int ManagementWaitMs = 2000;

// Whether something listens on 127.0.0.1:port, from the kernel's socket table, without
// connecting (OpenVPN's management port takes one client only).
bool isListening(quint16 port)
{
    QFile table(QStringLiteral("/proc/net/tcp"));
    if (!table.open(QIODevice::ReadOnly))
        return false;
    const QByteArray local
        = QByteArrayLiteral("0100007F:") + QByteArray::number(port, 16).toUpper().rightJustified(4, '0');
    const QList<QByteArray> lines = table.readAll().split('\n');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() > 3 && fields.at(1) == local && fields.at(3) == "0A")
            return true;
    }
    return false;
}
} // namespace

OpenVpnLauncher::OpenVpnLauncher(const QString& stateDir, const QString& resolverScript, QObject* parent)
    : QObject(parent)
    , m_stateDir(stateDir)
    , m_resolverScript(resolverScript)
{ }

OpenVpnLauncher::~OpenVpnLauncher()
{
    stop();
}

void OpenVpnLauncher::stop()
{
    if (!m_process)
        return;
    QProcess* process = m_process;
    m_process = nullptr;
    if (process->state() != QProcess::NotRunning) {
        qInfo() << "openvpn: stopping pid" << process->processId();
        process->terminate();
        if (!process->waitForFinished(StopTimeoutMs)) {
            process->kill();
            process->waitForFinished(StopTimeoutMs);
        }
    }
    delete process;
}

bool OpenVpnLauncher::start(const QString& arguments, qint64 callerUid)
{
    m_error.clear();
    OpenVpnArguments args;
    if (!args.parse(arguments)) {
        m_error = QStringLiteral("arguments refused: %1").arg(args.error());
        return false;
    }
    QByteArray config;
    TrustedFile file(args.configPath(), callerUid);
    if (!file.read(MaxConfigSize, config)) {
        m_error = QStringLiteral("configuration refused: %1").arg(file.error());
        return false;
    }
    OpenVpnConfigCheck check;
    if (!check.check(config)) {
        m_error = QStringLiteral("configuration refused: %1").arg(check.error());
        return false;
    }

    stop();

    QDir().mkpath(m_stateDir);
    const QString copy = m_stateDir + QStringLiteral("/openvpn.conf");
    QFile::remove(copy);
    QFile out(copy);
    if (!out.open(QIODevice::WriteOnly | QIODevice::NewOnly)
        || !out.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner)
        || out.write(config) != config.size()) {
        m_error = QStringLiteral("cannot write %1").arg(copy);
        return false;
    }
    out.close();

    m_process = new QProcess(this);
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    // Relative file names in the configuration mean what they meant beside the original.
    m_process->setWorkingDirectory(QFileInfo(args.configPath()).absolutePath());
    connect(m_process, &QProcess::readyRead, this, &OpenVpnLauncher::onOutput);
    connect(m_process, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this, [](int code) {
        qInfo() << "openvpn: exited with code" << code;
    });
    QStringList argv {QStringLiteral("--config"),
                      copy,
                      QStringLiteral("--management"),
                      QStringLiteral("127.0.0.1"),
                      QString::number(args.managementPort()),
                      QStringLiteral("--management-query-passwords"),
                      QStringLiteral("--script-security"),
                      QStringLiteral("2"),
                      QStringLiteral("--up"),
                      m_resolverScript,
                      QStringLiteral("--down"),
                      m_resolverScript};
    // OpenVPN hands its scripts only the variables it sets itself: pass the test root on.
    const QString root = QProcessEnvironment::systemEnvironment().value(QStringLiteral("TAVRIN_HELPERD_ROOT"));
    if (!root.isEmpty())
        argv << QStringLiteral("--setenv") << QStringLiteral("TAVRIN_HELPERD_ROOT") << root;
    m_process->start(QStringLiteral("openvpn"), argv);
    if (!m_process->waitForStarted(StopTimeoutMs)) {
        m_error = QStringLiteral("openvpn cannot be started: %1").arg(m_process->errorString());
        delete m_process;
        m_process = nullptr;
        return false;
    }
    qInfo() << "openvpn: started pid" << m_process->processId() << "management port" << args.managementPort();
    // The client connects to the management port as soon as we answer and retries only every
    // 100 ms: answering once OpenVPN listens saves it that wait.
    QElapsedTimer clock;
    clock.start();
    while (!isListening(args.managementPort()) && clock.elapsed() < ManagementWaitMs
           && m_process->state() == QProcess::Running)
        QThread::msleep(2);
    qInfo() << "openvpn: management port" << (isListening(args.managementPort()) ? "open" : "not open yet") << "after"
            << clock.elapsed() << "ms";
    return true;
}

void OpenVpnLauncher::onOutput()
{
    auto* process = qobject_cast<QProcess*>(sender());
    while (process && process->canReadLine())
        qInfo().noquote() << "openvpn:" << QString::fromLocal8Bit(process->readLine()).trimmed();
}

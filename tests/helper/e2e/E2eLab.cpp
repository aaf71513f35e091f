#include "E2eLab.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTcpServer>
#include <QThread>

#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const char* const ClientNamespace = "/run/netns/tvn-e2e-cli";

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

E2eLab::E2eLab()
    : m_dir(QDir::tempPath() + QStringLiteral("/tvn-e2e-XXXXXX"))
{ }

E2eLab::~E2eLab()
{
    stop();
}

QString E2eLab::missingPrerequisite()
{
    if (::geteuid() != 0)
        return QStringLiteral("needs root to create network namespaces (run as root, as CI does)");
    const int tun = ::open("/dev/net/tun", O_RDWR | O_CLOEXEC);
    if (tun < 0)
        return QStringLiteral("/dev/net/tun is missing or cannot be opened");
    ::close(tun);
    for (const char* program : {"ip", "nft", "openvpn", "stunnel4", "openssl", "ping", "ss"}) {
        if (QStandardPaths::findExecutable(QLatin1String(program)).isEmpty()
            && QStandardPaths::findExecutable(QLatin1String(program),
                                              {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")})
                   .isEmpty())
            return QStringLiteral("%1 is not installed (scripts/install-deps)").arg(QLatin1String(program));
    }
    return QString();
}

bool E2eLab::runLab(const QString& command)
{
    QProcess lab;
    lab.setProcessChannelMode(QProcess::MergedChannels);
    lab.start(QStringLiteral(TAVRIN_NETNS_LAB), {command, dir()});
    const bool ok = lab.waitForFinished(120000) && lab.exitStatus() == QProcess::NormalExit && lab.exitCode() == 0;
    if (!ok)
        m_error = QStringLiteral("netns-lab.sh %1 failed: %2").arg(command, QString::fromLocal8Bit(lab.readAll()));
    return ok;
}

bool E2eLab::start()
{
    if (!m_dir.isValid()) {
        m_error = QStringLiteral("no temporary directory");
        return false;
    }
    m_started = true;
    // Runs are serialised, so any other lab directory is a leftover of a run that was killed.
    const QStringList stale = QDir::temp().entryList({QStringLiteral("tvn-e2e-*")}, QDir::Dirs);
    for (const QString& name : stale) {
        if (QDir::temp().filePath(name) != dir())
            QDir(QDir::temp().filePath(name)).removeRecursively();
    }
    if (!runLab(QStringLiteral("up")))
        return false;

    QDir().mkpath(dir() + QStringLiteral("/root/etc"));
    QFile resolv(resolvConf());
    if (!resolv.open(QIODevice::WriteOnly) || resolv.write(originalResolvConf()) < 0) {
        m_error = QStringLiteral("cannot write %1").arg(resolvConf());
        return false;
    }
    resolv.close();

    // From here on this process, and everything it starts, lives in the client namespace.
    m_ownNamespace = ::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
    const int client = ::open(ClientNamespace, O_RDONLY | O_CLOEXEC);
    if (m_ownNamespace < 0 || client < 0 || ::setns(client, CLONE_NEWNET) != 0) {
        if (client >= 0)
            ::close(client);
        m_error = QStringLiteral("cannot enter the client namespace");
        return false;
    }
    ::close(client);
    m_inClient = true;

    quint16 port = 0;
    {
        QTcpServer probe;
        if (!probe.listen(QHostAddress::LocalHost, 0)) {
            m_error = QStringLiteral("no loopback in the client namespace");
            return false;
        }
        port = probe.serverPort();
    }
    qputenv("TAVRIN_HELPER_PORT", QByteArray::number(port));

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("TAVRIN_HELPERD_ROOT"), dir() + QStringLiteral("/root"));
    env.insert(QStringLiteral("TAVRIN_HELPERD_SCRIPT"), QStringLiteral(TAVRIN_RESOLVER_SCRIPT));
    m_daemon.setProcessEnvironment(env);
    m_daemon.setProcessChannelMode(QProcess::MergedChannels);
    m_daemon.start(QStringLiteral(TAVRIN_HELPERD_PATH), {QStringLiteral("--port"), QString::number(port)});
    if (!m_daemon.waitForStarted()) {
        m_error = QStringLiteral("tavrin-helperd does not start");
        return false;
    }
    for (int i = 0; i < 100 && !m_daemonLog.contains("listening on"); ++i) {
        m_daemon.waitForReadyRead(100);
        m_daemonLog += m_daemon.readAll();
    }
    if (!m_daemonLog.contains("listening on")) {
        m_error = QStringLiteral("tavrin-helperd does not listen: %1").arg(QString::fromLocal8Bit(m_daemonLog));
        return false;
    }
    return true;
}

QByteArray E2eLab::daemonLog()
{
    m_daemonLog += m_daemon.readAll();
    return m_daemonLog;
}

void E2eLab::stop()
{
    if (m_daemon.state() != QProcess::NotRunning) {
        m_daemon.terminate(); // takes its OpenVPN with it
        if (!m_daemon.waitForFinished(10000)) {
            m_daemon.kill();
            m_daemon.waitForFinished();
        }
    }
    if (m_inClient && m_ownNamespace >= 0)
        ::setns(m_ownNamespace, CLONE_NEWNET);
    m_inClient = false;
    if (m_ownNamespace >= 0)
        ::close(m_ownNamespace);
    m_ownNamespace = -1;
    if (m_started)
        runLab(QStringLiteral("down"));
    m_started = false;
}

int E2eLab::processesInClient(const QByteArray& name) const
{
    struct stat client;
    if (::stat(ClientNamespace, &client) != 0)
        return 0;
    int count = 0;
    const QStringList pids = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString& pid : pids) {
        if (!pid.at(0).isDigit())
            continue;
        if (readFile(QStringLiteral("/proc/%1/comm").arg(pid)).trimmed() != name)
            continue;
        struct stat ns;
        const QByteArray path = QStringLiteral("/proc/%1/ns/net").arg(pid).toLocal8Bit();
        if (::stat(path.constData(), &ns) == 0 && ns.st_ino == client.st_ino && ns.st_dev == client.st_dev)
            ++count;
    }
    return count;
}

QByteArray E2eLab::clientCert() const
{
    return readFile(dir() + QStringLiteral("/pki/client.crt"));
}

QByteArray E2eLab::clientKey() const
{
    return readFile(dir() + QStringLiteral("/pki/client.key"));
}

QByteArray E2eLab::clientTemplate() const
{
    // Shaped like the service's: protocol-specific lines are comments the generator uncomments.
    QByteArray t = "client\r\n"
                   "dev tun\r\n"
                   "nobind\r\n"
                   "persist-key\r\n"
                   "#udp explicit-exit-notify 1\r\n"
                   "#tcp connect-timeout 5\r\n"
                   "#stealth connect-timeout 5\r\n"
                   "remote-cert-tls server\r\n"
                   "verify-x509-name server name\r\n"
                   "auth-user-pass\r\n"
                   "auth-nocache\r\n"
                   "data-ciphers AES-256-GCM:AES-128-GCM\r\n"
                   "connect-retry 1 1\r\n"
                   "verb 3\r\n";
    t += "<ca>\r\n" + readFile(dir() + QStringLiteral("/pki/ca.crt")) + "</ca>\r\n";
    t += "<tls-crypt>\r\n" + readFile(dir() + QStringLiteral("/pki/ta.key")) + "</tls-crypt>\r\n";
    return t;
}

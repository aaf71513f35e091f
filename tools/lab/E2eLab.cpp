#include "E2eLab.h"

#include "MakeOVPNFile.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTcpServer>

#include <csignal>
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
    const QStringList path = QString::fromLocal8Bit(qgetenv("PATH")).split(QLatin1Char(':'))
        + QStringList {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")};
    for (const char* program : {"ip", "nft", "openvpn", "stunnel4", "openssl", "ping", "ss"}) {
        if (QStandardPaths::findExecutable(QLatin1String(program), path).isEmpty())
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
    m_started = true;
    // Runs are serialised, so any other lab directory is a leftover of a run that was killed.
    for (const QString& name : QDir::temp().entryList({QStringLiteral("tvn-e2e-*")}, QDir::Dirs)) {
        if (QDir::temp().filePath(name) != dir())
            QDir(QDir::temp().filePath(name)).removeRecursively();
    }
    // Nothing started from here may keep what this process inherited, such as the lock that keeps
    // runs apart: a child that a killed run left behind would hold it for good.
    for (const QString& fd : QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System)) {
        if (fd.toInt() > 2)
            ::fcntl(fd.toInt(), F_SETFD, FD_CLOEXEC);
    }
    if (!m_dir.isValid() || !runLab(QStringLiteral("up")))
        return false;
    QFile resolv(resolvConf());
    if (!QDir().mkpath(dir() + QStringLiteral("/root/etc")) || !resolv.open(QIODevice::WriteOnly)
        || resolv.write(originalResolvConf()) < 0) {
        m_error = QStringLiteral("cannot write %1").arg(resolvConf());
        return false;
    }
    resolv.close();

    // From here on this process, and everything it starts, lives in the client namespace.
    m_ownNamespace = ::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
    const int client = ::open(ClientNamespace, O_RDONLY | O_CLOEXEC);
    m_inClient = m_ownNamespace >= 0 && client >= 0 && ::setns(client, CLONE_NEWNET) == 0;
    if (client >= 0)
        ::close(client);
    QTcpServer probe;
    if (!m_inClient || !probe.listen(QHostAddress::LocalHost, 0)) {
        m_error = QStringLiteral("cannot enter the client namespace or listen on its loopback");
        return false;
    }
    m_port = QString::number(probe.serverPort());
    probe.close();
    qputenv("TAVRIN_HELPER_PORT", m_port.toLatin1());

    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("TAVRIN_HELPERD_ROOT"), dir() + QStringLiteral("/root"));
    env.insert(QStringLiteral("TAVRIN_HELPERD_SCRIPT"), QStringLiteral(TAVRIN_RESOLVER_SCRIPT));
    env.insert(QStringLiteral("TAVRIN_HELPERD_DPKG_ROOT"), dir() + QStringLiteral("/dpkg-root"));
    m_daemon.setProcessEnvironment(env);
    m_daemon.setProcessChannelMode(QProcess::MergedChannels);
    return startDaemon();
}

bool E2eLab::startDaemon()
{
    if (m_daemon.isOpen())
        daemonLog(); // what the one before said last
    const int from = m_daemonLog.size();
    m_daemon.start(QStringLiteral(TAVRIN_HELPERD_PATH), {QStringLiteral("--port"), m_port});
    for (int i = 0;
         i < 100 && m_daemon.state() != QProcess::NotRunning && m_daemonLog.indexOf("listening on", from) < 0;
         ++i) {
        m_daemon.waitForReadyRead(100);
        m_daemonLog += m_daemon.readAll();
    }
    if (m_daemonLog.indexOf("listening on", from) < 0) {
        m_error
            = QStringLiteral("tavrin-helperd does not listen: %1").arg(QString::fromLocal8Bit(m_daemonLog.mid(from)));
        return false;
    }
    return true;
}

bool E2eLab::stopDaemon(int signal)
{
    daemonLog();
    return m_daemon.state() != QProcess::NotRunning && ::kill(pid_t(m_daemon.processId()), signal) == 0
        && m_daemon.waitForFinished(15000);
}

bool E2eLab::setServerLink(bool up)
{
    return QProcess::execute(QStringLiteral("ip"),
                             {"-n", "tvn-e2e-srv", "link", "set", "tvn-e2e-s", up ? "up" : "down"})
        == 0;
}

QByteArray E2eLab::daemonLog()
{
    m_daemonLog += m_daemon.readAll();
    return m_daemonLog;
}

void E2eLab::stop()
{
    // SIGTERM takes its OpenVPN with it.
    if (m_daemon.state() != QProcess::NotRunning && !stopDaemon(SIGTERM)) {
        m_daemon.kill();
        m_daemon.waitForFinished();
    }
    if (m_inClient)
        ::setns(m_ownNamespace, CLONE_NEWNET);
    m_inClient = false;
    if (m_ownNamespace >= 0)
        ::close(m_ownNamespace);
    m_ownNamespace = -1;
    if (m_started)
        runLab(QStringLiteral("down"));
    m_started = false;
}

QStringList E2eLab::processIdsInClient(const QByteArray& name) const
{
    struct stat client;
    if (::stat(ClientNamespace, &client) != 0)
        return {};
    QStringList pids;
    for (const QString& pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        struct stat ns;
        if (pid.at(0).isDigit() && readFile(QStringLiteral("/proc/%1/comm").arg(pid)).trimmed() == name
            && ::stat(QStringLiteral("/proc/%1/ns/net").arg(pid).toLocal8Bit().constData(), &ns) == 0
            && ns.st_ino == client.st_ino && ns.st_dev == client.st_dev)
            pids << pid;
    }
    return pids;
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
    return "client\r\ndev tun\r\nnobind\r\npersist-key\r\n#udp explicit-exit-notify 1\r\n#tcp connect-timeout 5\r\n"
           "#stealth connect-timeout 5\r\nremote-cert-tls server\r\nverify-x509-name server name\r\n"
           "auth-user-pass\r\nauth-nocache\r\ndata-ciphers AES-256-GCM:AES-128-GCM\r\nconnect-retry 1 1\r\nverb 3\r\n"
           "<ca>\r\n"
        + readFile(dir() + QStringLiteral("/pki/ca.crt")) + "</ca>\r\n<tls-crypt>\r\n"
        + readFile(dir() + QStringLiteral("/pki/ta.key")) + "</tls-crypt>\r\n";
}

bool E2eLab::writeClientConfig(MakeOVPNFile& file, const QString& protocol, int stunnelPort) const
{
    ConfigServer c;
    c.protocol = protocol;
    c.ports = QStringList(protocol == QLatin1String("udp") ? QStringLiteral("1194") : QStringLiteral("80"));
    c.ip = QLatin1String(ServerAddress);
    c.cert = clientCert();
    c.key = clientKey();
    c.config = clientTemplate();
    c.stunnelPort = stunnelPort;
    return stunnelPort ? file.generateStunnel(c) : file.generate(c);
}

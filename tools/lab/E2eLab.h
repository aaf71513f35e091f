#pragma once

// The network namespaces, servers and PKI of netns-lab.sh, seen from a test or a benchmark
// process: builds and removes them, moves this process into the client namespace and back,
// runs the helper daemon there and writes the client's configuration template.

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

class MakeOVPNFile;

class E2eLab
{
public:
    static constexpr const char* ServerAddress = "10.231.0.1";
    static constexpr const char* StrayAddress = "10.231.0.3"; // neither allowed nor behind a tunnel
    static constexpr const char* UdpTunnelServer = "10.232.0.1";
    static constexpr const char* TcpTunnelServer = "10.233.0.1";
    static constexpr const char* User = "vpnuser";
    static constexpr const char* Password = "s3cret-Pass";
    static constexpr int StealthPort = 443;

    E2eLab();
    ~E2eLab();

    // Empty when the lab can run here; otherwise why not (for QSKIP).
    static QString missingPrerequisite();

    // Builds the lab, enters the client namespace and starts the daemon; false with error().
    bool start();
    // Idempotent; also run by the destructor.
    void stop();
    QString error() const { return m_error; }

    QString dir() const { return m_dir.path(); }
    QString resolvConf() const { return dir() + QStringLiteral("/root/etc/resolv.conf"); }
    QByteArray originalResolvConf() const { return "nameserver 192.0.2.53\n"; }
    QByteArray clientTemplate() const;
    QByteArray clientCert() const;
    QByteArray clientKey() const;
    // Writes the client's configuration for the lab's server as the program does ("udp", "tcp", or
    // "tcp" behind a local stunnel on stunnelPort); false when the file cannot be written.
    bool writeClientConfig(MakeOVPNFile& file, const QString& protocol, int stunnelPort = 0) const;
    QByteArray daemonLog();
    qint64 daemonPid() const { return m_daemon.processId(); }
    // Ends the daemon with that signal (SIGKILL as in a crash) and waits until it is gone.
    bool stopDaemon(int signal);
    // Starts the daemon as start() did, with the same environment and port; false with error().
    bool startDaemon();
    // Takes the server's end of the link down or up, as a network that drops out and comes back.
    static bool setServerLink(bool up);
    static constexpr const char* ClientLink = "tvn-e2e-c";

    // Processes of that name running in the client namespace: their pids, and how many.
    QStringList processIdsInClient(const QByteArray& name) const;
    int processesInClient(const QByteArray& name) const { return processIdsInClient(name).size(); }
    // A raw OpenVPN client run by hand in the client namespace (benchmark baseline).
    static QString openvpnProgram() { return QStringLiteral("openvpn"); }

private:
    bool runLab(const QString& command);

    QTemporaryDir m_dir;
    QProcess m_daemon;
    QString m_port;
    QByteArray m_daemonLog;
    int m_ownNamespace = -1;
    bool m_inClient = false;
    bool m_started = false;
    QString m_error;
};

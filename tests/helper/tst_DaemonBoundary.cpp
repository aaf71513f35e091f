// What an ordinary local account can make the helper daemon do. Two accounts of the test's own
// talk to the daemon in the e2e lab's client namespace (see tools/lab/netns-lab.sh): B tries each way to
// act as root or on A's tunnel and must be refused with nothing changed, while A, not root
// either, uses the firewall, OpenVPN and the time zone the way the client does.

#include "E2eLab.h"

#include "MakeOVPNFile.h"
#include "WireClient.h"

#include <QNetworkInterface>
#include <QtTest>

#include <memory>
#include <pwd.h>
#include <unistd.h>

// What a row checks once its request has been answered.
enum class After {
    Unchanged, // nothing a root program would do happened: no file, connection, rule or process
    Done,
    Tunnel, // traffic passes the tunnel, and OpenVPN holds none of the daemon's sockets or pipes
    Prompt, // answered at once while B holds idle connections to the daemon
    During, // B's query, made while this request is carried out, is answered
    Ended, // OpenVPN has exited
};
Q_DECLARE_METATYPE(After)

namespace {

const char* const Accounts[] = {"tvn-e2e-a", "tvn-e2e-b"};
enum { A, B };

int quietly(const QString& program, const QStringList& args)
{
    QProcess p;
    p.start(program, args);
    return p.waitForFinished(60000) && p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
}

QString readLink(const QString& path)
{
    char target[4096];
    const ssize_t n = ::readlink(QFile::encodeName(path).constData(), target, sizeof target);
    return n > 0 ? QString::fromLocal8Bit(target, int(n)) : QString();
}

// The sockets and pipes a process holds from descriptor `from` on.
QStringList channels(const QString& pid, int from)
{
    QStringList found;
    const QString dir = QStringLiteral("/proc/%1/fd").arg(pid);
    for (const QString& fd : QDir(dir).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        const QString target = readLink(dir + QLatin1Char('/') + fd);
        if (fd.toInt() >= from
            && (target.startsWith(QLatin1String("socket:")) || target.startsWith(QLatin1String("pipe:"))))
            found << target;
    }
    return found;
}

} // namespace

class tst_DaemonBoundary : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void refusesOthersAndServesTheOwner_data();
    void refusesOthersAndServesTheOwner();

private:
    bool give(int account, const QString& name, const QByteArray& data, QFileDevice::Permissions mode);
    std::unique_ptr<QProcess> runAs(int account, QStringList args) const;
    QStringList world();

    E2eLab m_lab;
    uid_t m_uid[2] = {};
    gid_t m_gid[2] = {};
    QString m_users;
    QString m_secret;
    QTcpServer m_proxy;
    int m_proxied = 0;
    quint16 m_port = 0;
    quint16 m_mgmt = 0;
    quint16 m_mgmt2 = 0;
    std::unique_ptr<QProcess> m_companion;
};

bool tst_DaemonBoundary::give(int account, const QString& name, const QByteArray& data, QFileDevice::Permissions mode)
{
    const QString path = m_users + QLatin1Char('/') + QLatin1String(account == A ? "a/" : "b/") + name;
    return WireClient::writeFile(path, data, mode)
        && ::chown(QFile::encodeName(path).constData(), m_uid[account], m_gid[account]) == 0;
}

void tst_DaemonBoundary::initTestCase()
{
    QString missing = E2eLab::missingPrerequisite();
    for (const char* program : {"setpriv", "useradd", "userdel"})
        if (missing.isEmpty() && QStandardPaths::findExecutable(program, {"/usr/sbin", "/usr/bin"}).isEmpty())
            missing = QStringLiteral("%1 is not installed").arg(program);
    if (!missing.isEmpty())
        QSKIP(qPrintable(QStringLiteral("end-to-end tests skipped: ") + missing));
    for (int i : {A, B}) {
        quietly(QStringLiteral("userdel"), {QLatin1String(Accounts[i])}); // left by a run that was killed
        QCOMPARE(quietly(QStringLiteral("useradd"),
                         {"--system", "--no-create-home", "--shell", "/usr/sbin/nologin", QLatin1String(Accounts[i])}),
                 0);
        const passwd* pw = ::getpwnam(Accounts[i]);
        QVERIFY(pw);
        m_uid[i] = pw->pw_uid;
        m_gid[i] = pw->pw_gid;
    }
    QVERIFY2(m_lab.start(), qPrintable(m_lab.error()));
    m_port = quint16(qEnvironmentVariableIntValue("TAVRIN_HELPER_PORT"));
    m_mgmt = WireClient::freePort();
    m_mgmt2 = WireClient::freePort();
    QVERIFY(m_proxy.listen(QHostAddress::LocalHost));

    // The lab's directory is root's alone: the accounts may pass through it to their own ones.
    const auto traverse = WireClient::Private | QFileDevice::ExeOwner | QFileDevice::ExeGroup | QFileDevice::ExeOther;
    m_users = m_lab.dir() + QStringLiteral("/users");
    m_secret = m_lab.dir() + QStringLiteral("/secret");
    QVERIFY(QFile::setPermissions(m_lab.dir(), traverse));
    QVERIFY(QDir().mkpath(m_users + QStringLiteral("/a")) && QDir().mkpath(m_users + QStringLiteral("/b/real"))
            && QDir().mkpath(m_secret) && QFile::setPermissions(m_users, traverse)
            && QFile::setPermissions(m_secret, WireClient::Private | QFileDevice::ExeOwner));
    for (const auto& dir : {std::make_pair("/a", A), std::make_pair("/b", B), std::make_pair("/b/real", B)}) {
        const QByteArray path = QFile::encodeName(m_users + QLatin1String(dir.first));
        QVERIFY(::chown(path.constData(), m_uid[dir.second], m_gid[dir.second]) == 0);
    }
    QVERIFY(QFile::copy(QStringLiteral(TAVRIN_WIRE_TOOL), m_users + QStringLiteral("/wire-tool")));
    QVERIFY(QFile::setPermissions(m_users + QStringLiteral("/wire-tool"), WireClient::Program));
    QVERIFY(WireClient::writeFile(m_secret + QStringLiteral("/secret"), "vpnuser\nroot-only-secret\n"));
    QVERIFY(
        QFile::link(QStringLiteral("/usr/share/zoneinfo/UTC"), m_lab.dir() + QStringLiteral("/root/etc/localtime")));
    // rmtun's victim: a persistent tunnel device of the client namespace.
    QCOMPARE(quietly(QStringLiteral("ip"), {"tuntap", "add", "dev", "tvnrm0", "mode", "tun"}), 0);
}

void tst_DaemonBoundary::cleanupTestCase()
{
    m_lab.stop();
    for (const char* account : Accounts)
        quietly(QStringLiteral("userdel"), {QLatin1String(account)});
}

void tst_DaemonBoundary::cleanup()
{
    if (m_companion) {
        m_companion->kill();
        m_companion->waitForFinished();
        m_companion.reset();
    }
    if (QTest::currentTestFailed())
        qInfo().noquote() << "daemon log:\n" << m_lab.daemonLog().right(3000);
}

std::unique_ptr<QProcess> tst_DaemonBoundary::runAs(int account, QStringList args) const
{
    for (QString& arg : args) {
        arg.replace(QLatin1String("%mgmt2"), QString::number(m_mgmt2))
            .replace(QLatin1String("%mgmt"), QString::number(m_mgmt))
            .replace(QLatin1String("%port"), QString::number(m_port))
            .replace(QLatin1String("%a/"), m_users + QStringLiteral("/a/"))
            .replace(QLatin1String("%b/"), m_users + QStringLiteral("/b/"));
    }
    auto p = std::make_unique<QProcess>();
    p->start(QStringLiteral("setpriv"),
             QStringList {QStringLiteral("--reuid=%1").arg(m_uid[account]),
                          QStringLiteral("--regid=%1").arg(m_gid[account]),
                          QStringLiteral("--clear-groups"),
                          QStringLiteral("--"),
                          m_users + QStringLiteral("/wire-tool")}
                 + args);
    return p;
}

// Everything B's attempts could change, one line each.
QStringList tst_DaemonBoundary::world()
{
    while (m_proxy.hasPendingConnections() || m_proxy.waitForNewConnection(0)) {
        delete m_proxy.nextPendingConnection();
        ++m_proxied;
    }
    QStringList links;
    for (const QNetworkInterface& i : QNetworkInterface::allInterfaces())
        links << i.name();
    const QString root = m_lab.dir() + QStringLiteral("/root");
    int forged = 0;
    for (const QByteArray& line : m_lab.daemonLog().split('\n'))
        forged += line.startsWith("request from uid 0: forged");
    QProcess nft;
    nft.setProcessChannelMode(QProcess::MergedChannels);
    nft.start(QStringLiteral("nft"), {"list", "table", "inet", "tavrin"});
    nft.waitForFinished();
    return {QStringLiteral("marker %1").arg(QFile::exists(m_secret + QStringLiteral("/marker"))),
            QStringLiteral("proxied %1").arg(m_proxied),
            QStringLiteral("forged log lines %1").arg(forged),
            QStringLiteral("openvpn ") + m_lab.processIdsInClient("openvpn").join(QLatin1Char(' ')),
            QStringLiteral("links ") + links.join(QLatin1Char(' ')),
            QStringLiteral("zone ") + readLink(root + QStringLiteral("/etc/localtime")) + QLatin1Char(' ')
                + QString::fromUtf8(WireClient::readFile(root + QStringLiteral("/etc/timezone"))),
            QStringLiteral("nft ") + QString::fromLocal8Bit(nft.readAll())};
}

void tst_DaemonBoundary::refusesOthersAndServesTheOwner_data()
{
    QTest::addColumn<int>("account");
    QTest::addColumn<QStringList>("request");
    QTest::addColumn<int>("code"); // 0 yes, 1 no, 2 no reply, 3 management port closed
    QTest::addColumn<After>("after");
    QTest::addColumn<QStringList>("companion"); // run by B beside the request

    const auto row = [](const char* name,
                        int account,
                        const QStringList& request,
                        int code,
                        After after = After::Unchanged,
                        const QStringList& companion = {}) {
        QTest::newRow(name) << account << request << code << after << companion;
    };
    const auto start = [](const char* config) {
        return QStringList {"openvpn", "%port", QStringLiteral("%b/") + QLatin1String(config), "%mgmt2"};
    };
    const QString user = QLatin1String(E2eLab::User);
    const QString password = QLatin1String(E2eLab::Password);
    const QStringList aStart = {"openvpn", "%port", "%a/good.ovpn", "%mgmt2"};
    const QStringList query = {"raw", "%port", "5"}; // whether the firewall is supported: anyone may ask

    const auto generate = [this](const QString& protocol) {
        MakeOVPNFile file;
        return m_lab.writeClientConfig(file, protocol) ? WireClient::readFile(file.configFileName) : QByteArray();
    };
    const QByteArray good = generate(QStringLiteral("udp"));
    QVERIFY(good.contains("auth-user-pass\r\n"));
    // Without credentials to ask for, OpenVPN goes to its proxy at once.
    const QByteArray udpNoAuth = QByteArray(good).replace("auth-user-pass\r\n", "");
    const QByteArray tcpNoAuth = generate(QStringLiteral("tcp")).replace("auth-user-pass\r\n", "");
    const QByteArray b = QFile::encodeName(m_users + QStringLiteral("/b/"));
    const QByteArray marker = QFile::encodeName(m_secret + QStringLiteral("/marker"));
    const QByteArray proxy = "127.0.0.1 " + QByteArray::number(m_proxy.serverPort()) + ' '
        + QFile::encodeName(m_secret + QStringLiteral("/secret"));
    for (const char* name : {"good.ovpn", "real/good.ovpn"})
        QVERIFY(give(B, QLatin1String(name), good, WireClient::Private));
    QVERIFY(give(A, QStringLiteral("good.ovpn"), good, WireClient::Private));
    QVERIFY(give(B, QStringLiteral("other.conf"), "genkey secret " + marker + "\n", WireClient::Private));
    QVERIFY(give(B, QStringLiteral("x.sh"), "#!/bin/sh\ntouch " + marker + "\n", WireClient::Program));
    QVERIFY(give(B, QStringLiteral("huge.deb"), QByteArray(), WireClient::Private));
    QVERIFY(QFile::resize(QString::fromLocal8Bit(b) + QStringLiteral("huge.deb"), qint64(1) << 30)); // sparse
    // Root's files in B's directory, and links B made there.
    QVERIFY(WireClient::writeFile(QString::fromLocal8Bit(b) + QStringLiteral("root.ovpn"), good));
    QVERIFY(WireClient::writeFile(QString::fromLocal8Bit(b) + QStringLiteral("root.deb"), QByteArray()));
    // Large enough for a copy of it to be seen in the state directory while it is made.
    QVERIFY(QFile::resize(QString::fromLocal8Bit(b) + QStringLiteral("root.deb"), qint64(64) << 20));
    for (const auto& link : {std::make_pair("good.ovpn", "link.ovpn"), std::make_pair("real", "linked")}) {
        const QByteArray path = b + link.second;
        QVERIFY(::symlink((b + link.first).constData(), path.constData()) == 0
                && ::lchown(path.constData(), m_uid[B], m_gid[B]) == 0);
    }

    // B alone: configurations of its own that B starts, the files named and the texts logged.
    const auto attack = [&](const char* name, const char* file, const QByteArray& text) {
        QVERIFY(give(B, QLatin1String(file), text, WireClient::Private));
        row(name, B, start(file), 1);
    };
    attack("plugin behind a backslash", "plugin.ovpn", good + "\\ plugin " + b + "x.so\n");
    attack("config behind a backslash", "include.ovpn", good + "\\ config " + b + "other.conf\n");
    attack("route-up behind a backslash", "routeup.ovpn", good + "\\ route-up " + b + "x.sh\n");
    attack("genkey writing a file", "genkey.ovpn", good + "genkey secret " + marker + "\n");
    attack("http-proxy sending root's file", "http.ovpn", tcpNoAuth + "http-proxy " + proxy + " basic\n");
    attack("socks-proxy sending root's file", "socks.ovpn", udpNoAuth + "socks-proxy " + proxy + "\n");
    attack("tcp-server", "server.ovpn", good + "proto tcp-server\n");
    attack("lport", "lport.ovpn", good + "lport 4000\n");
    attack(
        "port-share to the daemon", "share.ovpn", good + "port-share 127.0.0.1 " + QByteArray::number(m_port) + "\n");
    attack("mktun", "mktun.ovpn", good + "mktun\ndev tvnmk0\ndev-type tun\n");
    attack("rmtun", "rmtun.ovpn", good + "rmtun\ndev tvnrm0\ndev-type tun\n");
    row("config that is a link", B, start("link.ovpn"), 1);
    row("config in a linked directory", B, start("linked/good.ovpn"), 1);
    row("root's config", B, start("root.ovpn"), 1);
    row("root's package", B, {"update", "%port", "%b/root.deb"}, 1);
    row("1 GiB package", B, {"update", "%port", "%b/huge.deb"}, 1);
    row("interface with a line feed", B, {"firewall-on", "%port", "127.0.0.1", "tun0\n", "10000"}, 1);
    row("zone forging a log line", B, {"timezone", "%port", "UTC\nrequest from uid 0: forged"}, 1);

    // A connects as the client does.
    row("A: kill switch", A, {"firewall-on", "%port", "127.0.0.1;10.231.0.1", "tun0", "11000"}, 0, After::Done);
    row("A: OpenVPN start", A, {"openvpn", "%port", "%a/good.ovpn", "%mgmt"}, 0, After::During, {"raw", "%port", "7"});
    row("A: credentials on the management port", A, {"mgmt", "%mgmt", user, password}, 0, After::Tunnel);
    row("A: time zone", A, {"timezone", "%port", "Europe/Berlin"}, 0, After::Done);

    // B against what A holds. The starts come last: one let through would end A's OpenVPN.
    row("B: A's management port", B, {"mgmt", "%mgmt", user, password}, 3);
    row("B: firewall off", B, {"firewall-off", "%port"}, 1);
    row("B: firewall letting a stray address through",
        B,
        {"firewall-change", "%port", "127.0.0.1;10.231.0.1;10.231.0.3", "tun0", "11000"},
        1);
    row("B: firewall at the next start", B, {"raw", "%port", "6"}, 1);
    row("B: time zone", B, {"timezone", "%port", "Asia/Tokyo"}, 1);
    row("B: time zone restore", B, {"timezone-restore", "%port"}, 1);
    row("A: answered while B holds 32 connections", A, query, 0, After::Prompt, {"hold", "%port", "32", "20"});
    row("A: start while B listens on its management port", A, aStart, 1, After::Unchanged, {"listen", "%mgmt2", "20"});
    row("A: start while B has bound its management port", A, aStart, 1, After::Unchanged, {"bind", "%mgmt2", "20"});
    row("B: as root from another loopback address", B, {"raw-from", "%port", "2", "127.0.0.2", "%port"}, 2);
    row("B: OpenVPN with B's own config", B, start("good.ovpn"), 1);

    // A lets go, and then B may act.
    row("A: time zone restore", A, {"timezone-restore", "%port"}, 0, After::Done);
    row("A: firewall off", A, {"firewall-off", "%port"}, 0, After::Done);
    row("A: OpenVPN ends", A, {"mgmt-stop", "%mgmt"}, 0, After::Ended);
    row("B: A's former management port", B, {"mgmt", "%mgmt", "x", "y"}, 1, After::Done, {"listen", "%mgmt", "20"});
    row("B: time zone once nothing is held", B, {"timezone", "%port", "Asia/Tokyo"}, 0, After::Done);
    row("B: its time zone restored", B, {"timezone-restore", "%port"}, 0, After::Done);
}

void tst_DaemonBoundary::refusesOthersAndServesTheOwner()
{
    QFETCH(int, account);
    QFETCH(QStringList, request);
    QFETCH(int, code);
    QFETCH(After, after);
    QFETCH(QStringList, companion);

    QByteArray ready;
    if (!companion.isEmpty() && after != After::During) {
        m_companion = runAs(B, companion); // ready once it says so
        QVERIFY(m_companion->waitForReadyRead(10000));
        ready = m_companion->readAll().trimmed();
        QVERIFY2(!ready.startsWith("cannot"), ready.constData());
    }
    const QStringList before = world();
    QElapsedTimer clock;
    clock.start();
    const auto process = runAs(account, request);
    if (after == After::During)
        m_companion = runAs(B, companion);
    bool copied = false;
    const QString copies = m_lab.dir() + QStringLiteral("/root/var/lib/tavrin-helperd/update");
    while (process->state() != QProcess::NotRunning && clock.elapsed() < 60000) {
        QTest::qWait(2);
        copied = copied || !QDir(copies).entryList(QDir::Files).isEmpty();
    }
    const qint64 ms = clock.elapsed();
    const QString output = QString::fromLocal8Bit(process->readAll()).trimmed();
    const QString got = QStringLiteral("exit code %1 (%2) after %3 ms").arg(process->exitCode()).arg(output).arg(ms);
    QVERIFY2(process->exitStatus() == QProcess::NormalExit && process->exitCode() == code, qPrintable(got));

    switch (after) {
    case After::Unchanged:
        QTest::qWait(500); // what a started OpenVPN would do takes it a moment
        QVERIFY2(!copied, "the package was copied");
        QCOMPARE(world(), before);
        break;
    case After::Done:
        break;
    case After::Tunnel: {
        QCOMPARE(quietly(QStringLiteral("ping"), {"-c3", "-i0.2", "-W2", E2eLab::UdpTunnelServer}), 0);
        const QStringList daemon = m_lab.processIdsInClient("tavrin-helperd");
        const QStringList openvpn = m_lab.processIdsInClient("openvpn");
        QVERIFY(daemon.size() == 1 && openvpn.size() == 1);
        const QStringList held = channels(daemon.first(), 0);
        for (const QString& channel : channels(openvpn.first(), 3))
            QVERIFY2(!held.contains(channel), qPrintable(channel + QStringLiteral(" is the daemon's")));
        break;
    }
    case After::Prompt:
        QVERIFY2(ready.startsWith("holding ") && ready.mid(8).toInt() <= 4, ready.constData());
        // Before the client would have given up on it.
        QVERIFY2(ms < 5000, qPrintable(QStringLiteral("answered after %1 ms").arg(ms)));
        break;
    case After::During:
        QVERIFY(m_companion->state() == QProcess::NotRunning || m_companion->waitForFinished(20000));
        QCOMPARE(m_companion->exitCode(), 0);
        break;
    case After::Ended:
        QTRY_COMPARE_WITH_TIMEOUT(m_lab.processIdsInClient("openvpn").size(), 0, 15000);
        break;
    }
}

QTEST_GUILESS_MAIN(tst_DaemonBoundary)
#include "tst_DaemonBoundary.moc"

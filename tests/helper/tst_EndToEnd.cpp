// The connection engine against the real helper daemon, OpenVPN, stunnel and nftables, in two
// network namespaces of the test's own (see e2e/netns-lab.sh). The machine's own namespace is
// never changed.

#include "e2e/E2eLab.h"

#include "Connection.h"
#include "MakeOVPNFile.h"
#include "ServiceConnector.h"
#include "StunnelManager.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTest>

namespace {

QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool tcpReachable(const char* address, quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QLatin1String(address), port);
    return socket.waitForConnected(1500); // a dropped SYN shows as this time-out
}

bool pingOnce(const char* address)
{
    return QProcess::execute(QStringLiteral("ping"),
                             {QStringLiteral("-c"),
                              QStringLiteral("3"),
                              QStringLiteral("-i"),
                              QStringLiteral("0.2"),
                              QStringLiteral("-W"),
                              QStringLiteral("2"),
                              QLatin1String(address)})
        == 0;
}

} // namespace

class tst_EndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void cleanup();
    void connectsCarriesTrafficAndDisconnects_data();
    void connectsCarriesTrafficAndDisconnects();
    void wrongPasswordIsReported();
    void killSwitchLetsOnlyTheTunnelThrough();
    void timezoneFollowsTheServerAndComesBack();
    void daemonRefusesAttacks();

private:
    ConfigServer configFor(const QString& protocol) const;

    E2eLab m_lab;
};

void tst_EndToEnd::initTestCase()
{
    const QString missing = E2eLab::missingPrerequisite();
    if (!missing.isEmpty())
        QSKIP(qPrintable(QStringLiteral("end-to-end tests skipped: ") + missing));
    QVERIFY2(m_lab.start(), qPrintable(m_lab.error()));
}

void tst_EndToEnd::cleanupTestCase()
{
    m_lab.stop();
    QCOMPARE(m_lab.processesInClient("openvpn"), 0);
}

void tst_EndToEnd::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo().noquote() << "daemon log:\n" << m_lab.daemonLog().right(4000);
}

ConfigServer tst_EndToEnd::configFor(const QString& protocol) const
{
    ConfigServer c;
    c.protocol = protocol;
    c.ports = QStringList(protocol == QLatin1String("udp") ? QStringLiteral("1194") : QStringLiteral("80"));
    c.ip = QLatin1String(E2eLab::ServerAddress);
    c.cert = m_lab.clientCert();
    c.key = m_lab.clientKey();
    c.config = m_lab.clientTemplate();
    return c;
}

void tst_EndToEnd::connectsCarriesTrafficAndDisconnects_data()
{
    QTest::addColumn<QString>("protocol");
    QTest::addColumn<QString>("tunnelServer");

    QTest::newRow("OpenVPN over UDP") << QStringLiteral("udp") << QString::fromLatin1(E2eLab::UdpTunnelServer);
    QTest::newRow("OpenVPN over TCP") << QStringLiteral("tcp") << QString::fromLatin1(E2eLab::TcpTunnelServer);
    QTest::newRow("stealth through stunnel")
        << QStringLiteral("stealth") << QString::fromLatin1(E2eLab::TcpTunnelServer);
}

void tst_EndToEnd::connectsCarriesTrafficAndDisconnects()
{
    QFETCH(QString, protocol);
    QFETCH(QString, tunnelServer);

    StunnelManager stunnel;
    MakeOVPNFile file;
    ServerInfo server;
    server.ip = QLatin1String(E2eLab::ServerAddress);
    if (protocol == QLatin1String("stealth")) {
        stunnel.setConfigAndRunProcess(server.ip, E2eLab::StealthPort, QStringLiteral("vpn.e2e.test"));
        ConfigServer c = configFor(QStringLiteral("tcp"));
        c.stunnelPort = stunnel.getPort();
        QVERIFY(file.generateStunnel(c));
        server.protocol = OpenVpnTcp;
    } else {
        QVERIFY(file.generate(configFor(protocol)));
        server.protocol = protocol == QLatin1String("udp") ? OpenVpnUdp : OpenVpnTcp;
    }

    Connection connection;
    QSignalSpy connected(&connection, &Connection::connected);
    QSignalSpy disconnected(&connection, &Connection::disconnected);
    QSignalSpy errors(&connection, &Connection::error);
    QSignalSpy statistics(&connection, &Connection::statisticsChanged);
    connection.connect(
        server, QLatin1String(E2eLab::User), QLatin1String(E2eLab::Password), file.configFileName, ProxySetting());
    // OpenVPN echoes each state line in its log, so the engine may report "connected" twice.
    QTRY_VERIFY_WITH_TIMEOUT(connected.count() >= 1, 30000);
    QCOMPARE(errors.count(), 0);
    QTRY_VERIFY(readFile(m_lab.resolvConf()).contains("nameserver " + tunnelServer.toLatin1()));

    // Traffic through the tunnel raises both totals.
    QTRY_VERIFY_WITH_TIMEOUT(!statistics.isEmpty(), 15000);
    const double receivedBefore = statistics.last().at(2).toDouble();
    const double sentBefore = statistics.last().at(3).toDouble();
    QVERIFY(pingOnce(tunnelServer.toLatin1().constData()));
    QTRY_VERIFY_WITH_TIMEOUT(statistics.last().at(2).toDouble() > receivedBefore + 200
                                 && statistics.last().at(3).toDouble() > sentBefore + 200,
                             5000);

    connection.disconnect(false);
    QTRY_VERIFY_WITH_TIMEOUT(disconnected.count() >= 1, 15000);
    QCOMPARE(disconnected.first().first().toBool(), false);
    stunnel.killProcess();
    QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 10000);
    QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("stunnel4") + m_lab.processesInClient("stunnel"), 0, 10000);
    QTRY_COMPARE(readFile(m_lab.resolvConf()), m_lab.originalResolvConf());
}

void tst_EndToEnd::wrongPasswordIsReported()
{
    MakeOVPNFile file;
    QVERIFY(file.generate(configFor(QStringLiteral("udp"))));
    ServerInfo server;
    server.protocol = OpenVpnUdp;
    Connection connection;
    QSignalSpy connected(&connection, &Connection::connected);
    QSignalSpy errors(&connection, &Connection::error);
    connection.connect(
        server, QLatin1String(E2eLab::User), QStringLiteral("not-the-password"), file.configFileName, ProxySetting());
    QTRY_VERIFY_WITH_TIMEOUT(!errors.isEmpty(), 30000);
    QCOMPARE(errors.first().first().toString(), QStringLiteral("Invalid username or password"));
    QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 15000);
    QCOMPARE(connected.count(), 0);
}

void tst_EndToEnd::killSwitchLetsOnlyTheTunnelThrough()
{
    Connection connection;
    const QString allowed = QStringLiteral("127.0.0.1;") + QLatin1String(E2eLab::ServerAddress);
    FIREWALL_PARAMETERS flags;
    flags.killConnect = true;
    flags.ipv6Block = true;
    QVERIFY(connection.firewallSupported());
    QVERIFY(connection.firewallOn(allowed, QStringLiteral("tun0"), flags));
    QVERIFY(!tcpReachable(E2eLab::StrayAddress, E2eLab::StealthPort));

    MakeOVPNFile file;
    QVERIFY(file.generate(configFor(QStringLiteral("udp"))));
    ServerInfo server;
    server.protocol = OpenVpnUdp;
    QSignalSpy connected(&connection, &Connection::connected);
    QSignalSpy disconnected(&connection, &Connection::disconnected);
    connection.connect(
        server, QLatin1String(E2eLab::User), QLatin1String(E2eLab::Password), file.configFileName, ProxySetting());
    QTRY_VERIFY_WITH_TIMEOUT(connected.count() >= 1, 30000);

    QVERIFY(tcpReachable(E2eLab::UdpTunnelServer, E2eLab::StealthPort));
    QVERIFY(!tcpReachable(E2eLab::StrayAddress, E2eLab::StealthPort));

    QVERIFY(connection.firewallOff());
    QVERIFY(tcpReachable(E2eLab::StrayAddress, E2eLab::StealthPort));
    QProcess nft;
    nft.start(QStringLiteral("nft"), {QStringLiteral("list"), QStringLiteral("tables")});
    QVERIFY(nft.waitForFinished());
    QVERIFY(!nft.readAll().contains("tavrin"));

    connection.disconnect(false);
    QTRY_VERIFY_WITH_TIMEOUT(disconnected.count() >= 1, 15000);
    QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 10000);
}

void tst_EndToEnd::timezoneFollowsTheServerAndComesBack()
{
    const QString localtime = m_lab.dir() + QStringLiteral("/root/etc/localtime");
    QVERIFY(QFile::link(QStringLiteral("/usr/share/zoneinfo/UTC"), localtime));
    Connection connection;
    QVERIFY(connection.timezonechangeSupported());
    QVERIFY(connection.timezoneChange(false, QStringLiteral("Asia/Tokyo")));
    QCOMPARE(QFileInfo(localtime).symLinkTarget(), QStringLiteral("/usr/share/zoneinfo/Asia/Tokyo"));
    QVERIFY(connection.timezoneChange(true, QString()));
    QCOMPARE(QFileInfo(localtime).symLinkTarget(), QStringLiteral("/usr/share/zoneinfo/UTC"));
}

void tst_EndToEnd::daemonRefusesAttacks()
{
    ServiceConnector helper;
    MakeOVPNFile file;
    QVERIFY(file.generate(configFor(QStringLiteral("udp"))));
    const QString script = QStringLiteral("/usr/share/tavrin/script/update-resolv-conf.sh");
    const auto arguments = [&](const QString& path, const QString& up) {
        return QStringLiteral("--config \"%1\" --management 127.0.0.1 40001  --management-query-passwords  "
                              " --script-security 2  --up %2  --down %3 ")
            .arg(path, up, script);
    };
    const QString evil = m_lab.dir() + QStringLiteral("/evil.ovpn");
    {
        QFile f(evil);
        QVERIFY(f.open(QIODevice::WriteOnly));
        f.write(m_lab.clientTemplate() + "up /bin/sh\r\n");
        f.setPermissions(QFileDevice::ReadOwner | QFileDevice::WriteOwner);
    }
    const QList<QPair<const char*, bool>> attacks {
        {"--up of another script",
         helper.runOpenVpnWithConfig(arguments(file.configFileName, QStringLiteral("/bin/sh")))},
        {"configuration with up /bin/sh", helper.runOpenVpnWithConfig(arguments(evil, script))},
        {"configuration path with a quote",
         helper.runOpenVpnWithConfig(arguments(file.configFileName + QStringLiteral("\" --up \"/bin/sh"), script))},
        {"configuration path with ..",
         helper.runOpenVpnWithConfig(arguments(m_lab.dir() + QStringLiteral("/../tmp/x.ovpn"), script))},
        {"time zone ../../etc/passwd", helper.timezoneChange(false, QStringLiteral("../../etc/passwd"))},
        {"update that is not a .deb", helper.updateInstall(QStringLiteral("/etc/passwd"))},
        {"firewall address list with nft syntax",
         helper.firewallOn(QStringLiteral("1.2.3.4 } ; flush ruleset"), QStringLiteral("tun0"), FIREWALL_PARAMETERS())},
    };
    int refused = 0;
    for (const auto& attack : attacks) {
        if (!attack.second)
            ++refused;
        else
            qWarning("accepted: %s", attack.first);
    }
    qInfo("the daemon refused %d of %d attacks", refused, int(attacks.size()));
    QCOMPARE(refused, int(attacks.size()));
    QCOMPARE(m_lab.processesInClient("openvpn"), 0);
}

QTEST_GUILESS_MAIN(tst_EndToEnd)
#include "tst_EndToEnd.moc"

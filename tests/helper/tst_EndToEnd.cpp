// The connection engine against the real helper daemon, OpenVPN and nftables, in two network
// namespaces of the test's own (see tools/lab/netns-lab.sh); stunnel is met in tst_WholeProgram.
// The machine's own namespace is never changed.

#include "E2eLab.h"

#include "Connection.h"
#include "MakeOVPNFile.h"
#include "TestEnvironment.h"

#include <QTcpSocket>
#include <QtTest>

namespace {

// Connected, refused (the host answered) or dropped (a SYN that no one answers).
enum class Tcp { Connected, Refused, Dropped };
Tcp tcpTo(const char* address, quint16 port)
{
    QTcpSocket socket;
    socket.connectToHost(QLatin1String(address), port);
    if (socket.waitForConnected(1500))
        return Tcp::Connected;
    return socket.error() == QAbstractSocket::SocketTimeoutError ? Tcp::Dropped : Tcp::Refused;
}

// The daemon's answer to a request made through the engine, which comes back through the event loop.
bool yes(const std::function<void(Connection::Answer)>& request)
{
    int answer = -1;
    request([&answer](bool result) { answer = result; });
    return QTest::qWaitFor([&answer] { return answer >= 0; }, 15000) && answer == 1;
}

} // namespace

class tst_EndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase() { m_lab.stop(); }
    void cleanup();
    void connectsCarriesTrafficAndDisconnects_data();
    void connectsCarriesTrafficAndDisconnects();

private:
    E2eLab m_lab;
};

void tst_EndToEnd::initTestCase()
{
    const QString missing = E2eLab::missingPrerequisite();
    if (!missing.isEmpty())
        QSKIP(qPrintable(QStringLiteral("end-to-end tests skipped: ") + missing));
    QVERIFY2(m_lab.start(), qPrintable(m_lab.error()));
}

void tst_EndToEnd::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo().noquote() << "daemon log:\n" << m_lab.daemonLog().right(4000);
    QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 15000);
}

// Over TCP behind the kill switch with local devices let through; UDP, stunnel and the kill switch
// without local devices are met through the whole program in tst_WholeProgram.
void tst_EndToEnd::connectsCarriesTrafficAndDisconnects_data()
{
    QTest::addColumn<QString>("password");
    // First: the next row's kill switch takes the place of this one's.
    QTest::newRow("wrong password") << QStringLiteral("not-the-password");
    QTest::newRow("right password") << QString::fromLatin1(E2eLab::Password);
}

void tst_EndToEnd::connectsCarriesTrafficAndDisconnects()
{
    QFETCH(QString, password);
    const QString tunnelServer = QLatin1String(E2eLab::TcpTunnelServer);
    ServerInfo server;
    server.ip = QLatin1String(E2eLab::ServerAddress);
    server.protocol = OpenVpnTcp;
    MakeOVPNFile file;
    QVERIFY(m_lab.writeClientConfig(file, QStringLiteral("tcp")));

    Connection connection;
    const FIREWALL_PARAMETERS flags {true, true, true}; // kill switch, IPv6 block, local devices
    const QString allowed = QStringLiteral("127.0.0.1;") + QLatin1String(E2eLab::ServerAddress);
    QVERIFY(yes([&](Connection::Answer answer) { connection.firewallSupported(answer); }));
    QVERIFY(yes([&](Connection::Answer answer) { connection.firewallOn(allowed, "tun0", flags, answer); }));
    // The stray address is a local one (10/8), let through with local devices.
    QVERIFY(tcpTo(E2eLab::StrayAddress, E2eLab::StealthPort) == Tcp::Connected);
    QSignalSpy connected(&connection, &Connection::connected);
    QSignalSpy disconnected(&connection, &Connection::disconnected);
    QSignalSpy errors(&connection, &Connection::error);
    QSignalSpy statistics(&connection, &Connection::statisticsChanged);
    connection.connect(server, QLatin1String(E2eLab::User), password, file.configFileName, ProxySetting());
    if (password != QLatin1String(E2eLab::Password)) {
        QTRY_VERIFY_WITH_TIMEOUT(!errors.isEmpty(), 30000);
        QCOMPARE(errors.first().first().toString(), QStringLiteral("Invalid username or password"));
        QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 15000);
        QCOMPARE(connected.count(), 0);
        return;
    }
    // OpenVPN echoes each state line in its log, so the engine may report "connected" twice.
    QTRY_VERIFY_WITH_TIMEOUT(connected.count() >= 1, 30000);
    QCOMPARE(errors.count(), 0);
    QTRY_VERIFY(readFile(m_lab.resolvConf()).contains("nameserver " + tunnelServer.toLatin1()));

    // Traffic through the tunnel raises both totals.
    QTRY_VERIFY_WITH_TIMEOUT(!statistics.isEmpty(), 15000);
    const double receivedBefore = statistics.last().at(2).toDouble();
    const double sentBefore = statistics.last().at(3).toDouble();
    QCOMPARE(QProcess::execute(QStringLiteral("ping"),
                               {QStringLiteral("-c3"), QStringLiteral("-i0.2"), QStringLiteral("-W2"), tunnelServer}),
             0);
    QTRY_VERIFY_WITH_TIMEOUT(statistics.last().at(2).toDouble() > receivedBefore + 200
                                 && statistics.last().at(3).toDouble() > sentBefore + 200,
                             5000);
    QVERIFY(tcpTo(E2eLab::TcpTunnelServer, E2eLab::StealthPort) == Tcp::Connected);
    QVERIFY(tcpTo(E2eLab::StrayAddress, E2eLab::StealthPort) == Tcp::Connected);
    // DNS goes through the tunnel (nothing answers there: refused), never to a local address.
    QVERIFY(tcpTo(E2eLab::TcpTunnelServer, 53) == Tcp::Refused);
    QVERIFY(tcpTo(E2eLab::StrayAddress, 53) == Tcp::Dropped);
    QVERIFY(yes([&](Connection::Answer answer) { connection.firewallOff(answer); }));

    connection.disconnect(false);
    QTRY_VERIFY_WITH_TIMEOUT(disconnected.count() >= 1, 15000);
    QCOMPARE(disconnected.first().first().toBool(), false);
    QTRY_COMPARE_WITH_TIMEOUT(m_lab.processesInClient("openvpn"), 0, 10000);
    QTRY_COMPARE(readFile(m_lab.resolvConf()), m_lab.originalResolvConf());
}

QTEST_GUILESS_MAIN(tst_EndToEnd)
#include "tst_EndToEnd.moc"

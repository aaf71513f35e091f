#include <QtTest>

#include "Connection.h"
#include "FakeHelperDaemon.h"

#include <cstring>
#include <functional>

namespace {

using Call = std::function<bool(Connection&)>;

ServerInfo serverWith(PROTOCOL_TYPE protocol)
{
    ServerInfo server;
    server.ip = QStringLiteral("203.0.113.5");
    server.protocol = protocol;
    return server;
}

quint32 commandOf(const QByteArray& request)
{
    quint32 command = 0;
    std::memcpy(&command, request.constData(), 4);
    return command;
}

} // namespace

Q_DECLARE_METATYPE(Call)

class TestConnection : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_daemon.reset(new FakeHelperDaemon);
        QVERIFY(m_daemon->start());
        m_daemon->exportPort();
    }
    void cleanup() { m_daemon.reset(); }

    void errorTexts_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("0 wrong credentials") << 0 << "Invalid username or password";
        QTest::newRow("1 management port never opened") << 1 << "Not open openvpn socket";
        QTest::newRow("2 no TUN, misspelt") << 2 << "Can not alocate TUN";
        QTest::newRow("3 helper unreachable, misspelt") << 3 << "Can not connet to helper";
        QTest::newRow("4 helper write") << 4 << "Can not write to helper";
        QTest::newRow("5 no free port is a bare code") << 5 << "Code error: 5";
        QTest::newRow("7 UDP write failure is a bare code") << 7 << "Code error: 7";
        QTest::newRow("8 connected with error is a bare code") << 8 << "Code error: 8";
        QTest::newRow("negative number") << -1 << "Code error: -1";
    }
    void errorTexts()
    {
        QFETCH(int, code);
        Connection connection;
        QSignalSpy errors(&connection, &Connection::error);
        connection.onOvpnError(code);
        QCOMPARE(errors.size(), 1);
        QTEST(errors.at(0).at(0).toString(), "text");
    }

    void rates_data()
    {
        // Events: "connected", or "<received>,<sent>" totals as OpenVPN reports them.
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<QList<double>>("last");
        QTest::newRow("first figure after connecting equals the totals")
            << QStringList {"connected", "1000,500"} << QList<double> {1000, 500, 1000, 500};
        QTest::newRow("later figures are the differences")
            << QStringList {"connected", "1000,500", "1500,800"} << QList<double> {500, 300, 1500, 800};
        QTest::newRow("lower count gives a negative figure")
            << QStringList {"connected", "1000,500", "200,100"} << QList<double> {-800, -400, 200, 100};
        QTest::newRow("a new connection starts from zero again")
            << QStringList {"connected", "1000,500", "connected", "1200,600"} << QList<double> {1200, 600, 1200, 600};
        QTest::newRow("totals beyond 32 bits")
            << QStringList {"connected", "5000000000,4294967296", "5000001000,4294967396"}
            << QList<double> {1000, 100, 5000001000.0, 4294967396.0};
    }
    void rates()
    {
        QFETCH(QStringList, events);
        QFETCH(QList<double>, last);
        Connection connection;
        QSignalSpy connected(&connection, &Connection::connected);
        QSignalSpy statistics(&connection, &Connection::statisticsChanged);
        for (const QString& event : events) {
            if (event == QLatin1String("connected")) {
                connection.onOvpnConnected();
            } else {
                const QStringList totals = event.split(QLatin1Char(','));
                connection.onStatisticsUpdate(totals.at(0).toULongLong(), totals.at(1).toULongLong());
            }
        }
        QCOMPARE(connected.size(), events.count(QStringLiteral("connected")));
        QVERIFY(!statistics.isEmpty());
        QList<double> figures;
        for (const QVariant& value : statistics.constLast())
            figures << value.toDouble();
        QCOMPARE(figures, last);
    }

    void connectDispatchesByProtocol_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::addColumn<bool>("starts");
        QTest::newRow("OpenVPN UDP starts OpenVPN") << int(OpenVpnUdp) << true;
        QTest::newRow("OpenVPN TCP starts OpenVPN") << int(OpenVpnTcp) << true;
        QTest::newRow("PPTP does nothing") << int(PPTP) << false;
        QTest::newRow("L2TP does nothing") << int(L2TP) << false;
        QTest::newRow("stealth value does nothing by itself") << int(Stealth) << false;
    }
    void connectDispatchesByProtocol()
    {
        QFETCH(int, protocol);
        QFETCH(bool, starts);
        m_daemon->setResult(0); // the helper refuses: the run ends with error 3 and nothing else
        Connection connection;
        QSignalSpy errors(&connection, &Connection::error);
        QSignalSpy connected(&connection, &Connection::connected);
        QSignalSpy disconnected(&connection, &Connection::disconnected);
        connection.connect(serverWith(PROTOCOL_TYPE(protocol)),
                           QStringLiteral("alice"),
                           QStringLiteral("secret"),
                           QStringLiteral("/tmp/vpn.ovpn"),
                           ProxySetting());
        if (starts) {
            QTRY_COMPARE(errors.size(), 1);
            QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("Can not connet to helper"));
            QCOMPARE(m_daemon->requestCount(), 1);
            QVERIFY(FakeHelperDaemon::ucs4Field(m_daemon->requests().constFirst(), 4, 64000)
                        .startsWith(QStringLiteral("--config \"/tmp/vpn.ovpn\" --management 127.0.0.1 ")));
        } else {
            QTest::qWait(200);
            QCOMPARE(errors.size(), 0);
            QCOMPARE(m_daemon->requestCount(), 0);
        }
        QCOMPARE(connected.size(), 0);
        QCOMPARE(disconnected.size(), 0);
    }

    void forwardsDaemonRequests_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<int>("command");
        FIREWALL_PARAMETERS parameters;
        parameters.killConnect = true;
        QTest::newRow("firewall on") << Call([parameters](Connection& c) {
            return c.firewallOn(QStringLiteral("127.0.0.1"), QStringLiteral("tun0"), parameters);
        }) << 1;
        QTest::newRow("firewall off") << Call([](Connection& c) { return c.firewallOff(); }) << 2;
        QTest::newRow("firewall change") << Call([parameters](Connection& c) {
            return c.firewallChange(QStringLiteral("127.0.0.1"), QStringLiteral("tun0"), parameters);
        }) << 3;
        QTest::newRow("firewall supported") << Call([](Connection& c) { return c.firewallSupported(); }) << 5;
        QTest::newRow("firewall enable on start") << Call([](Connection& c) {
            c.firewallEnableOnStart();
            return true;
        }) << 6;
        QTest::newRow("time zone supported") << Call([](Connection& c) { return c.timezonechangeSupported(); }) << 7;
        QTest::newRow("time zone change")
            << Call([](Connection& c) { return c.timezoneChange(false, QStringLiteral("Europe/Oslo")); }) << 8;
        QTest::newRow("update install") << Call([](Connection& c) {
            return c.updateInstall(QStringLiteral("/tmp/update.deb"));
        }) << 10;
    }
    void forwardsDaemonRequests()
    {
        QFETCH(Call, call);
        QFETCH(int, command);
        Connection connection;
        QVERIFY(call(connection));
        QCOMPARE(m_daemon->requestCount(), 1);
        QCOMPARE(int(commandOf(m_daemon->requests().constFirst())), command);
    }

    void recordedSessionThroughTheFacade()
    {
        m_daemon->setManagementScript(
            ManagementScript::fromFile(QStringLiteral(TEST_DATA "/management/real-connect-and-stop.txt")));
        Connection connection;
        QSignalSpy connected(&connection, &Connection::connected);
        QSignalSpy statistics(&connection, &Connection::statisticsChanged);
        QSignalSpy log(&connection, &Connection::logUpdate);
        QSignalSpy disconnected(&connection, &Connection::disconnected);
        QSignalSpy errors(&connection, &Connection::error);
        ServerInfo server = serverWith(OpenVpnUdp);
        connection.connect(
            server, QStringLiteral("alice"), QStringLiteral("secret"), QStringLiteral("/tmp/vpn.ovpn"), ProxySetting());
        QTRY_VERIFY_WITH_TIMEOUT(!connected.isEmpty(), 10000);
        QTRY_VERIFY_WITH_TIMEOUT(!statistics.isEmpty(), 10000);
        // Counters start at zero on connecting: the first figures equal the totals.
        const QList<QVariant> first = statistics.constFirst();
        QCOMPARE(first.at(0).toDouble(), first.at(2).toDouble());
        QCOMPARE(first.at(1).toDouble(), first.at(3).toDouble());
        QVERIFY(!log.isEmpty());
        connection.disconnect(true);
        QTRY_COMPARE_WITH_TIMEOUT(disconnected.size(), 1, 10000);
        QCOMPARE(disconnected.at(0).at(0).toBool(), false);
        QCOMPARE(errors.size(), 0);
        QTRY_VERIFY(m_daemon->managementPort()->finished());
        QCOMPARE(m_daemon->managementPort()->mismatches(), QList<QString>());
    }

    void destroyingWhileConnectedStopsOpenVpn()
    {
        ManagementScript script;
        script.send(">INFO:OpenVPN Management Interface Version 5 -- type 'help' for more info")
            .send(">STATE:1,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,");
        m_daemon->setManagementScript(script);
        {
            Connection connection;
            QSignalSpy connected(&connection, &Connection::connected);
            connection.connect(serverWith(OpenVpnTcp),
                               QStringLiteral("a"),
                               QStringLiteral("b"),
                               QStringLiteral("/tmp/vpn.ovpn"),
                               ProxySetting());
            QTRY_COMPARE_WITH_TIMEOUT(connected.size(), 1, 10000);
        }
        QTRY_VERIFY(m_daemon->managementPort()->received().contains("signal SIGTERM"));
    }

private:
    QScopedPointer<FakeHelperDaemon> m_daemon;
};

QTEST_GUILESS_MAIN(TestConnection)
#include "tst_Connection.moc"

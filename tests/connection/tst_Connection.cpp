#include <QtTest>

#include "Connection.h"
#include "FakeHelperDaemon.h"

class TestConnection : public QObject
{
    Q_OBJECT

    QScopedPointer<FakeHelperDaemon> m_daemon;

    static void connectTo(Connection& connection, PROTOCOL_TYPE protocol)
    {
        ServerInfo server;
        server.ip = QStringLiteral("203.0.113.5");
        server.protocol = protocol;
        connection.connect(
            server, QStringLiteral("alice"), QStringLiteral("secret"), QStringLiteral("/tmp/vpn.ovpn"), {});
    }

private slots:
    void init()
    {
        m_daemon.reset(new FakeHelperDaemon);
        QVERIFY(m_daemon->start());
    }
    void cleanup() { m_daemon.reset(); }

    void errorTexts_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("text");
        QTest::newRow("no TUN, misspelt") << 2 << "Can not alocate TUN";
        QTest::newRow("helper unreachable, misspelt") << 3 << "Can not connet to helper";
        QTest::newRow("UDP write failure is a bare code") << 7 << "Code error: 7";
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
        Connection connection;
        QSignalSpy statistics(&connection, &Connection::statisticsChanged);
        for (const QString& event : events) {
            if (event == QLatin1String("connected"))
                connection.onOvpnConnected();
            else
                connection.onStatisticsUpdate(event.section(',', 0, 0).toULongLong(),
                                              event.section(',', 1).toULongLong());
        }
        QList<double> figures;
        for (const QVariant& value : statistics.value(statistics.size() - 1))
            figures << value.toDouble();
        QTEST(figures, "last");
    }

    // Only the OpenVPN kinds start anything; the others stay silent and the page's own time-out ends them.
    void connectDispatchesByProtocol_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::addColumn<bool>("starts");
        QTest::newRow("OpenVPN TCP") << int(OpenVpnTcp) << true;
        QTest::newRow("PPTP does nothing") << int(PPTP) << false;
    }
    void connectDispatchesByProtocol()
    {
        QFETCH(int, protocol);
        QFETCH(bool, starts);
        m_daemon->setResult(0); // the helper refuses: the run ends with error 3 and nothing else
        Connection connection;
        QSignalSpy errors(&connection, &Connection::error);
        connectTo(connection, PROTOCOL_TYPE(protocol));
        if (starts)
            QTRY_COMPARE(errors.size(), 1);
        else
            QTest::qWait(200);
        QCOMPARE(errors.size(), starts ? 1 : 0);
        QCOMPARE(m_daemon->requestCount(), starts ? 1 : 0);
    }

    void destroyingWhileConnectedStopsOpenVpn()
    {
        // OpenVPN ignores the stop and keeps the connection open: the destructor must not hang.
        ManagementScript script;
        script.send(">INFO:OpenVPN Management Interface Version 5 -- type 'help' for more info")
            .send(">STATE:1,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,");
        m_daemon->setManagementScript(script);
        {
            Connection connection;
            QSignalSpy connected(&connection, &Connection::connected);
            connectTo(connection, OpenVpnTcp);
            QTRY_COMPARE_WITH_TIMEOUT(connected.size(), 1, 10000);
        }
        QTRY_VERIFY(m_daemon->managementPort()->received().contains("signal SIGTERM"));
    }
};

QTEST_GUILESS_MAIN(TestConnection)
#include "tst_Connection.moc"

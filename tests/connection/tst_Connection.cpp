#include <QtTest>

#include "Connection.h"
#include "FakeHelperDaemon.h"

class TestConnection : public QObject
{
    Q_OBJECT

private slots:
    void rates_data()
    {
        // Events: "connected", or "<received>,<sent>" totals as OpenVPN reports them.
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<QList<double>>("last");
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

    void destroyingWhileConnectedStopsOpenVpn()
    {
        // OpenVPN ignores the stop and keeps the connection open: the destructor must not hang.
        FakeHelperDaemon daemon;
        QVERIFY(daemon.start());
        daemon.setManagementScript(
            ManagementScript()
                .send(">INFO:OpenVPN Management Interface Version 5 -- type 'help' for more info")
                .send(">STATE:1,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,"));
        {
            Connection connection;
            QSignalSpy connected(&connection, &Connection::connected);
            ServerInfo server;
            server.ip = QStringLiteral("203.0.113.5");
            server.protocol = OpenVpnTcp;
            connection.connect(
                server, QStringLiteral("alice"), QStringLiteral("secret"), QStringLiteral("/tmp/vpn.ovpn"), {});
            QTRY_COMPARE_WITH_TIMEOUT(connected.size(), 1, 10000);
        }
        QTRY_VERIFY(daemon.managementPort()->received().contains("signal SIGTERM"));
    }
};

QTEST_GUILESS_MAIN(TestConnection)
#include "tst_Connection.moc"

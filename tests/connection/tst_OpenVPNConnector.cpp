#include <QtTest>

#include "Connection.h"
#include "FakeHelperDaemon.h"
#include "OpenVPNConnectorQt.h"
#include "ServiceConnector.h"

namespace {

// OpenVPN 2.6's greeting and answers to the three commands sent on connecting, then the lines under test.
ManagementScript framed(const QList<QByteArray>& lines, bool closeAtEnd = true)
{
    ManagementScript script;
    script.send(">INFO:OpenVPN Management Interface Version 5 -- type 'help' for more info")
        .expect("state on all")
        .send("SUCCESS: real-time state notification set to ON")
        .send("1795382833,CONNECTING,,,,,,")
        .send("END")
        .expect("log on")
        .send("SUCCESS: real-time log notification set to ON")
        .expect("bytecount 1")
        .send("SUCCESS: bytecount interval changed");
    for (const QByteArray& line : lines)
        script.send(line);
    return closeAtEnd ? script.close() : script;
}

} // namespace

// The connector's signals in arrival order; they arrive queued, as at the facade.
struct Recorder : QObject
{
    explicit Recorder(OpenVPNConnectorQt* c)
    {
        connect(c, &OpenVPNConnectorQt::connected, this, [this] { events << "connected"; });
        connect(c, &OpenVPNConnectorQt::disconnected, this, [this] { events << "disconnected"; });
        connect(c, &OpenVPNConnectorQt::reconnecting, this, [this] { events << "reconnecting"; });
        connect(c, &OpenVPNConnectorQt::stateChanged, this, [this](const QString& s) { events << "state " + s; });
        connect(c, &OpenVPNConnectorQt::error, this, [this](int code) { events << QString("error %1").arg(code); });
        connect(c, &OpenVPNConnectorQt::log, this, [this](const QString& line) {
            events << (line.size() < OpenVPNConnectorQt::LineBufferSize ? "log" : "overlong log");
        });
        connect(c, &OpenVPNConnectorQt::statisticsUpdated, this, [this](quint64 in, quint64 out) {
            events << QString("count %1 %2").arg(in).arg(out);
        });
    }
    QStringList events;
};

// The OpenVPN connector against the fake helper daemon and its fake management port, and the connection facade on it.
class TestOpenVPNConnector : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_daemon.reset(new FakeHelperDaemon);
        QVERIFY(m_daemon->start());
        m_connector.reset(new OpenVPNConnectorQt({QSharedPointer<ServiceConnector>::create()}));
        m_recorder.reset(new Recorder(m_connector.data()));
    }
    void cleanup()
    {
        m_recorder.reset();
        m_connector.reset();
        m_daemon.reset();
    }

    void interpretsLines_data()
    {
        QTest::addColumn<QList<QByteArray>>("lines");
        QTest::addColumn<QString>("events"); // signals in arrival order
        using L = QList<QByteArray>;
        const QByteArray up = ">STATE:1,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,";
        QTest::newRow("connected states, also with an IPv6 ninth field, then reconnecting")
            << L {up,
                  ">STATE:2,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,10.99.0.2,50000,fd00::1000",
                  ">STATE:3,RECONNECTING,ping-restart,,,,,"}
            << "state CONNECTED,connected,state CONNECTED,connected,state RECONNECTING,reconnecting,disconnected";
        QTest::newRow("connected with error is error 8 and ends without disconnected")
            << L {">STATE:1,CONNECTED,ERROR,10.8.0.2,10.99.0.1,1194,,"} << "state CONNECTED,error 8";
        QTest::newRow("byte counts are cumulative totals, three fields are ignored, text reads as 0")
            << L {">BYTECOUNT:2001,2021", ">BYTECOUNT: 4152 , 4124", ">BYTECOUNT:1,2,3", ">BYTECOUNT:many,12"}
            << "count 2001 2021,count 4152 4124,count 0 12,disconnected";
        QTest::newRow("auth failure only in its exact case")
            << L {">LOG:1,,auth: received control message: auth_failed",
                  ">LOG:2,,AUTH: Received control message: AUTH_FAILED"}
            << "log,error 0,disconnected";
        QTest::newRow("replies, history, prompts of other kinds are ignored")
            << L {"SUCCESS: signal SIGTERM thrown",
                  "ERROR: unknown command, enter 'help' for more options",
                  up.mid(7),
                  ">PASSWORD:Verification Failed: 'Auth'",
                  ">HOLD:Waiting for hold release:0"}
            << "disconnected";
        QTest::newRow("very long line is cut and the next one still read")
            << L {">LOG:1,," + QByteArray(20000, 'x'), up} << "log,state CONNECTED,connected,disconnected";
    }
    void interpretsLines()
    {
        QFETCH(QList<QByteArray>, lines);
        m_daemon->setManagementScript(framed(lines));
        m_connector->connect(QStringLiteral("/tmp/my dir/vpn.ovpn"), QStringLiteral("alice"), QStringLiteral("s"));
        FakeManagementPort* port = nullptr;
        QTRY_VERIFY_WITH_TIMEOUT((port = m_daemon->managementPort()) && port->finished(), 10000);
        QTRY_VERIFY(!m_connector->isRunning());
        QCoreApplication::processEvents();
        QTEST(m_recorder->events.join(QLatin1Char(',')), "events");
        QCOMPARE(port->mismatches(), QList<QString>());
        QCOMPARE(m_daemon->requests().size(), 1);
    }

    // OpenVPN started but its management port never opens: 31 attempts 100 ms apart, then error 1 alone. The
    // daemon's refusal (error 3) is met through the connect page's tests.
    void managementPortNeverOpens()
    {
        QElapsedTimer timer;
        timer.start();
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("a"), QStringLiteral("b"));
        QTRY_VERIFY_WITH_TIMEOUT(!m_connector->isRunning(), 10000);
        QVERIFY2(timer.elapsed() >= 2900, qPrintable(QString::number(timer.elapsed())));
        QCoreApplication::processEvents();
        QCOMPARE(m_recorder->events, QStringList {"error 1"});
    }

    void disconnectBeforeManagementOnlyStops()
    {
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("a"), QStringLiteral("b"));
        m_connector->disconnect();
        QTRY_COMPARE(m_recorder->events, QStringList {"disconnected"});
    }

    void rates_data()
    {
        // Events: "connected", or "<received>,<sent>" totals as OpenVPN reports them.
        QTest::addColumn<QStringList>("events");
        QTest::addColumn<QVariantList>("last"); // the rates and the totals
        QTest::newRow("a new connection starts from zero again")
            << QStringList {"connected", "1000,500", "connected", "1200,600"}
            << QVariantList {1200.0, 600.0, 1200.0, 600.0};
        QTest::newRow("totals beyond 32 bits")
            << QStringList {"connected", "5000000000,4294967296", "5000001000,4294967396"}
            << QVariantList {1000.0, 100.0, 5000001000.0, 4294967396.0};
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
        QTEST(statistics.value(statistics.size() - 1), "last");
    }

    void destroyingWhileConnectedStopsOpenVpn()
    {
        // OpenVPN ignores the stop and keeps the connection open: the destructor must not hang.
        m_daemon->setManagementScript(
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
        QTRY_VERIFY(m_daemon->managementPort()->received().contains("signal SIGTERM"));
    }

private:
    QScopedPointer<FakeHelperDaemon> m_daemon;
    QScopedPointer<OpenVPNConnectorQt> m_connector;
    QScopedPointer<Recorder> m_recorder;
};

QTEST_GUILESS_MAIN(TestOpenVPNConnector)
#include "tst_OpenVPNConnector.moc"

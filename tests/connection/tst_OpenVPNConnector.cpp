#include <QtTest>

#include "FakeHelperDaemon.h"
#include "OpenVPNConnectorQt.h"
#include "ServiceConnector.h"

namespace {

const QByteArray Greeting = ">INFO:OpenVPN Management Interface Version 5 -- type 'help' for more info";

// What OpenVPN 2.6 says around the lines under test: the greeting, the answers to the three
// commands the client sends on connecting, and the end of the stream.
ManagementScript framed(const QList<QByteArray>& lines, bool closeAtEnd = true)
{
    ManagementScript script;
    script.send(Greeting)
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

ManagementScript recorded(const QString& name)
{
    QString error;
    const ManagementScript script = ManagementScript::fromFile(QStringLiteral(TEST_DATA "/management/") + name, &error);
    if (!error.isEmpty())
        qFatal("%s", qPrintable(error));
    return script;
}

using Counts = QPair<quint64, quint64>;

} // namespace

// Collects the connector's signals on the test's thread; they arrive queued, as at the facade.
class Recorder : public QObject
{
    Q_OBJECT

public:
    explicit Recorder(OpenVPNConnectorQt* connector)
    {
        connect(connector, &OpenVPNConnectorQt::connected, this, [this] { ++connected; });
        connect(connector, &OpenVPNConnectorQt::disconnected, this, [this] { ++disconnected; });
        connect(connector, &OpenVPNConnectorQt::reconnecting, this, [this] { ++reconnecting; });
        connect(connector, &OpenVPNConnectorQt::stateChanged, this, [this](const QString& s) { states << s; });
        connect(connector, &OpenVPNConnectorQt::error, this, [this](int code) { errors << code; });
        connect(connector, &OpenVPNConnectorQt::log, this, [this](const QString& line) { logs << line; });
        connect(connector, &OpenVPNConnectorQt::statisticsUpdated, this, [this](quint64 in, quint64 out) {
            counts << Counts(in, out);
        });
    }

    int connected = 0;
    int disconnected = 0;
    int reconnecting = 0;
    QStringList states;
    QList<int> errors;
    QStringList logs;
    QList<Counts> counts;
};

class TestOpenVPNConnector : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_daemon.reset(new FakeHelperDaemon);
        QVERIFY(m_daemon->start());
        m_daemon->exportPort();
        m_connector.reset(new OpenVPNConnectorQt({QSharedPointer<ServiceConnector>::create()}));
        m_recorder.reset(new Recorder(m_connector.data()));
    }
    void cleanup()
    {
        m_recorder.reset();
        m_connector.reset();
        m_daemon.reset();
    }

    void replaysRecordedSessions_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("password");
        // Number of connected states after which the test disconnects; 0: OpenVPN ends by itself.
        QTest::addColumn<int>("connections");
        QTest::addColumn<int>("reconnections");
        QTest::addColumn<QList<int>>("errors");

        QTest::newRow("connect, count bytes, stop with SIGTERM") << "real-connect-and-stop.txt"
                                                                 << "secret" << 1 << 0 << QList<int>();
        QTest::newRow("restart reconnects and connects again") << "real-reconnect.txt"
                                                               << "secret" << 2 << 1 << QList<int>();
        QTest::newRow("wrong password gives error 0, then OpenVPN exits") << "real-wrong-password.txt"
                                                                          << "wrong" << 0 << 0 << QList<int> {0};
    }
    void replaysRecordedSessions()
    {
        QFETCH(QString, file);
        QFETCH(QString, password);
        QFETCH(int, connections);
        QFETCH(int, reconnections);

        m_daemon->setManagementScript(recorded(file));
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("alice"), password);
        if (connections > 0) {
            QTRY_COMPARE_WITH_TIMEOUT(m_recorder->states.count(QStringLiteral("CONNECTED")), connections, 15000);
            m_connector->disconnect();
        }
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder->disconnected, 1, 15000);

        FakeManagementPort* port = m_daemon->managementPort();
        QVERIFY(port);
        QTRY_VERIFY(port->finished());
        QCOMPARE(port->mismatches(), QList<QString>());
        const QList<QByteArray> sent = port->received();
        QVERIFY(sent.size() >= 5);
        QCOMPARE(sent.mid(0, 5),
                 (QList<QByteArray> {"state on all",
                                     "log on",
                                     "bytecount 1",
                                     "username \"Auth\" alice",
                                     "password \"Auth\" " + password.toUtf8()}));
        // OpenVPN echoes every state change in a ">LOG:" line as well, and that line passes the state
        // test first: each connection is reported twice, each reconnection too.
        QCOMPARE(m_recorder->connected, 2 * connections);
        QCOMPARE(m_recorder->reconnecting, 2 * reconnections);
        QTEST(m_recorder->errors, "errors");
        QVERIFY(!m_recorder->logs.isEmpty());
    }

    void interpretsLines_data()
    {
        QTest::addColumn<QList<QByteArray>>("lines");
        QTest::addColumn<int>("connected");
        QTest::addColumn<int>("reconnecting");
        QTest::addColumn<int>("disconnected");
        QTest::addColumn<QList<int>>("errors");
        QTest::addColumn<QStringList>("states");
        QTest::addColumn<QList<Counts>>("counts");
        QTest::addColumn<int>("logs");

        using L = QList<QByteArray>;
        QTest::newRow("connected state connects")
            << L {">STATE:1795382834,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,"} << 1 << 0 << 1 << QList<int>()
            << QStringList {"CONNECTED"} << QList<Counts>() << 0;
        QTest::newRow("ninth field with an IPv6 address still connects")
            << L {">STATE:1795382834,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,10.99.0.2,50000,fd00::1000"} << 1 << 0
            << 1 << QList<int>() << QStringList {"CONNECTED"} << QList<Counts>() << 0;
        QTest::newRow("reconnecting after connected")
            << L {">STATE:1,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,", ">STATE:2,RECONNECTING,ping-restart,,,,,"}
            << 1 << 1 << 1 << QList<int>() << QStringList {"CONNECTED", "RECONNECTING"} << QList<Counts>() << 0;
        QTest::newRow("connected with error is error 8 and ends without disconnected")
            << L {">STATE:1,CONNECTED,ERROR,10.8.0.2,10.99.0.1,1194,,"} << 0 << 0 << 0 << QList<int> {8}
            << QStringList {"CONNECTED"} << QList<Counts>() << 0;
        QTest::newRow("exiting state with empty fields changes nothing else")
            << L {">STATE:1795382837,EXITING,SIGTERM,,,,,"} << 0 << 0 << 1 << QList<int>() << QStringList {"EXITING"}
            << QList<Counts>() << 0;
        QTest::newRow("byte counts are cumulative totals")
            << L {">BYTECOUNT:2001,2021", ">BYTECOUNT: 4152 , 4124"} << 0 << 0 << 1 << QList<int>() << QStringList()
            << QList<Counts> {{2001, 2021}, {4152, 4124}} << 0;
        QTest::newRow("byte count with three fields is ignored")
            << L {">BYTECOUNT:1,2,3"} << 0 << 0 << 1 << QList<int>() << QStringList() << QList<Counts>() << 0;
        QTest::newRow("byte count that is not a number reads as 0")
            << L {">BYTECOUNT:many,12"} << 0 << 0 << 1 << QList<int>() << QStringList() << QList<Counts> {{0, 12}} << 0;
        QTest::newRow("TAP message twice gives one error 2")
            << L {">LOG:1,N,There are no TAP-Windows adapters on this system.",
                  ">LOG:2,N,There are no TAP-Windows adapters on this system."}
            << 0 << 0 << 1 << QList<int> {2} << QStringList() << QList<Counts>() << 0;
        QTest::newRow("proxy message twice gives one error 6")
            << L {">LOG:1,N,Proxy requires authentication", ">LOG:2,N,proxy REQUIRES authentication"} << 0 << 0 << 1
            << QList<int> {6} << QStringList() << QList<Counts>() << 0;
        QTest::newRow("each UDP write failure is error 7 and a log line")
            << L {">LOG:1,W,write UDPv4: No buffer space available (WSAENOBUFS) (code=10055)",
                  ">LOG:2,W,write UDPv4: No Route to Host (WSAEHOSTUNREACH) (code=10065)"}
            << 0 << 0 << 1 << QList<int> {7, 7} << QStringList() << QList<Counts>() << 2;
        QTest::newRow("auth failure only in its exact case")
            << L {">LOG:1,,auth: received control message: auth_failed",
                  ">LOG:2,,AUTH: Received control message: AUTH_FAILED"}
            << 0 << 0 << 1 << QList<int> {0} << QStringList() << QList<Counts>() << 1;
        QTest::newRow("log echo of a state line counts as a state line")
            << L {">LOG:1795382834,,MANAGEMENT: >STATE:1795382834,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,"} << 1
            << 0 << 1 << QList<int>() << QStringList {""} << QList<Counts>() << 0;
        QTest::newRow("replies, history, prompts of other kinds are ignored")
            << L {"SUCCESS: signal SIGTERM thrown",
                  "ERROR: unknown command, enter 'help' for more options",
                  "1795382834,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,",
                  "END",
                  ">PASSWORD:Verification Failed: 'Auth'",
                  ">HOLD:Waiting for hold release:0"}
            << 0 << 0 << 1 << QList<int>() << QStringList() << QList<Counts>() << 0;
        QTest::newRow("very long line is cut and the next one still read")
            << L {">LOG:1,," + QByteArray(20000, 'x'), ">STATE:2,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,"} << 1 << 0
            << 1 << QList<int>() << QStringList {"CONNECTED"} << QList<Counts>() << 1;
    }
    void interpretsLines()
    {
        QFETCH(QList<QByteArray>, lines);
        QFETCH(int, disconnected);

        m_daemon->setManagementScript(framed(lines));
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("alice"), QStringLiteral("secret"));
        QTRY_VERIFY_WITH_TIMEOUT(m_daemon->managementPort() && m_daemon->managementPort()->finished(), 10000);
        QTRY_VERIFY(!m_connector->isRunning());
        QCoreApplication::processEvents();

        QTEST(m_recorder->connected, "connected");
        QTEST(m_recorder->reconnecting, "reconnecting");
        QCOMPARE(m_recorder->disconnected, disconnected);
        QTEST(m_recorder->errors, "errors");
        QTEST(m_recorder->states, "states");
        QTEST(m_recorder->counts, "counts");
        QTEST(m_recorder->logs.size(), "logs");
        for (const QString& line : qAsConst(m_recorder->logs))
            QVERIFY(line.size() < OpenVPNConnectorQt::LineBufferSize);
        QCOMPARE(m_daemon->managementPort()->mismatches(), QList<QString>());
    }

    void answersCredentials_data()
    {
        QTest::addColumn<QString>("username");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QByteArray>("usernameLine");
        QTest::addColumn<QByteArray>("passwordLine");
        QTest::newRow("plain") << "alice"
                               << "secret" << QByteArray("username \"Auth\" alice")
                               << QByteArray("password \"Auth\" secret");
        QTest::newRow("blank sent unquoted")
            << "john doe"
            << "pass word" << QByteArray("username \"Auth\" john doe") << QByteArray("password \"Auth\" pass word");
        QTest::newRow("non-ASCII sent as UTF-8") << "jürgen"
                                                 << "pässwort" << QByteArray("username \"Auth\" j\xc3\xbcrgen")
                                                 << QByteArray("password \"Auth\" p\xc3\xa4sswort");
        // 1023 bytes in all: the line feed is the part that gets cut.
        QTest::newRow("overlong value cut to the command limit")
            << QString(1100, QLatin1Char('u')) << "pw" << QByteArray("username \"Auth\" ") + QByteArray(1007, 'u')
            << QByteArray("password \"Auth\" pw");
    }
    void answersCredentials()
    {
        QFETCH(QString, username);
        QFETCH(QString, password);
        QFETCH(QByteArray, usernameLine);
        QFETCH(QByteArray, passwordLine);

        ManagementScript script = framed({">PASSWORD:Need 'Auth' username/password"}, false);
        if (usernameLine.size() < 1023) {
            script.expect(usernameLine)
                .send("SUCCESS: 'Auth' username entered, but not yet verified")
                .expect(passwordLine);
        } else {
            // The cut command lost its line feed: the password command continues the same line.
            script.send("SUCCESS: 'Auth' username entered, but not yet verified").expect(usernameLine + passwordLine);
        }
        script.send("SUCCESS: 'Auth' password entered, but not yet verified").close();
        m_daemon->setManagementScript(script);
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), username, password);
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder->disconnected, 1, 15000);
        QCOMPARE(m_daemon->managementPort()->mismatches(), QList<QString>());
    }

    void sendsArgumentString()
    {
        m_daemon->setManagementScript(framed({}));
        m_connector->connect(QStringLiteral("/tmp/my dir/vpn.ovpn"), QStringLiteral("a"), QStringLiteral("b"));
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder->disconnected, 1, 10000);
        QCOMPARE(m_daemon->requestCount(), 1);
        const QByteArray request = m_daemon->requests().constFirst();
        QCOMPARE(quint8(request.at(0)), quint8(9));
        const QString arguments = FakeHelperDaemon::ucs4Field(request, 4, 64000);
        const quint16 port = m_daemon->managementPort()->port();
        QCOMPARE(arguments,
                 QStringLiteral("--config \"/tmp/my dir/vpn.ovpn\" --management 127.0.0.1 %1 "
                                "--management-query-passwords  --script-security 2  "
                                "--up /usr/share/tavrin/script/update-resolv-conf.sh  "
                                "--down /usr/share/tavrin/script/update-resolv-conf.sh ")
                     .arg(port));
    }

    void managementPortNeverOpens()
    {
        // The daemon says OpenVPN started, but nothing listens on the management port.
        QElapsedTimer timer;
        timer.start();
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("a"), QStringLiteral("b"));
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder->errors, QList<int> {1}, 10000);
        // 31 attempts, 100 ms apart.
        QVERIFY2(timer.elapsed() >= 2900, qPrintable(QString::number(timer.elapsed())));
        QTRY_VERIFY(!m_connector->isRunning());
        QCoreApplication::processEvents();
        QCOMPARE(m_recorder->disconnected, 0);
    }

    void helperFailureIsError3_data()
    {
        QTest::addColumn<bool>("daemonRunning");
        QTest::newRow("daemon refuses to start OpenVPN") << true;
        QTest::newRow("no daemon listening") << false;
    }
    void helperFailureIsError3()
    {
        QFETCH(bool, daemonRunning);
        m_daemon->setResult(0);
        if (!daemonRunning) {
            const quint16 port = m_daemon->port();
            m_daemon.reset();
            qputenv("TAVRIN_HELPER_PORT", QByteArray::number(port));
        }
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("a"), QStringLiteral("b"));
        QTRY_COMPARE(m_recorder->errors, QList<int> {3});
        QTRY_VERIFY(!m_connector->isRunning());
        QCoreApplication::processEvents();
        QCOMPARE(m_recorder->disconnected, 0);
    }

    void disconnectBeforeManagementOnlyStops()
    {
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("a"), QStringLiteral("b"));
        m_connector->disconnect();
        QTRY_COMPARE(m_recorder->disconnected, 1);
        QCOMPARE(m_recorder->errors, QList<int>());
    }

    void destroyingWhileConnectedEndsTheThread()
    {
        // OpenVPN ignores the stop and keeps the connection open.
        m_daemon->setManagementScript(framed({">STATE:1,CONNECTED,SUCCESS,10.8.0.2,10.99.0.1,1194,,"}, false));
        m_connector->connect(QStringLiteral("/tmp/vpn.ovpn"), QStringLiteral("a"), QStringLiteral("b"));
        QTRY_COMPARE_WITH_TIMEOUT(m_recorder->connected, 1, 10000);
        m_connector->disconnect();
        m_recorder.reset();
        m_connector.reset();
        QTRY_COMPARE(m_daemon->managementPort()->received().value(3), QByteArray("signal SIGTERM"));
    }

private:
    QScopedPointer<FakeHelperDaemon> m_daemon;
    QScopedPointer<OpenVPNConnectorQt> m_connector;
    QScopedPointer<Recorder> m_recorder;
};

QTEST_GUILESS_MAIN(TestOpenVPNConnector)
#include "tst_OpenVPNConnector.moc"

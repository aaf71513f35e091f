#include <QtTest>

#include "FakeHelperDaemon.h"
#include "ServiceConnector.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstring>
#include <functional>
#include <pthread.h>
#include <thread>

namespace {

using Call = std::function<bool(ServiceConnector&)>;

// Offsets written out as numbers on purpose: the test pins the wire layout, not the header.
// Fields: {offset, bytes}; a field given as text is written in UCS-4.
QByteArray packet(quint32 command, const QList<QPair<int, QVariant>>& fields = {})
{
    QByteArray bytes(64005, '\0');
    std::memcpy(bytes.data(), &command, 4);
    for (const auto& field : fields) {
        QByteArray data = field.second.toByteArray();
        if (field.second.type() == QVariant::String) {
            const QVector<uint> codePoints = field.second.toString().toUcs4();
            data = QByteArray(reinterpret_cast<const char*>(codePoints.constData()), codePoints.size() * 4);
        }
        bytes.replace(field.first, data.size(), data);
    }
    return bytes;
}

// Signals fired at the calling thread every 200 us, with a handler that does not restart calls, as a
// burst of SIGCHLD from finished ping processes would.
struct SignalStorm
{
    SignalStorm()
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {
        };
        sigaction(SIGUSR1, &action, &previous);
        thread = std::thread([this, target = pthread_self()] {
            while (!stop) {
                pthread_kill(target, SIGUSR1);
                std::this_thread::sleep_for(std::chrono::microseconds(200));
            }
        });
    }
    ~SignalStorm()
    {
        stop = true;
        thread.join();
        sigaction(SIGUSR1, &previous, nullptr);
    }
    struct sigaction previous = {};
    std::atomic<bool> stop {false};
    std::thread thread;
};

} // namespace

Q_DECLARE_METATYPE(Call)
Q_DECLARE_METATYPE(FakeHelperDaemon::Behaviour)

class TestServiceConnector : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_daemon.reset(new FakeHelperDaemon);
        QVERIFY(m_daemon->start());
    }

    void requestBytes_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QByteArray>("expected");
        using S = ServiceConnector;
        const QString host = QStringLiteral("höst;\U0001F600");
        QTest::newRow("firewall change: text beyond the BMP takes one code point") << Call([host](S& s) {
            return s.firewallChange(host, "tun0", {false, true, false, true, false});
        }) << packet(3, {{4, host}, {40964, QStringLiteral("tun0")}, {43012, QByteArray("\x00\x01\x00\x01\x00", 5)}});
        QTest::newRow("firewall off has no payload") << Call([](S& s) { return s.firewallOff(); }) << packet(2);
        QTest::newRow("time zone set: flag 0, UTF-8 name at offset 5")
            << Call([](S& s) { return s.timezoneChange(false, QStringLiteral("America/São_Paulo")); })
            << packet(8, {{5, QByteArray("America/S\xc3\xa3o_Paulo")}});
        QTest::newRow("time zone restore: flag 1, empty name")
            << Call([](S& s) { return s.timezoneChange(true, QString()); }) << packet(8, {{4, QByteArray("\x01")}});
        QTest::newRow("update install: reserved zero byte, path at the odd offset 5")
            << Call([](S& s) { return s.updateInstall("/tmp/dl/update.deb"); })
            << packet(10, {{5, QStringLiteral("/tmp/dl/update.deb")}});
        QTest::newRow("longest texts that still leave a terminating zero")
            << Call([](S& s) { return s.firewallOn(QString(10239, 'a'), QString(511, 'b'), {}); })
            << packet(1, {{4, QString(10239, 'a')}, {40964, QString(511, 'b')}});
    }
    void requestBytes()
    {
        QFETCH(Call, call);
        QFETCH(QByteArray, expected);
        ServiceConnector connector;
        QVERIFY(call(connector));
        QCOMPARE(m_daemon->requests().size(), 1);
        const QByteArray actual = m_daemon->requests().constFirst();
        QCOMPARE(actual.size(), expected.size());
        // The first differing offset says more than two 64 kB dumps.
        QCOMPARE(std::mismatch(actual.begin(), actual.end(), expected.begin()).first - actual.begin(), actual.size());
    }

    // Interrupted calls are taken up again: every kind of exchange still gets its answer.
    void signalsChangeNoAnswer_data() { requestBytes_data(); }
    void signalsChangeNoAnswer()
    {
        QFETCH(Call, call);
        m_daemon->setBehaviour(FakeHelperDaemon::Behaviour::ReplyInPieces);
        ServiceConnector connector;
        const SignalStorm storm;
        QVERIFY(call(connector));
    }

    void overlongTextIsRefused_data()
    {
        QTest::addColumn<Call>("call");
        using S = ServiceConnector;
        QTest::newRow("10240 address characters leave no terminating zero")
            << Call([](S& s) { return s.firewallOn(QString(10240, '1'), "tun0", {}); });
        QTest::newRow("time zone of 256 two-byte characters")
            << Call([](S& s) { return s.timezoneChange(false, QString(256, QChar(0x00e9))); });
        QTest::newRow("argument string of 16000 characters")
            << Call([](S& s) { return s.runOpenVpnWithConfig(QString(16000, 'a')); });
    }
    void overlongTextIsRefused()
    {
        QFETCH(Call, call);
        ServiceConnector connector;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Helper request refused")));
        QVERIFY(!call(connector));
        // Nothing was sent: a later request is the first the daemon sees.
        QVERIFY(connector.firewallOff());
        QCOMPARE(m_daemon->requests().size(), 1);
    }

    void replyDecidesResult_data()
    {
        QTest::addColumn<FakeHelperDaemon::Behaviour>("behaviour");
        QTest::addColumn<int>("resultByte");
        QTest::addColumn<bool>("expected");
        using B = FakeHelperDaemon::Behaviour;
        // A zero result is met through the page tests, a reply in pieces through signalsChangeNoAnswer, a daemon that
        // never replies through tst_ConnectionController::silentDaemonStallsNothing.
        QTest::newRow("any non-zero result byte is true") << B::Reply << 0xff << true;
        QTest::newRow("daemon hangs up without replying") << B::CloseWithoutReply << 1 << false;
    }
    void replyDecidesResult()
    {
        QFETCH(FakeHelperDaemon::Behaviour, behaviour);
        QFETCH(int, resultByte);
        m_daemon->setBehaviour(behaviour);
        m_daemon->setResult(quint8(resultByte));
        ServiceConnector connector;
        QTEST(connector.firewallSupported(), "expected");
        QCOMPARE(m_daemon->requests().size(), 1);
    }

    void noDaemonFailsAtOnce()
    {
        const quint16 port = m_daemon->port();
        m_daemon.reset(); // nothing listens on the port any more
        qputenv("TAVRIN_HELPER_PORT", QByteArray::number(port));
        ServiceConnector connector;
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!connector.firewallSupported());
        // A refused connect returns straight away, well below the 5 s receive time-out.
        QVERIFY2(timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
    }

private:
    QScopedPointer<FakeHelperDaemon> m_daemon;
};

QTEST_GUILESS_MAIN(TestServiceConnector)
#include "tst_ServiceConnector.moc"

#include <QtTest>

#include "FakeHelperDaemon.h"
#include "ServiceConnector.h"
#include "ServiceConnectorPrivate.h"

#include <cstring>
#include <functional>

namespace {

using Call = std::function<bool(ServiceConnector&)>;

// Offsets written out as numbers on purpose: the test pins the wire layout, not the header.
QByteArray packet(quint32 command)
{
    QByteArray bytes(64005, '\0');
    std::memcpy(bytes.data(), &command, 4);
    return bytes;
}

void putUcs4(QByteArray& bytes, int offset, const QString& text)
{
    const QVector<uint> codePoints = text.toUcs4();
    std::memcpy(bytes.data() + offset, codePoints.constData(), std::size_t(codePoints.size()) * 4);
}

void putBytes(QByteArray& bytes, int offset, const QByteArray& data)
{
    std::memcpy(bytes.data() + offset, data.constData(), std::size_t(data.size()));
}

FIREWALL_PARAMETERS flags(bool kill, bool ipv6, bool local, bool timezone, bool idle)
{
    FIREWALL_PARAMETERS parameters;
    parameters.killConnect = kill;
    parameters.ipv6Block = ipv6;
    parameters.allowLocalIp = local;
    parameters.changeTimezone = timezone;
    parameters.idle = idle;
    return parameters;
}

// Where the first difference lies, to make a failed comparison readable.
QString firstDifference(const QByteArray& actual, const QByteArray& expected)
{
    if (actual.size() != expected.size())
        return QStringLiteral("size %1, expected %2").arg(actual.size()).arg(expected.size());
    for (int i = 0; i < actual.size(); ++i)
        if (actual.at(i) != expected.at(i))
            return QStringLiteral("offset %1: %2, expected %3")
                .arg(i)
                .arg(quint8(actual.at(i)))
                .arg(quint8(expected.at(i)));
    return {};
}

} // namespace

Q_DECLARE_METATYPE(Call)

class TestServiceConnector : public QObject
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

    void requestBytes_data()
    {
        QTest::addColumn<Call>("call");
        QTest::addColumn<QByteArray>("expected");

        QByteArray on = packet(1);
        putUcs4(on, 4, QStringLiteral("127.0.0.1;10.0.0.1;203.0.113.7"));
        putUcs4(on, 40964, QStringLiteral("tun0"));
        putBytes(on, 43012, QByteArray("\x01\x00\x01\x00\x01", 5));
        QTest::newRow("firewall on: addresses, interface and flags at their offsets") << Call([](ServiceConnector& s) {
            return s.firewallOn(QStringLiteral("127.0.0.1;10.0.0.1;203.0.113.7"),
                                QStringLiteral("tun0"),
                                flags(true, false, true, false, true));
        }) << on;

        QByteArray change = packet(3);
        putUcs4(change, 4, QStringLiteral("höst;\U0001F600"));
        putUcs4(change, 40964, QStringLiteral("tun0"));
        putBytes(change, 43012, QByteArray("\x00\x01\x00\x01\x00", 5));
        QTest::newRow("firewall change: text beyond the BMP takes one code point") << Call([](ServiceConnector& s) {
            return s.firewallChange(
                QStringLiteral("höst;\U0001F600"), QStringLiteral("tun0"), flags(false, true, false, true, false));
        }) << change;

        QTest::newRow("firewall off has no payload")
            << Call([](ServiceConnector& s) { return s.firewallOff(); }) << packet(2);
        QTest::newRow("firewall supported")
            << Call([](ServiceConnector& s) { return s.firewallSupported(); }) << packet(5);
        QTest::newRow("firewall enable on start")
            << Call([](ServiceConnector& s) { return s.firewallEnableOnStart(); }) << packet(6);
        QTest::newRow("time zone change supported")
            << Call([](ServiceConnector& s) { return s.timezonechangeSupported(); }) << packet(7);

        QByteArray zone = packet(8);
        putBytes(zone, 5, QByteArray("America/S\xc3\xa3o_Paulo"));
        QTest::newRow("time zone set: flag 0, UTF-8 name at offset 5")
            << Call([](ServiceConnector& s) { return s.timezoneChange(false, QStringLiteral("America/São_Paulo")); })
            << zone;

        QByteArray restore = packet(8);
        restore[4] = 1;
        QTest::newRow("time zone restore: flag 1, empty name")
            << Call([](ServiceConnector& s) { return s.timezoneChange(true, QString()); }) << restore;

        const QString arguments = QStringLiteral("--config \"/tmp/a b.ovpn\" --management 127.0.0.1 4000 ");
        QByteArray run = packet(9);
        putUcs4(run, 4, arguments);
        QTest::newRow("run OpenVPN: argument string at offset 4")
            << Call([arguments](ServiceConnector& s) { return s.runOpenVpnWithConfig(arguments); }) << run;

        QByteArray update = packet(10);
        putUcs4(update, 5, QStringLiteral("/tmp/dl/update.deb"));
        QTest::newRow("update install: reserved zero byte, path at the odd offset 5")
            << Call([](ServiceConnector& s) { return s.updateInstall(QStringLiteral("/tmp/dl/update.deb")); })
            << update;

        QByteArray longest = packet(1);
        putUcs4(longest, 4, QString(10239, QLatin1Char('a')));
        putUcs4(longest, 40964, QString(511, QLatin1Char('b')));
        QTest::newRow("longest texts that still leave a terminating zero") << Call([](ServiceConnector& s) {
            return s.firewallOn(QString(10239, QLatin1Char('a')), QString(511, QLatin1Char('b')), {});
        }) << longest;

        QByteArray longZone = packet(8);
        putBytes(longZone, 5, QByteArray(511, 'z'));
        QTest::newRow("time zone name of 511 bytes")
            << Call([](ServiceConnector& s) { return s.timezoneChange(false, QString(511, QLatin1Char('z'))); })
            << longZone;
    }
    void requestBytes()
    {
        QFETCH(Call, call);
        QFETCH(QByteArray, expected);

        ServiceConnector connector;
        QVERIFY(call(connector));
        QCOMPARE(m_daemon->requestCount(), 1);
        const QByteArray actual = m_daemon->requests().constFirst();
        QCOMPARE(firstDifference(actual, expected), QString());
    }

    void overlongTextIsRefused_data()
    {
        QTest::addColumn<Call>("call");
        QTest::newRow("10240 address characters leave no terminating zero") << Call([](ServiceConnector& s) {
            return s.firewallOn(QString(10240, QLatin1Char('1')), QStringLiteral("tun0"), {});
        });
        QTest::newRow("interface name of 512 characters") << Call([](ServiceConnector& s) {
            return s.firewallChange(QStringLiteral("127.0.0.1"), QString(512, QLatin1Char('t')), {});
        });
        QTest::newRow("time zone of 512 bytes")
            << Call([](ServiceConnector& s) { return s.timezoneChange(false, QString(512, QLatin1Char('z'))); });
        QTest::newRow("time zone of 256 two-byte characters")
            << Call([](ServiceConnector& s) { return s.timezoneChange(false, QString(256, QChar(0x00e9))); });
        QTest::newRow("argument string of 16000 characters")
            << Call([](ServiceConnector& s) { return s.runOpenVpnWithConfig(QString(16000, QLatin1Char('a'))); });
        QTest::newRow("package path of 16000 characters")
            << Call([](ServiceConnector& s) { return s.updateInstall(QString(16000, QLatin1Char('p'))); });
    }
    void overlongTextIsRefused()
    {
        QFETCH(Call, call);
        ServiceConnector connector;
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^Helper request refused")));
        QVERIFY(!call(connector));
        // Nothing was sent: a later request is the first the daemon sees.
        QVERIFY(connector.firewallOff());
        QCOMPARE(m_daemon->requestCount(), 1);
    }

    void replyDecidesResult_data()
    {
        QTest::addColumn<int>("behaviour");
        QTest::addColumn<int>("resultByte");
        QTest::addColumn<bool>("expected");
        const int reply = int(FakeHelperDaemon::Behaviour::Reply);
        QTest::newRow("result byte 1 is true") << reply << 1 << true;
        QTest::newRow("result byte 0 is false") << reply << 0 << false;
        QTest::newRow("any non-zero result byte is true") << reply << 0xff << true;
        QTest::newRow("reply in several pieces is joined")
            << int(FakeHelperDaemon::Behaviour::ReplyInPieces) << 1 << true;
        QTest::newRow("daemon hangs up without replying")
            << int(FakeHelperDaemon::Behaviour::CloseWithoutReply) << 1 << false;
    }
    void replyDecidesResult()
    {
        QFETCH(int, behaviour);
        QFETCH(int, resultByte);
        QFETCH(bool, expected);
        m_daemon->setBehaviour(FakeHelperDaemon::Behaviour(behaviour));
        m_daemon->setResult(quint8(resultByte));
        ServiceConnector connector;
        QCOMPARE(connector.firewallSupported(), expected);
        QCOMPARE(m_daemon->requestCount(), 1);
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
        QVERIFY(!connector.runOpenVpnWithConfig(QStringLiteral("--config \"x\"")));
        // A refused connect returns straight away, well below the 5 s receive time-out.
        QVERIFY2(timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
    }

    void installHelperSendsNothing()
    {
        ServiceConnector connector;
        QVERIFY(connector.installHelper(QStringLiteral("/some/path")));
        QCOMPARE(m_daemon->requestCount(), 0);
    }

    void helperPortFromEnvironment_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addColumn<int>("port");
        QTest::newRow("unset gives the product port") << QByteArray() << 23589;
        QTest::newRow("a valid port moves it") << QByteArray("40001") << 40001;
        QTest::newRow("text is ignored") << QByteArray("helper") << 23589;
        QTest::newRow("zero is ignored") << QByteArray("0") << 23589;
        QTest::newRow("beyond 65535 is ignored") << QByteArray("70000") << 23589;
    }
    void helperPortFromEnvironment()
    {
        QFETCH(QByteArray, value);
        QFETCH(int, port);
        if (value.isNull())
            qunsetenv("TAVRIN_HELPER_PORT");
        else
            qputenv("TAVRIN_HELPER_PORT", value);
        QCOMPARE(int(ServiceConnectorPrivate::helperPort()), port);
    }

private:
    QScopedPointer<FakeHelperDaemon> m_daemon;
};

QTEST_GUILESS_MAIN(TestServiceConnector)
#include "tst_ServiceConnector.moc"

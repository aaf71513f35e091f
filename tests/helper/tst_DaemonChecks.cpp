// The daemon's own checks as units, beside those of OpenVPN's start: the nft script built for each firewall request
// (applying it to a real kernel is the e2e test's part), finding the caller's uid, and reading and logging the
// wire's text fields.

#include "FirewallRules.h"
#include "PeerUid.h"
#include "WireText.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <unistd.h>

class tst_DaemonChecks : public QObject
{
    Q_OBJECT

private slots:
    void rules_data()
    {
        QTest::addColumn<QString>("addresses");
        QTest::addColumn<QString>("interfaceName");
        QTest::addColumn<int>("flags"); // kill switch 1, IPv6 block 2, local networks 4, idle 8
        QTest::addColumn<QStringList>("present"); // empty: refused
        QTest::addColumn<QStringList>("absent");

        const QString both = QStringLiteral("127.0.0.1;10.0.0.7");
        const QString tun = QStringLiteral("tun0");
        QTest::newRow("idle kill switch does not trust the tunnel")
            << both << tun << (1 | 8) << QStringList {"policy drop", "ip daddr @allowed4 accept"}
            << QStringList {"tun0"};
        QTest::newRow("local networks pass with the kill switch")
            << both << tun << (1 | 4)
            << QStringList {"ip daddr @local4 accept", "192.168.0.0/16", "169.254.0.0/16", "224.0.0.0/4", "fe80::/10"}
            << QStringList {};
        QTest::newRow("IPv6 block alone keeps IPv4 open")
            << both << tun << 2 << QStringList {"policy accept", "meta nfproto ipv6 drop"}
            << QStringList {"policy drop", "@allowed4 accept"};
        QTest::newRow("IPv6 block comes before the tunnel")
            << both << tun << (1 | 2) << QStringList {"meta nfproto ipv6 drop\n        oifname \"tun0\""}
            << QStringList {};
        QTest::newRow("IPv6 and subnet addresses")
            << QStringLiteral(" 2001:db8::1 ; 10.8.0.0/16;;") << tun << 1
            << QStringList {"2001:db8::1/128", "10.8.0.0/16", "ip6 daddr @allowed6 accept"}
            << QStringList {"127.0.0.1"};
        QTest::newRow("quote in the interface")
            << both << QStringLiteral("tun0\" accept") << 1 << QStringList() << QStringList();
    }

    void rules()
    {
        QFETCH(QString, addresses);
        QFETCH(QString, interfaceName);
        QFETCH(int, flags);
        QFETCH(QStringList, present);
        QFETCH(QStringList, absent);
        FirewallRequest request;
        request.addresses = addresses;
        request.interfaceName = interfaceName;
        request.killConnect = flags & 1;
        request.ipv6Block = flags & 2;
        request.allowLocalIp = flags & 4;
        request.idle = flags & 8;
        FirewallRules rules;
        QCOMPARE(rules.build(request), !present.isEmpty());
        const QString script = rules.script();
        QCOMPARE(rules.error().isEmpty(), !present.isEmpty());
        if (present.isEmpty())
            QVERIFY(script.isEmpty());
        for (const QString& text : present)
            QVERIFY2(script.contains(text), qPrintable(text + QStringLiteral(" missing in\n") + script));
        for (const QString& text : absent)
            QVERIFY2(!script.contains(text), qPrintable(text + QStringLiteral(" present in\n") + script));
        // The table is replaced as a whole, and no other table is ever named.
        QVERIFY(script.isEmpty() || script.startsWith(FirewallRules::removeScript()));
        QCOMPARE(script.count(QStringLiteral("table ")), script.count(QStringLiteral("table inet tavrin")));
    }

    void lookup()
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost));
        QTcpSocket client;
        client.connectToHost(QHostAddress::LocalHost, server.serverPort());
        QVERIFY(client.waitForConnected() && server.waitForNewConnection(1000));
        const PeerUid::Peer peer = PeerUid::lookup(client.localPort(), server.serverPort());
        QCOMPARE(peer.uid, qint64(::getuid()));
        QVERIFY(peer.inode != 0);
        QCOMPARE(PeerUid::lookup(client.localPort(), quint16(server.serverPort() + 1)).uid, qint64(-1));
    }

    void forLog()
    {
        const QString logged = WireText::forLog(QStringLiteral("UTC\nrequest from uid 0: x\r\u2028\x7f"));
        QCOMPARE(logged, QStringLiteral("UTC\\x0arequest from uid 0: x\\x0d\\u2028\\x7f"));
    }

    void ucs4_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("valid");

        auto ucs4 = [](const QVector<uint>& codes) {
            return QByteArray(reinterpret_cast<const char*>(codes.constData()), codes.size() * 4);
        };
        QTest::newRow("beyond the basic plane")
            << ucs4({0x1F600, 0}) << (QString(QChar(0xD83D)) + QChar(0xDE00)) << true;
        QTest::newRow("no terminating zero") << ucs4({'a', 'b'}) << QString() << false;
        QTest::newRow("above the last code point") << ucs4({0x110000, 0}) << QString() << false;
    }

    void ucs4()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, text);
        QFETCH(bool, valid);
        const QString read = WireText::readUcs4(field, 0, std::size_t(field.size()));
        QCOMPARE(!read.isNull(), valid);
        if (valid)
            QCOMPARE(read, text);
    }
};

QTEST_GUILESS_MAIN(tst_DaemonChecks)
#include "tst_DaemonChecks.moc"

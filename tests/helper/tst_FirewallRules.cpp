// The nft script built for each firewall request. Applying it to a real kernel is the e2e test's part.

#include "FirewallRules.h"

#include <QTest>

class tst_FirewallRules : public QObject
{
    Q_OBJECT

private slots:
    void rules_data();
    void rules();
};

void tst_FirewallRules::rules_data()
{
    QTest::addColumn<QString>("addresses");
    QTest::addColumn<QString>("interfaceName");
    QTest::addColumn<int>("flags"); // kill switch 1, IPv6 block 2, local networks 4, idle 8
    QTest::addColumn<QStringList>("present"); // empty: refused
    QTest::addColumn<QStringList>("absent");

    const QString both = QStringLiteral("127.0.0.1;10.0.0.7");
    const QString tun = QStringLiteral("tun0");
    QTest::newRow("idle kill switch does not trust the tunnel")
        << both << tun << (1 | 8) << QStringList {"policy drop", "ip daddr @allowed4 accept"} << QStringList {"tun0"};
    QTest::newRow("local networks pass with the kill switch")
        << both << tun << (1 | 4)
        << QStringList {"ip daddr @local4 accept", "192.168.0.0/16", "169.254.0.0/16", "224.0.0.0/4", "fe80::/10"}
        << QStringList {};
    QTest::newRow("IPv6 block alone keeps IPv4 open")
        << both << tun << 2 << QStringList {"policy accept", "meta nfproto ipv6 drop"}
        << QStringList {"policy drop", "@allowed4 accept"};
    QTest::newRow("IPv6 block comes before the tunnel")
        << both << tun << (1 | 2) << QStringList {"meta nfproto ipv6 drop\n        oifname \"tun0\""} << QStringList {};
    QTest::newRow("IPv6 and subnet addresses")
        << QStringLiteral(" 2001:db8::1 ; 10.8.0.0/16;;") << tun << 1
        << QStringList {"2001:db8::1/128", "10.8.0.0/16", "ip6 daddr @allowed6 accept"} << QStringList {"127.0.0.1"};
    QTest::newRow("quote in the interface")
        << both << QStringLiteral("tun0\" accept") << 1 << QStringList() << QStringList();
}

void tst_FirewallRules::rules()
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

QTEST_GUILESS_MAIN(tst_FirewallRules)
#include "tst_FirewallRules.moc"

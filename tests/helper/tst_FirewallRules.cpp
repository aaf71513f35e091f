// The nft script built for each firewall request. Applying it to a real kernel is the e2e test's part.

#include "FirewallRules.h"

#include <QTest>

Q_DECLARE_METATYPE(FirewallRequest)

class tst_FirewallRules : public QObject
{
    Q_OBJECT

private slots:
    void rules_data();
    void rules();
    void malformedRequests_data();
    void malformedRequests();
};

namespace {

FirewallRequest
request(bool kill, bool ipv6, bool local, bool idle, const QString& addresses = QStringLiteral("127.0.0.1;10.0.0.7"))
{
    FirewallRequest r;
    r.addresses = addresses;
    r.interfaceName = QStringLiteral("tun0");
    r.killConnect = kill;
    r.ipv6Block = ipv6;
    r.allowLocalIp = local;
    r.idle = idle;
    return r;
}

} // namespace

void tst_FirewallRules::rules_data()
{
    QTest::addColumn<FirewallRequest>("request");
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("absent");

    QTest::newRow("kill switch lets loopback, tunnel and allowed addresses out")
        << request(true, false, false, false)
        << QStringList {"policy drop",
                        "oifname \"lo\" accept",
                        "oifname \"tun0\" accept",
                        "ip daddr @allowed4 accept",
                        "10.0.0.7/32",
                        "127.0.0.1/32",
                        "ct state established,related accept"}
        << QStringList {"@local4", "meta nfproto ipv6 drop"};
    QTest::newRow("idle kill switch does not trust the tunnel")
        << request(true, false, false, true) << QStringList {"policy drop", "ip daddr @allowed4 accept"}
        << QStringList {"tun0"};
    QTest::newRow("local networks pass with the kill switch")
        << request(true, false, true, false)
        << QStringList {"ip daddr @local4 accept", "192.168.0.0/16", "169.254.0.0/16", "224.0.0.0/4", "fe80::/10"}
        << QStringList {};
    QTest::newRow("IPv6 block alone keeps IPv4 open")
        << request(false, true, false, false) << QStringList {"policy accept", "meta nfproto ipv6 drop"}
        << QStringList {"policy drop", "@allowed4 accept"};
    QTest::newRow("IPv6 block comes before the tunnel")
        << request(true, true, false, false) << QStringList {"meta nfproto ipv6 drop\n        oifname \"tun0\""}
        << QStringList {};
    QTest::newRow("IPv6 and subnet addresses")
        << request(true, false, false, false, QStringLiteral(" 2001:db8::1 ; 10.8.0.0/16;;"))
        << QStringList {"2001:db8::1/128", "10.8.0.0/16", "ip6 daddr @allowed6 accept"} << QStringList {"127.0.0.1"};
    QTest::newRow("nothing asked leaves an open table")
        << request(false, false, false, false) << QStringList {"policy accept", "table inet tavrin {"}
        << QStringList {"drop"};
}

void tst_FirewallRules::rules()
{
    QFETCH(FirewallRequest, request);
    QFETCH(QStringList, present);
    QFETCH(QStringList, absent);
    FirewallRules rules;
    QVERIFY2(rules.build(request), qPrintable(rules.error()));
    const QString script = rules.script();
    for (const QString& text : present)
        QVERIFY2(script.contains(text), qPrintable(text + QStringLiteral(" missing in\n") + script));
    for (const QString& text : absent)
        QVERIFY2(!script.contains(text), qPrintable(text + QStringLiteral(" present in\n") + script));
    // The table is replaced as a whole, and no other table is ever named.
    QVERIFY(script.startsWith(FirewallRules::removeScript()));
    QCOMPARE(script.count(QStringLiteral("table ")), script.count(QStringLiteral("table inet tavrin")));
}

void tst_FirewallRules::malformedRequests_data()
{
    QTest::addColumn<QString>("addresses");
    QTest::addColumn<QString>("interfaceName");

    QTest::newRow("host name") << QStringLiteral("api.example.com") << QStringLiteral("tun0");
    QTest::newRow("nft syntax in an address")
        << QStringLiteral("1.2.3.4 } ; flush ruleset ; {") << QStringLiteral("tun0");
    QTest::newRow("scoped IPv6") << QStringLiteral("fe80::1%eth0") << QStringLiteral("tun0");
    QTest::newRow("quote in the interface") << QStringLiteral("1.2.3.4") << QStringLiteral("tun0\" accept");
    QTest::newRow("interface name too long") << QStringLiteral("1.2.3.4") << QStringLiteral("tun0123456789abcdef");
    QTest::newRow("empty interface") << QStringLiteral("1.2.3.4") << QString();
}

void tst_FirewallRules::malformedRequests()
{
    QFETCH(QString, addresses);
    QFETCH(QString, interfaceName);
    FirewallRequest r = request(true, false, false, false, addresses);
    r.interfaceName = interfaceName;
    FirewallRules rules;
    QVERIFY(!rules.build(r));
    QVERIFY(rules.script().isEmpty());
    QVERIFY(!rules.error().isEmpty());
}

QTEST_GUILESS_MAIN(tst_FirewallRules)
#include "tst_FirewallRules.moc"

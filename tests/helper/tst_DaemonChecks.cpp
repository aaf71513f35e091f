// The daemon's own checks as units: what it lets OpenVPN be started with (the argument shape and the configuration
// text), the nft script built for each firewall request (applying it to a real kernel is the e2e test's part), and
// reading and logging the wire's text fields. Finding the caller's uid is met in tst_HelperDaemon and at the boundary.

#include "FirewallRules.h"
#include "OpenVpnArguments.h"
#include "OpenVpnConfigCheck.h"
#include "WireText.h"

#include <QTest>

namespace {

const QString script = QStringLiteral("/usr/share/tavrin/script/update-resolv-conf.sh");

QString clientArguments(const QString& path, const QString& up = script, const QString& address = "127.0.0.1")
{
    // Exactly as the client joins them: two blanks between most options, one at the end.
    return QStringLiteral("--config \"%1\" --management %3 45678 --management-query-passwords  --script-security 2 "
                          " --up %2  --down %2 ")
        .arg(path, up, address);
}

const QByteArray pem = "-----BEGIN CERTIFICATE-----\nMIIBkTCB+wIJAK\n-----END CERTIFICATE-----";

} // namespace

class tst_DaemonChecks : public QObject
{
    Q_OBJECT

private slots:
    void arguments_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("path"); // empty: refused

        const QString tmp = QStringLiteral("/tmp/Tavrin.aB12cd");
        QTest::newRow("the client's own string") << clientArguments(tmp) << tmp;
        QTest::newRow("quote inside the path") << clientArguments("/tmp/a\" --up \"/bin/sh") << QString();
        QTest::newRow("path with ..") << clientArguments("/tmp/../etc/x") << QString();
        QTest::newRow("other up script") << clientArguments(tmp, "/bin/sh") << QString();
        QTest::newRow("management on all addresses") << clientArguments(tmp, script, "0.0.0.0") << QString();
    }

    void arguments()
    {
        QFETCH(QString, text);
        QFETCH(QString, path);
        OpenVpnArguments args;
        QCOMPARE(args.parse(text), !path.isEmpty());
        QCOMPARE(args.configPath(), path);
        QCOMPARE(args.error().isEmpty(), !path.isEmpty());
        if (!path.isEmpty())
            QVERIFY(args.managementPort() > 0);
    }

    void configuration_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QString>("error"); // empty: accepted

        const QByteArray head = "client\ndev tun\n"; // what follows is line 3
        const auto row = [&](const char* name, const QByteArray& config, const char* error) {
            QTest::newRow(name) << config << QString::fromLatin1(error);
        };
        // The files the client writes are started through the real daemon in the e2e tests.
        row("other arguments",
            head
                + "remote vpn.example.com 443 tcp4-client\nresolv-retry infinite\nredirect-gateway def1 bypass-dhcp\n"
                  "dhcp-option DNS 10.8.0.1\ndhcp-option DNS6 fd00::1\ndhcp-option DOMAIN corp.example\n"
                  "pull-filter ignore \"route-gateway\"\ntls-version-min 1.2 or-highest\nkeepalive 10 60\n"
                  "route 10.9.0.0 255.255.0.0 vpn_gateway 5\ncomp-lzo no\nauth-retry nointeract\n",
            "");
        row("comments OpenVPN skips", head + "# up /bin/sh\n; plugin x.so\n\\#plugin x.so\nverb 3 # up /bin/sh\n", "");
        row("quoting that changes nothing", head + "\"verb\" '3'\n--verb 3\n\\ verb 3\n", "");
        row("block closed by an indented tag", head + "<ca>\n" + pem + "\n \t</ca>\n", "");
        row("longest line", head + "#" + QByteArray(253, 'x') + "\n", "");

        // A blank escaped before plugin, config or route-up is refused in the daemon boundary test.
        row("double-quoted name", head + "\"plugin\" x.so\n", "directive \"plugin\"");
        row("single-quoted name", head + "'plugin' x.so\n", "directive \"plugin\"");
        row("leading dashes", head + "--plugin x.so\n", "directive \"plugin\"");
        row("leading blanks", head + " \t\v\f plugin x.so\n", "directive \"plugin\"");
        row("byte order mark on line 1", "\xEF\xBB\xBFplugin x.so\n" + head, "line 1: directive \"plugin\"");
        row("byte order mark on line 3", head + "\xEF\xBB\xBFverb 3\n", "line 3: directive \"\xEF\xBB\xBFverb\"");
        row("carriage return line ends", "client\r\ndev tun\r\nplugin x.so\r\n", "line 3: directive \"plugin\"");
        row("lone carriage return", head + "verb 3\rplugin x.so\n", "wrong number of arguments for \"verb\"");
        row("backslash keeps the line feed", head + "verb 3\\\n", "bad argument \"3\n\" for \"verb\"");
        row("directive in a too long line", head + "#" + QByteArray(254, 'x') + "plugin x.so\n", "line 3 is longer");
        row("too long line in a block",
            head + "<ca>\n" + QByteArray(255, 'x') + "</ca>\nplugin x.so\n</ca>\n",
            "line 4 is longer");
        row("directive after </ca>junk",
            head + "<ca>\n" + pem + "\n</ca>junk\nplugin x.so\n</ca>\n",
            "line 8: directive \"plugin\"");
        row("block never closed", head + "<ca>\n" + pem + "\n</ca \n", "line 3: <ca> is not closed");
        row("connection block", head + "<connection>\nremote a\n</connection>\n", "directive \"connection\"");
        row("plugin block", head + "\"--<plugin>\" # x\n/tmp/x.so\n</plugin>\n", "directive \"plugin\"");
        row("ca from a file", head + "ca /etc/ssl/ca.crt\n", "\"ca\" is only allowed as a <ca> block");
        row("auth-user-pass from a file", head + "auth-user-pass /root/pw\n", "arguments for \"auth-user-pass\"");
        row("route-up with a second word",
            head + "route-up \"/bin/ip route del 127.0.0.1\" x\n",
            "arguments for \"route-up\"");
        row("name for a DNS address", head + "dhcp-option DNS ns.example\n", "bad argument \"ns.example\"");
        row("shell text as a domain", head + "dhcp-option DOMAIN \"a;reboot\"\n", "bad argument \"a;reboot\"");
        row("empty argument", head + "remote \"\"\n", "bad argument \"\" for \"remote\"");
        row("upper case name", head + "PLUGIN x.so\n", "directive \"PLUGIN\"");
        // genkey, the proxies, lport, port-share, mktun, rmtun and tcp-server are refused in the daemon boundary test.
        row("management", head + "management 0.0.0.0 7505\n", "directive \"management\"");
        row("bad backslash", head + "verb 3\\x\n", "line 3: backslash before \"x\"");
        row("escaped hash inside a word", head + "verb 3\\#\n", "backslash before \"#\"");
        row("open quote", head + "verb \"3\n", "no closing quote");
        row("backslash at the end of the file", head + "verb 3\\", "backslash at the end");
        row("a peer waiting for anyone", "dev tun\nremote 10.0.0.1\n", "no \"client\" directive");
        row("zero byte", head + QByteArray("verb 3\0\nplugin x.so\n", 20), "zero byte");
    }

    void configuration()
    {
        QFETCH(QByteArray, config);
        QFETCH(QString, error);
        OpenVpnConfigCheck check;
        QVERIFY2(check.check(config) == error.isEmpty(), qPrintable(check.error()));
        QVERIFY2(check.error().contains(error), qPrintable(check.error()));
    }

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
        const FirewallRequest request {
            addresses, interfaceName, bool(flags & 1), bool(flags & 2), bool(flags & 4), false, bool(flags & 8)};
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

    void forLog()
    {
        const QString logged = WireText::forLog(QStringLiteral("UTC\nrequest from uid 0: x\r\u2028\x7f"));
        QCOMPARE(logged, QStringLiteral("UTC\\x0arequest from uid 0: x\\x0d\\u2028\\x7f"));
    }

    void ucs4_data()
    {
        QTest::addColumn<QByteArray>("field");
        QTest::addColumn<QString>("text"); // null: refused

        auto ucs4 = [](const QVector<uint>& codes) {
            return QByteArray(reinterpret_cast<const char*>(codes.constData()), codes.size() * 4);
        };
        QTest::newRow("beyond the basic plane") << ucs4({0x1F600, 0}) << (QString(QChar(0xD83D)) + QChar(0xDE00));
        QTest::newRow("no terminating zero") << ucs4({'a', 'b'}) << QString();
        QTest::newRow("above the last code point") << ucs4({0x110000, 0}) << QString();
    }

    void ucs4()
    {
        QFETCH(QByteArray, field);
        QFETCH(QString, text);
        const QString read = WireText::readUcs4(field, 0, std::size_t(field.size()));
        QCOMPARE(read.isNull(), text.isNull());
        QCOMPARE(read, text);
    }
};

QTEST_GUILESS_MAIN(tst_DaemonChecks)
#include "tst_DaemonChecks.moc"

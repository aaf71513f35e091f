// What the daemon lets OpenVPN be started with: the argument shape and the configuration text.

#include "OpenVpnArguments.h"
#include "OpenVpnConfigCheck.h"

#include <QTest>

namespace {

const QString script = QStringLiteral("/usr/share/tavrin/script/update-resolv-conf.sh");

QString clientArguments(const QString& path)
{
    // Exactly as the client joins them: two blanks between most options, one at the end.
    return QStringLiteral(
               "--config \"%1\" --management 127.0.0.1 45678 --management-query-passwords  --script-security 2 "
               " --up %2  --down %2 ")
        .arg(path, script);
}

const QByteArray pem = "-----BEGIN CERTIFICATE-----\nMIIBkTCB+wIJAK\n-----END CERTIFICATE-----";

// A file as MakeOVPNFile writes it from the demo service's template.
QByteArray ourFile(bool stealth)
{
    QByteArray text = "client\r\ndev tun\r\nnobind\r\npersist-key\r\n#udp explicit-exit-notify 1\r\n"
                      "#tcp connect-timeout 5\r\n#stealth connect-timeout 5\r\nremote-cert-tls server\r\n"
                      "verify-x509-name server name\r\nauth-user-pass\r\nauth-nocache\r\n"
                      "data-ciphers AES-256-GCM:AES-128-GCM\r\nconnect-retry 1 1\r\nverb 3\r\n<ca>\r\n"
        + pem + "\r\n</ca>\r\n<tls-crypt>\r\n" + pem + "\r\n</tls-crypt>\r\n";
    const QByteArray credentials = "\r\n<cert>\r\n" + pem + "\r\n</cert>\r\n\r\n<key>\r\n" + pem + "\r\n</key>\r\n";
    if (!stealth)
        return "remote 10.241.0.11 1194 udp\r\n" + text.replace("\n#udp ", "\n") + credentials;
    return "proto tcp\r\nremote 127.0.0.1 40123\r\n" + text.replace("\n#tcp ", "\n").replace("\n#stealth ", "\n")
        + credentials + "\r\nroute 10.241.0.11 255.255.255.255 net_gateway\r\nroute-up \"/bin/ip route del 127.0.0.1\"";
}

} // namespace

class tst_OpenVpnChecks : public QObject
{
    Q_OBJECT

private slots:
    void arguments_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("path"); // empty: refused

        const QString tmp = QStringLiteral("/tmp/Tavrin.aB12cd");
        QTest::newRow("the client's own string") << clientArguments(tmp) << tmp;
        QTest::newRow("quote inside the path")
            << clientArguments(QStringLiteral("/tmp/a\" --up \"/bin/sh")) << QString();
        QTest::newRow("path with ..") << clientArguments(QStringLiteral("/tmp/../etc/x")) << QString();
        QTest::newRow("other up script") << clientArguments(tmp).replace(QStringLiteral("--up ") + script,
                                                                         QStringLiteral("--up /bin/sh"))
                                         << QString();
        QTest::newRow("management on all addresses")
            << clientArguments(tmp).replace(QStringLiteral("127.0.0.1"), QStringLiteral("0.0.0.0")) << QString();
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
        row("our udp file", ourFile(false), "");
        row("our stealth file", ourFile(true), "");
        row("other arguments",
            head
                + "remote vpn.example.com 443 tcp4-client\nresolv-retry infinite\n"
                  "redirect-gateway def1 bypass-dhcp\ndhcp-option DNS 10.8.0.1\ndhcp-option DNS6 fd00::1\n"
                  "dhcp-option DOMAIN corp.example\npull-filter ignore \"route-gateway\"\ntls-version-min 1.2 "
                  "or-highest\n"
                  "route 10.9.0.0 255.255.0.0 vpn_gateway 5\nkeepalive 10 60\ncomp-lzo no\nauth-retry nointeract\n",
            "");
        row("comments OpenVPN skips", head + "# up /bin/sh\n; plugin x.so\n\\#plugin x.so\nverb 3 # up /bin/sh\n", "");
        row("quoting that changes nothing", head + "\"verb\" '3'\n--verb 3\n\\ verb 3\n", "");
        row("block closed by an indented tag", head + "<ca>\n" + pem + "\n \t</ca>\n", "");
        row("longest line", head + "#" + QByteArray(253, 'x') + "\n", "");

        row("escaped blank before plugin", head + "\\ plugin x.so\n", "line 3: directive \"plugin\" is not allowed");
        row("escaped blank before config", head + "\\ config other.conf\n", "line 3: directive \"config\"");
        row("escaped blank before route-up",
            head + "\\ route-up /x.sh\n",
            "line 3: bad argument \"/x.sh\" for \"route-up\"");
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
        row("route-up with a second word", ourFile(true) + " x", "arguments for \"route-up\"");
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
};

QTEST_GUILESS_MAIN(tst_OpenVpnChecks)
#include "tst_OpenVpnChecks.moc"

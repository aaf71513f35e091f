// What the daemon lets OpenVPN be started with: the argument shape and the configuration text.

#include "OpenVpnArguments.h"
#include "OpenVpnConfigCheck.h"

#include <QTest>

class tst_OpenVpnChecks : public QObject
{
    Q_OBJECT

private slots:
    void arguments_data();
    void arguments();
    void configuration_data();
    void configuration();
};

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

} // namespace

void tst_OpenVpnChecks::arguments_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("path"); // empty: refused

    const QString tmp = QStringLiteral("/tmp/Tavrin.aB12cd");
    QTest::newRow("the client's own string") << clientArguments(tmp) << tmp;
    QTest::newRow("quote inside the path") << clientArguments(QStringLiteral("/tmp/a\" --up \"/bin/sh")) << QString();
    QTest::newRow("path with ..") << clientArguments(QStringLiteral("/tmp/../etc/x")) << QString();
    QTest::newRow("other up script") << clientArguments(tmp).replace(QStringLiteral("--up ") + script,
                                                                     QStringLiteral("--up /bin/sh"))
                                     << QString();
    QTest::newRow("management on all addresses")
        << clientArguments(tmp).replace(QStringLiteral("127.0.0.1"), QStringLiteral("0.0.0.0")) << QString();
}

void tst_OpenVpnChecks::arguments()
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

void tst_OpenVpnChecks::configuration_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<bool>("accepted");

    const QByteArray service = "client\r\ndev tun\r\n#udp explicit-exit-notify 1\r\n#tcp proto tcp-client\r\n"
                               "nobind\r\npersist-key\r\nremote-cert-tls server\r\nauth-user-pass\r\n"
                               "<ca>\r\n-----BEGIN CERTIFICATE-----\r\nMIIBkTCB+wIJAK\r\n-----END CERTIFICATE-----\r\n"
                               "</ca>\r\n";
    QTest::newRow("service template") << service << true;
    QTest::newRow("stealth route-up") << service + "route-up \"/bin/ip route del 127.0.0.1\"" << true;
    QTest::newRow("comments mentioning up") << service + "# up /bin/sh\n; plugin x.so\nverb 3 # up /bin/sh\n" << true;
    QTest::newRow("leading blanks") << service + " \t up /bin/sh\n" << false;
    QTest::newRow("quoted directive") << service + "\"up\" /bin/sh\n" << false;
    QTest::newRow("byte order mark") << "\xEF\xBB\xBFup /bin/sh\n" + service << false;
    QTest::newRow("inside a connection block") << service + "<connection>\nremote a\nup /bin/sh\n</connection>\n"
                                               << false;
    QTest::newRow("hidden between certificate lines")
        << QByteArray(service).replace("MIIBkTCB+wIJAK\r\n", "MIIBkTCB+wIJAK\r\nup /bin/sh\r\n") << false;
    QTest::newRow("route-up with extra word") << service + "route-up \"/bin/ip route del 127.0.0.1\" x\n" << false;
    QTest::newRow("zero byte") << service + QByteArray("up", 2) + QByteArray(1, '\0') << false;
    QTest::newRow("line OpenVPN would split") << service + "#" + QByteArray(300, 'x') + " up /bin/sh\n" << false;
}

void tst_OpenVpnChecks::configuration()
{
    QFETCH(QByteArray, config);
    QFETCH(bool, accepted);
    OpenVpnConfigCheck check;
    QVERIFY2(check.check(config) == accepted, qPrintable(check.error()));
}

QTEST_GUILESS_MAIN(tst_OpenVpnChecks)
#include "tst_OpenVpnChecks.moc"

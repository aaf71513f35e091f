#include <QtTest>

#include "ServerInfo.h"

class TestServerInfo : public QObject
{
    Q_OBJECT

private slots:
    void parseTextForm_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QStringList>("tcp");
        QTest::addColumn<QStringList>("udp");
        QTest::addColumn<QList<int>>("numbers"); // favourite, protocol, sslPort, type
        QTest::addColumn<QString>("sni");
        using N = QList<int>;
        using S = QStringList;
        QTest::newRow("ten fields, empty parts kept inside port lists, text numbers read as 0")
            << "n;f;t;i;yes;u;p;80..88;.;tcp"
            << "n" << S {"80", "", "88"} << S {"", ""} << N {0, 0, 0, 0} << "";
        QTest::newRow("parts past thirteen are ignored")
            << "n;f;t;i;2;u;p;1;2;6;8443;1;sni.example;junk;more"
            << "n" << S {"1"} << S {"2"} << N {1, 6, 8443, 1} << "sni.example";
    }
    void parseTextForm()
    {
        QFETCH(QString, line);
        const ServerInfo server(line);
        QTEST(server.name, "name");
        QTEST(server.tcpPorts, "tcp");
        QTEST(server.udpPorts, "udp");
        QTEST((QList<int> {server.favorite, server.protocol, server.sslPort, server.type}), "numbers");
        QTEST(server.sni, "sni");
        QCOMPARE(server.ping, 0);
    }

    // One rule for the connect page, the server list and the settings' protocol choice.
    void offersProtocol_data()
    {
        QTest::addColumn<QStringList>("tcp");
        QTest::addColumn<QStringList>("udp");
        QTest::addColumn<int>("sslPort");
        QTest::addColumn<QList<bool>>("offers"); // TCP, UDP, stealth, PPTP
        using B = QList<bool>;
        QTest::newRow("UDP ports only") << QStringList() << QStringList {"1194"} << 0 << B {false, true, false, false};
        QTest::newRow("a cached empty port list counts, stealth from port 1")
            << QStringList {""} << QStringList() << 1 << B {true, false, true, false};
        QTest::newRow("a negative stealth port is none")
            << QStringList() << QStringList() << -443 << B {false, false, false, false};
    }
    void offersProtocol()
    {
        ServerInfo server;
        QFETCH(QStringList, tcp);
        QFETCH(QStringList, udp);
        server.tcpPorts = tcp;
        server.udpPorts = udp;
        QFETCH(int, sslPort);
        server.sslPort = sslPort;
        const QList<bool> offers {::offersProtocol(server, OpenVpnTcp),
                                  ::offersProtocol(server, OpenVpnUdp),
                                  ::offersProtocol(server, Stealth),
                                  ::offersProtocol(server, PPTP)};
        QTEST(offers, "offers");
    }

    // With the parser pinned above, writing back the same line proves every field's place in the text.
    void textFormRoundTrip()
    {
        const QString line = QStringLiteral("DE-Berlin;de;DE-B;10.0.0.1;1;vpn123;pw;80.443;1194;5;8443;2;cdn.example");
        ServerInfo server(line);
        server.ping = 42;
        server.groupName = QStringLiteral("not written");
        QCOMPARE(QString(server), line);
    }
};

QTEST_APPLESS_MAIN(TestServerInfo)
#include "tst_ServerInfo.moc"

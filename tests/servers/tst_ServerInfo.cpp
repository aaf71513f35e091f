#include <QtTest>

#include "ServerIdentif.h"
#include "ServerInfo.h"
#include "VpnProtocols.h"

class TestServerInfo : public QObject
{
    Q_OBJECT

private slots:
    void parseTextForm_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("name");
        QTest::addColumn<bool>("favorite");
        QTest::addColumn<QStringList>("tcp");
        QTest::addColumn<QStringList>("udp");
        QTest::addColumn<QList<int>>("numbers"); // protocol, sslPort, type
        QTest::addColumn<QString>("sni");
        using N = QList<int>;
        using S = QStringList;
        QTest::newRow("all thirteen fields") << "a;b;c;d;1;u;p;1194.443;;4;0;2;s"
                                             << "a" << true << S {"1194", "443"} << S {""} << N {4, 0, 2} << "s";
        QTest::newRow("ten fields leave ssl port 0") << "n;de;n;1.2.3.4;0;u;p;80;1194;5"
                                                     << "n" << false << S {"80"} << S {"1194"} << N {5, 0, 0} << "";
        QTest::newRow("nine fields give a default record") << "n;de;n;1.2.3.4;0;u;p;80;1194"
                                                           << "" << false << S {} << S {} << N {0, 0, 0} << "";
        QTest::newRow("non-numeric favourite and protocol read as 0")
            << "n;f;t;i;yes;u;p;;;tcp;443"
            << "n" << false << S {""} << S {""} << N {0, 443, 0} << "";
        QTest::newRow("parts past thirteen are ignored")
            << "n;f;t;i;2;u;p;1;2;6;8443;1;sni.example;junk;more"
            << "n" << true << S {"1"} << S {"2"} << N {6, 8443, 1} << "sni.example";
        QTest::newRow("empty parts kept inside port lists")
            << "n;f;t;i;0;u;p;80..88;.;4"
            << "n" << false << S {"80", "", "88"} << S {"", ""} << N {4, 0, 0} << "";
    }
    void parseTextForm()
    {
        QFETCH(QString, line);
        const ServerInfo server(line);
        QTEST(server.name, "name");
        QTEST(server.favorite, "favorite");
        QTEST(server.tcpPorts, "tcp");
        QTEST(server.udpPorts, "udp");
        QTEST((QList<int> {server.protocol, server.sslPort, server.type}), "numbers");
        QTEST(server.sni, "sni");
        QCOMPARE(server.ping, 0);
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

    void identifFromSettings_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("pair");
        QTest::newRow("login and name") << "vpn123::Frankfurt" << QStringList {"vpn123", "Frankfurt"};
        QTest::newRow("empty text") << "" << QStringList {"", ""};
        QTest::newRow("no separator") << "abc" << QStringList {"", ""};
        QTest::newRow("single colon is no separator") << "a:b" << QStringList {"", ""};
        QTest::newRow("further parts ignored") << "a::b::c" << QStringList {"a", "b"};
        QTest::newRow("empty login kept") << "::b" << QStringList {"", "b"};
    }
    void identifFromSettings()
    {
        QFETCH(QString, text);
        const ServerIdentif id = ::identifFromSettings(text);
        QTEST((QStringList {id.first, id.second}), "pair");
        QCOMPARE(identifToSettings(ServerIdentif("vpn123", "Frankfurt")), QStringLiteral("vpn123::Frankfurt"));
    }

    void tableLookups_data()
    {
        QTest::addColumn<QString>("lookup"); // table and key
        QTest::addColumn<QStringList>("row"); // id and texts
        QTest::newRow("stealth by short name") << "protocol stealth" << QStringList {"6", "stealth", "Imitation HTTPS"};
        QTest::newRow("short name is case-sensitive") << "protocol TCP" << QStringList {"-1", "", ""};
        QTest::newRow("label text is not a short name") << "protocol Imitation HTTPS" << QStringList {"-1", "", ""};
        QTest::newRow("udp by id") << "id 4" << QStringList {"4", "udp", "OpenVPN UDP (faster)"};
        QTest::newRow("unknown id") << "id 0" << QStringList {"-1", "", ""};
        QTest::newRow("automatic udp port") << "port 1194,118,123,443,9200" << QStringList {"0", "4", "Automatic"};
        QTest::newRow("single udp 9201") << "port 9201" << QStringList {"5", "4", "9201"};
        QTest::newRow("9200 only in the automatic list") << "port 9200" << QStringList {"-1", "0", ""};
        QTest::newRow("first match wins for 443") << "port 443" << QStringList {"4", "4", "443"};
    }
    void tableLookups()
    {
        QFETCH(QString, lookup);
        const QString table = lookup.section(QLatin1Char(' '), 0, 0);
        const QString key = lookup.section(QLatin1Char(' '), 1);
        QStringList row;
        if (table == QLatin1String("port")) {
            const VpnPort port = getVpnPortByLabel(key);
            row << QString::number(port.id) << QString::number(port.protocol) << port.label;
        } else {
            const VpnProtocol p
                = table == QLatin1String("id") ? getVpnProtocolByID(key.toInt()) : getVpnProtocolByLabel(key);
            row << QString::number(p.id) << p.shortName << p.label;
        }
        QTEST(row, "row");
    }
};

QTEST_APPLESS_MAIN(TestServerInfo)
#include "tst_ServerInfo.moc"

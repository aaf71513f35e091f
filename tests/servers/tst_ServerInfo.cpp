#include <QtTest>

#include "ServerIdentif.h"
#include "ServerInfo.h"
#include "Subscription.h"
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
        QTest::addColumn<int>("protocol");
        QTest::addColumn<int>("sslPort");
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("sni");

        QTest::newRow("all thirteen fields")
            << "a;b;c;d;1;u;p;1194.443;;4;0;2;s"
            << "a" << true << QStringList {"1194", "443"} << QStringList {""} << 4 << 0 << 2 << "s";
        QTest::newRow("ten fields leave ssl port 0")
            << "n;de;n;1.2.3.4;0;u;p;80;1194;5"
            << "n" << false << QStringList {"80"} << QStringList {"1194"} << 5 << 0 << 0 << "";
        QTest::newRow("nine fields give a default record")
            << "n;de;n;1.2.3.4;0;u;p;80;1194"
            << "" << false << QStringList {} << QStringList {} << 0 << 0 << 0 << "";
        QTest::newRow("empty line gives a default record")
            << ""
            << "" << false << QStringList {} << QStringList {} << 0 << 0 << 0 << "";
        QTest::newRow("non-numeric favourite and protocol read as 0")
            << "n;f;t;i;yes;u;p;;;tcp;443"
            << "n" << false << QStringList {""} << QStringList {""} << 0 << 443 << 0 << "";
        QTest::newRow("parts past thirteen are ignored")
            << "n;f;t;i;2;u;p;1;2;6;8443;1;sni.example;junk;more"
            << "n" << true << QStringList {"1"} << QStringList {"2"} << 6 << 8443 << 1 << "sni.example";
        QTest::newRow("empty parts kept inside port lists")
            << "n;f;t;i;0;u;p;80..88;.;4"
            << "n" << false << QStringList {"80", "", "88"} << QStringList {"", ""} << 4 << 0 << 0 << "";
    }
    void parseTextForm()
    {
        QFETCH(QString, line);
        const ServerInfo server(line);
        QTEST(server.name, "name");
        QTEST(server.favorite, "favorite");
        QTEST(server.tcpPorts, "tcp");
        QTEST(server.udpPorts, "udp");
        QTEST(int(server.protocol), "protocol");
        QTEST(int(server.sslPort), "sslPort");
        QTEST(int(server.type), "type");
        QTEST(server.sni, "sni");
        QCOMPARE(server.ping, 0);
    }

    void textFormRoundTrip()
    {
        ServerInfo server;
        server.name = QStringLiteral("DE-Berlin");
        server.flag = QStringLiteral("de");
        server.title = QStringLiteral("DE-Berlin");
        server.ip = QStringLiteral("10.0.0.1");
        server.user = QStringLiteral("vpn123");
        server.password = QStringLiteral("pw");
        server.tcpPorts = QStringList {"80", "443"};
        server.udpPorts = QStringList {"1194"};
        server.ping = 42;
        server.favorite = true;
        server.sslPort = 8443;
        server.groupName = QStringLiteral("group");
        server.type = ServerInfo::Double;
        server.protocol = OpenVpnTcp;
        server.sni = QStringLiteral("cdn.example");

        const QString line = server;
        QCOMPARE(line, QStringLiteral("DE-Berlin;de;DE-Berlin;10.0.0.1;1;vpn123;pw;80.443;1194;5;8443;2;cdn.example"));
        const ServerInfo back(line);
        QCOMPARE(back.name, server.name);
        QCOMPARE(back.flag, server.flag);
        QCOMPARE(back.title, server.title);
        QCOMPARE(back.ip, server.ip);
        QCOMPARE(back.user, server.user);
        QCOMPARE(back.password, server.password);
        QCOMPARE(back.tcpPorts, server.tcpPorts);
        QCOMPARE(back.udpPorts, server.udpPorts);
        QCOMPARE(back.favorite, server.favorite);
        QCOMPARE(back.sslPort, server.sslPort);
        QCOMPARE(back.type, server.type);
        QCOMPARE(back.protocol, server.protocol);
        QCOMPARE(back.sni, server.sni);
        // Not carried by the text form.
        QCOMPARE(back.ping, 0);
        QVERIFY(back.groupName.isEmpty());
    }

    void placeholderInFieldIsFilledByLaterField()
    {
        ServerInfo server;
        server.name = QStringLiteral("odd%12");
        server.type = ServerInfo::Double;
        // The name's own %12 is filled together with the template's %12, by the kind.
        QVERIFY(QString(server).startsWith(QStringLiteral("odd2;")));
    }

    void streamFormRoundTrip()
    {
        ServerInfo server(QStringLiteral("n;f;t;i;1;u;p;80;1194;4;443;2;s"));
        QByteArray bytes;
        {
            QDataStream out(&bytes, QIODevice::WriteOnly);
            out << server;
        }
        ServerInfo back;
        back.sslPort = 7;
        back.sni = QStringLiteral("untouched");
        QDataStream in(bytes);
        in >> back;
        QCOMPARE(in.status(), QDataStream::Ok);
        QVERIFY(in.atEnd());
        QCOMPARE(back.name, server.name);
        QCOMPARE(back.ip, server.ip);
        QCOMPARE(back.favorite, true);
        QCOMPARE(back.tcpPorts, server.tcpPorts);
        QCOMPARE(back.protocol, OpenVpnUdp);
        QCOMPARE(back.sslPort, 7);
        QCOMPARE(back.sni, QStringLiteral("untouched"));
    }

    void identifFromSettings_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("first");
        QTest::addColumn<QString>("second");
        QTest::newRow("login and name") << "vpn123::Frankfurt"
                                        << "vpn123"
                                        << "Frankfurt";
        QTest::newRow("empty text") << ""
                                    << ""
                                    << "";
        QTest::newRow("no separator") << "abc"
                                      << ""
                                      << "";
        QTest::newRow("further parts ignored") << "a::b::c"
                                               << "a"
                                               << "b";
        QTest::newRow("empty login kept") << "::b"
                                          << ""
                                          << "b";
        QTest::newRow("single colon is no separator") << "a:b"
                                                      << ""
                                                      << "";
    }
    void identifFromSettings()
    {
        QFETCH(QString, text);
        const ServerIdentif id = ::identifFromSettings(text);
        QTEST(id.first, "first");
        QTEST(id.second, "second");
    }

    void identifToSettingsAndOrder()
    {
        QCOMPARE(identifToSettings(ServerIdentif("vpn123", "Frankfurt")), QStringLiteral("vpn123::Frankfurt"));
        QVERIFY(ServerIdentif("a", "z") < ServerIdentif("b", "a"));
        QVERIFY(ServerIdentif("a", "a") < ServerIdentif("a", "b"));
        QCOMPARE(ServerIdentif("a", "b"), ::identifFromSettings(identifToSettings(ServerIdentif("a", "b"))));
    }

    void protocolLookups_data()
    {
        QTest::addColumn<QString>("by");
        QTest::addColumn<QString>("key");
        QTest::addColumn<int>("id");
        QTest::addColumn<QString>("shortName");
        QTest::addColumn<QString>("label");
        QTest::newRow("stealth by short name") << "label"
                                               << "stealth" << 6 << "stealth"
                                               << "Imitation HTTPS";
        QTest::newRow("tcp by short name") << "label"
                                           << "tcp" << 5 << "tcp"
                                           << "OpenVPN TCP (safer)";
        QTest::newRow("short name is case-sensitive") << "label"
                                                      << "TCP" << -1 << ""
                                                      << "";
        QTest::newRow("label text is not a short name") << "label"
                                                        << "Imitation HTTPS" << -1 << ""
                                                        << "";
        QTest::newRow("udp by id") << "id"
                                   << "4" << 4 << "udp"
                                   << "OpenVPN UDP (faster)";
        QTest::newRow("unknown id") << "id"
                                    << "0" << -1 << ""
                                    << "";
    }
    void protocolLookups()
    {
        QFETCH(QString, by);
        QFETCH(QString, key);
        const VpnProtocol row
            = by == QLatin1String("id") ? getVpnProtocolByID(key.toInt()) : getVpnProtocolByLabel(key);
        QTEST(int(row.id), "id");
        QTEST(row.shortName, "shortName");
        QTEST(row.label, "label");
    }

    void portLookups_data()
    {
        QTest::addColumn<QString>("ports");
        QTest::addColumn<int>("id");
        QTest::addColumn<int>("protocol");
        QTest::addColumn<QString>("label");
        QTest::newRow("automatic udp") << "1194,118,123,443,9200" << 0 << 4 << "Automatic";
        QTest::newRow("single udp 9201") << "9201" << 5 << 4 << "9201";
        QTest::newRow("9200 only in the automatic list") << "9200" << -1 << 0 << "";
        QTest::newRow("automatic tcp") << "80,88,8008" << 6 << 5 << "Automatic";
        QTest::newRow("first match wins for 443") << "443" << 4 << 4 << "443";
        QTest::newRow("empty text") << "" << -1 << 0 << "";
    }
    void portLookups()
    {
        QFETCH(QString, ports);
        const VpnPort row = getVpnPortByLabel(ports);
        QTEST(int(row.id), "id");
        QTEST(int(row.protocol), "protocol");
        QTEST(row.label, "label");
    }

    void subscriptionValue()
    {
        const QDateTime expiry(QDate(2024, 5, 1), QTime(12, 0));
        const Subscription sub(QStringLiteral("vpn1"), QStringLiteral("pw"), expiry);
        const Subscription copy = sub;
        QCOMPARE(copy.login(), QStringLiteral("vpn1"));
        QCOMPARE(copy.password(), QStringLiteral("pw"));
        QCOMPARE(copy.expiresTime(), expiry);
        QVERIFY(!Subscription().expiresTime().isValid());
    }
};

QTEST_APPLESS_MAIN(TestServerInfo)
#include "tst_ServerInfo.moc"

#include <QRandomGenerator>
#include <QtTest>

#include <algorithm>
#include <numeric>

#include "FavoritesServerModel.h"
#include "FavoritesSortFilterProxyModel.h"
#include "PingSortFilterProxyModel.h"
#include "ServerListFixture.h"
#include "ServerPingModel.h"
#include "ServerTreeModel.h"
#include "TextOrder.h"
#include "TreePingSortFilterProxyModel.h"

namespace {
// A data row of texts.
template <class... Texts>
void addRow(const char* name, const Texts&... texts)
{
    (QTest::newRow(name) << ... << QString(texts));
}
} // namespace

using Sorted = SortedModel<ServerPingModel, PingSortFilterProxyModel>;
using Tree = SortedModel<ServerTreeModel, TreePingSortFilterProxyModel>;

// A server's record, and the models of the server list and their proxies: the flat list, its favourite sections,
// and the double-hop tree.
class TestServerModels : public QObject
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
        QList<bool> offers;
        for (PROTOCOL_TYPE protocol : {OpenVpnTcp, OpenVpnUdp, Stealth, PPTP})
            offers << ::offersProtocol(server, protocol);
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

    // The tables order names by integer keys of their first characters; the order must stay QString's own.
    void textOrderIsQStringOrder()
    {
        const QStringList pieces {"a",
                                  "A",
                                  "-",
                                  "z",
                                  "\u00e9",
                                  "\u00c9",
                                  "\u0130",
                                  "\u01c5",
                                  "\u03a3",
                                  "\u00ff",
                                  "\u0100",
                                  "\U0001F600",
                                  QString(QChar(0)),
                                  "aaaaaaaaaaaaaaaa",
                                  "AAAAAAAAAAAAAAAA"};
        QRandomGenerator random(7);
        for (int list = 0; list < 500; ++list) {
            QVector<QString> texts;
            QVector<int> classes;
            for (int i = int(random.bounded(40)); i > 0; --i) {
                QString text;
                for (int piece = int(random.bounded(4)); piece > 0; --piece)
                    text += pieces[int(random.bounded(pieces.size()))];
                texts.append(text);
                classes.append(int(random.bounded(2)));
                QCOMPARE(lowerCased(text), text.toLower());
            }
            QVector<int> expected(texts.size());
            std::iota(expected.begin(), expected.end(), 0);
            std::stable_sort(expected.begin(), expected.end(), [&](int left, int right) {
                return classes[left] != classes[right] ? classes[left] < classes[right] : texts[left] < texts[right];
            });
            QCOMPARE(orderByText(texts, classes), expected);
        }
    }

    void rowsSharingANameShareTheRecord()
    {
        Sorted sorted;
        QVector<ServerInfo> list = serversFromText("x:1:0 b:2:0 x:1:0");
        list[2].ip = QStringLiteral("10.0.0.2");
        sorted.model.setServers(list);
        ServerPingModel& model = sorted.model;
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.locationByIndex(model.index(0, 0)).ip, QStringLiteral("10.0.0.2"));
        QSignalSpy changed(&model, &ServerPingModel::favoriteChanged);
        QVERIFY(!model.setData(model.index(0, 0), true)); // only the favourite column is editable
        QVERIFY(model.setData(model.index(0, 1), true));
        QCOMPARE(changed.count(), 1);
        QVERIFY(model.index(2, 1).data().toBool());
        QCOMPARE(model.getFavoriteLocation().size(), 1);
    }

    // "<*>" and "<=>" are the favourite and recommended section headers.
    void favoritesSections_data()
    {
        QTest::addColumn<QString>("entries");
        QTest::addColumn<QString>("rows");
        addRow("no favourite starts with the recommended header", "a:1:10 b:2:10", "<=>,a,b");
        addRow("favourites in list order under their header", "z:2:0* a:1:10 m:1:5*", "<*>,z,m,<=>,m,a,z");
        addRow("three lowest standard latencies", "s50:1:50 s10:1:10 s40:1:40 s20:1:20 s30:1:30", "<=>,s10,s20,s30");
        addRow("standard before double whatever the latency", "d1:2:1 s9:1:9 d2:2:2 d3:2:3 d4:2:4", "<=>,s9,d1,d2,d3");
        addRow("unknown latencies (0, failed) after measured ones", "u:1:0 f:1:-1 m9:1:9 m3:1:3", "<=>,m3,m9,u");
        addRow("unknown latencies keep the list's order", "z:1:0 a:1:-1 m:1:0 b:1:0", "<=>,z,a,m");
    }
    void favoritesSections()
    {
        QFETCH(QString, entries);
        SortedModel<FavoritesServerModel, FavoritesSortFilterProxyModel> sorted(entries);
        QStringList rows;
        for (int row = 0; row < sorted.model.rowCount(); ++row) {
            const QModelIndex index = sorted.model.index(row, 0);
            rows.append(index.data().toString());
            const bool header = rows.last().startsWith(QLatin1Char('<'));
            QCOMPARE(index.data(Qt::UserRole + 2).toBool(), header);
            QCOMPARE(index.data(Qt::UserRole + 1).toInt() == 0, header);
        }
        QTEST(rows.join(QLatin1Char(',')), "rows");
        // The proxy keeps the source order whatever it is asked to show.
        QString search = QStringLiteral("zzz");
        sorted.proxy.showAll(search);
        sorted.proxy.showDouble();
        QCOMPARE(outline(sorted.proxy), rows.join(QLatin1Char(',')));
    }

    void bestLocation_data()
    {
        QTest::addColumn<QString>("entries");
        QTest::addColumn<QString>("best");
        addRow("nothing measured: the last name", "A:1:0 C:1:0 B:1:-1", "C");
        addRow("a measured latency beats an unknown one", "A:1:30 B:1:20 C:1:0", "B");
        addRow("lowest latency, first name among equals", "C:1:20 B:1:20 A:1:40", "B");
        addRow("empty list", "", "");
    }
    void bestLocation()
    {
        QFETCH(QString, entries);
        Sorted sorted(entries);
        QTEST(sorted.model.getBestLocation().name, "best");
    }

    // The page uses this proxy for its standard view and for searching (all servers, by name).
    void proxyViews_data()
    {
        QTest::addColumn<QString>("search"); // null: the standard view
        QTest::addColumn<QString>("rows");
        addRow("standard", QString(), "fr-paris,Paris-FR");
        addRow("all without search", "", "Berlin,de-fra,fr-paris,Paris-FR");
        addRow("search ignores case", "FR", "de-fra,fr-paris,Paris-FR");
    }
    void proxyViews()
    {
        QFETCH(QString, search);
        Sorted sorted("fr-paris:1:0* Berlin:2:0* Paris-FR:1:0 de-fra:2:0 odd:0:0");
        if (search.isNull())
            sorted.proxy.showStandart();
        else
            sorted.proxy.showAll(search);
        QTEST(outline(sorted.proxy), "rows");
    }

    // Each server bears the flag of its last name part, as a double-hop record bears its exit's; a group shows the
    // flag of the standard server of its name, else of its first member.
    void grouping_data()
    {
        QTest::addColumn<QString>("entries");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QString>("flag");
        addRow("groups in order of first appearance",
               "DE-Berlin FR-Paris DE-Frankfurt Singapore",
               "DE[DE-Berlin,DE-Frankfurt],FR[FR-Paris],Singapore[Singapore]",
               "berlin");
        addRow("a repeated record appears each time", "DE-a DE-a vpn2/DE-a", "DE[DE-a,DE-a,DE-a]", "a");
        addRow("the standard server of the group's name", "DE-FR:2 DE-AT:2 DE:1", "DE[DE-FR,DE-AT,DE]", "de");
        addRow("else the first member", "DE-FR:2 DE-AT:2 DE:2", "DE[DE-FR,DE-AT,DE]", "fr");
    }
    void grouping()
    {
        QFETCH(QString, entries);
        QVector<ServerInfo> list = serversFromText(entries);
        for (ServerInfo& server : list)
            server.flag = server.name.section(QLatin1Char('-'), -1).toLower();
        ServerTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        model.setServers(list);
        QTEST(outline(model), "tree");
        QTEST(model.index(0, 0).data(AbstractServerModel::FlagRole).toString(), "flag");
    }

    // The page shows the tree only in its double view, only with double-hop servers, and marks favourites there.
    void doubleView()
    {
        Tree sorted(QStringLiteral("FR-Paris:2 DE-frankfurt:2 FR-Lyon:2* DE-Berlin:2"));
        sorted.proxy.showDouble();
        QCOMPARE(outline(sorted.proxy), QStringLiteral("DE[DE-Berlin,DE-frankfurt],FR[FR-Lyon,FR-Paris]"));
        QSignalSpy changed(&sorted.model, &ServerTreeModel::favoriteChanged);
        const QModelIndex de = sorted.proxy.index(0, 0);
        // Group rows and the name column take no mark.
        QVERIFY(!sorted.proxy.setData(de.siblingAtColumn(1), true));
        QVERIFY(!sorted.proxy.setData(sorted.proxy.index(0, 0, de), true));
        QVERIFY(sorted.proxy.setData(sorted.proxy.index(0, 1, de), true));
        QVERIFY(sorted.proxy.setData(sorted.proxy.index(0, 1, sorted.proxy.index(1, 0)), false));
        QCOMPARE(changed.count(), 2);
        QCOMPARE(sorted.model.getFavoriteLocation().size(), 1);
        QCOMPARE(sorted.model.getFavoriteLocation().first().name, QStringLiteral("DE-Berlin"));
    }
};

QTEST_GUILESS_MAIN(TestServerModels)
#include "tst_ServerModels.moc"

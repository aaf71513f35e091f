#include <QAbstractItemModelTester>
#include <QStandardItemModel>
#include <QtTest>

#include "FavoritesServerModel.h"
#include "FavoritesSortFilterProxyModel.h"
#include "PingSortFilterProxyModel.h"
#include "ServerListFixture.h"
#include "ServerPingModel.h"

using Tester = QAbstractItemModelTester;

class TestServerPingModel : public QObject
{
    Q_OBJECT

private slots:
    void bestLocation_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QString>("best");

        QTest::newRow("nothing measured gives the greatest name") << QStringList({"A:1:0", "C:1:0", "B:1:0"}) << "C";
        QTest::newRow("an unmeasured server overtakes a measured one")
            << QStringList({"A:1:30", "B:1:20", "C:1:0"}) << "C";
        QTest::newRow("the lowest latency after an unmeasured start")
            << QStringList({"A:1:0", "B:1:20", "C:1:40"}) << "B";
        QTest::newRow("equal latencies keep the first name") << QStringList({"B:1:20", "A:1:20"}) << "A";
        QTest::newRow("kind does not matter") << QStringList({"A:1:50", "B:2:10"}) << "B";
        QTest::newRow("empty list gives a default record") << QStringList() << "";
    }
    void bestLocation()
    {
        QFETCH(QStringList, entries);
        ServerPingModel model;
        model.setServers(serversFromText(entries));
        QTEST(model.getBestLocation().name, "best");
    }

    void rowsSharingANameShareTheRecord()
    {
        ServerPingModel model;
        Tester tester(&model, Tester::FailureReportingMode::Fatal);
        QVector<ServerInfo> list = serversFromText({"x:1:0", "b:2:0", "x:1:0"});
        list[0].ip = QStringLiteral("10.0.0.1");
        list[2].ip = QStringLiteral("10.0.0.2");
        model.setServers(list);
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.locationByIndex(model.index(0, 0)).ip, QStringLiteral("10.0.0.2"));
        QCOMPARE(model.index(1, 0).data().toString(), QStringLiteral("b"));

        QSignalSpy changed(&model, &ServerPingModel::favoriteChanged);
        QVERIFY(!model.setData(model.index(0, 0), true));
        QVERIFY(model.setData(model.index(0, 1), true));
        QCOMPARE(changed.count(), 1);
        QVERIFY(model.index(2, 1).data().toBool());
        QCOMPARE(model.getFavoriteLocation().size(), 1);
        QCOMPARE(model.locationByIndex(QModelIndex()).name, QString());
    }

    void itemData_data()
    {
        QTest::addColumn<int>("row");
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("role");
        QTest::addColumn<QVariant>("value");

        QTest::newRow("name") << 0 << 0 << int(Qt::DisplayRole) << QVariant(QStringLiteral("DE-Berlin"));
        QTest::newRow("favourite mark") << 0 << 1 << int(Qt::DisplayRole) << QVariant(true);
        QTest::newRow("flag in column 0") << 0 << 0 << int(Qt::UserRole) << QVariant(QStringLiteral("de"));
        QTest::newRow("no flag in column 1") << 0 << 1 << int(Qt::UserRole) << QVariant();
        QTest::newRow("type in any column") << 1 << 1 << int(Qt::UserRole + 1) << QVariant(2);
        QTest::newRow("no header role in the flat model") << 0 << 0 << int(Qt::UserRole + 2) << QVariant();
        QTest::newRow("other roles are empty") << 0 << 0 << int(Qt::ToolTipRole) << QVariant();
    }
    void itemData()
    {
        QFETCH(int, row);
        QFETCH(int, column);
        QFETCH(int, role);
        ServerPingModel model;
        model.setServers(serversFromText({"DE-Berlin:1:0*", "FR-Paris:2:0"}));
        QTEST(model.index(row, column).data(role), "value");
        QCOMPARE(model.headerData(0, Qt::Horizontal), QVariant());
    }

    void favoritesSections_data()
    {
        QTest::addColumn<QStringList>("entries");
        QTest::addColumn<QStringList>("rows");

        QTest::newRow("no favourite starts with the recommended header")
            << QStringList({"a:1:10", "b:2:10"}) << QStringList({"<=>", "a", "b"});
        QTest::newRow("favourites in list order under their header")
            << QStringList({"z:2:0*", "a:1:10", "m:1:5*"}) << QStringList({"<*>", "z", "m", "<=>", "m", "a", "z"});
        QTest::newRow("three lowest standard latencies")
            << QStringList({"s50:1:50", "s10:1:10", "s40:1:40", "s20:1:20", "s30:1:30"})
            << QStringList({"<=>", "s10", "s20", "s30"});
        QTest::newRow("standard before double whatever the latency")
            << QStringList({"d1:2:1", "s9:1:9", "d2:2:2", "d3:2:3", "d4:2:4"})
            << QStringList({"<=>", "s9", "d1", "d2", "d3"});
        QTest::newRow("rows of no known kind are never recommended")
            << QStringList({"odd:0:1", "s:1:5"}) << QStringList({"<=>", "s"});
        QTest::newRow("empty list keeps the recommended header") << QStringList() << QStringList({"<=>"});
    }
    void favoritesSections()
    {
        QFETCH(QStringList, entries);
        FavoritesServerModel model;
        Tester tester(&model, Tester::FailureReportingMode::Fatal);
        model.setServers(serversFromText(entries));
        QStringList rows;
        for (int row = 0; row < model.rowCount(); ++row) {
            const QModelIndex index = model.index(row, 0);
            rows.append(index.data().toString());
            const bool header = rows.last().startsWith(QLatin1Char('<'));
            QCOMPARE(index.data(Qt::UserRole + 2).toBool(), header);
            QCOMPARE(index.data(Qt::UserRole + 1).toInt() == 0, header || rows.last() == "odd");
        }
        QTEST(rows, "rows");
    }

    void favoritesListIncludesItsHeader()
    {
        FavoritesServerModel model;
        Tester tester(&model, Tester::FailureReportingMode::Fatal);
        model.setServers(serversFromText({"a:1:0*", "b:1:0"}));
        QStringList names;
        for (const ServerInfo& server : model.getFavoriteLocation())
            names.append(server.name);
        QCOMPARE(names, QStringList({"<*>", "a", "a"}));

        QVERIFY(model.setData(model.index(4, 1), true));
        QCOMPARE(model.getFavoriteLocation().size(), 4);
        QVERIFY(!model.setData(model.index(99, 1), true));
        QCOMPARE(model.locationByIndex(model.index(4, 0)).name, QStringLiteral("b"));
        QCOMPARE(model.locationByIndex(QModelIndex()).name, QString());
    }

    void proxyViews_data()
    {
        QTest::addColumn<QString>("view");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QStringList>("rows");

        QTest::newRow("standard") << "standart"
                                  << "" << QStringList({"fr-paris", "Paris-FR"});
        QTest::newRow("double") << "double"
                                << "" << QStringList({"Berlin", "de-fra"});
        QTest::newRow("favourite whatever the kind") << "favorite"
                                                     << "" << QStringList({"Berlin", "fr-paris"});
        QTest::newRow("all without search") << "all"
                                            << "" << QStringList({"Berlin", "de-fra", "fr-paris", "Paris-FR"});
        QTest::newRow("search ignores case") << "all"
                                             << "FR" << QStringList({"de-fra", "fr-paris", "Paris-FR"});
        QTest::newRow("search inside the name") << "all"
                                                << "rLi" << QStringList({"Berlin"});
        QTest::newRow("search without match") << "all"
                                              << "xyz" << QStringList();
        QTest::newRow("search text kept but unused in other views") << "standart"
                                                                    << "xyz" << QStringList({"fr-paris", "Paris-FR"});
    }
    void proxyViews()
    {
        QFETCH(QString, view);
        QFETCH(QString, search);
        ServerPingModel model;
        PingSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.sort(0);
        Tester modelTester(&model, Tester::FailureReportingMode::Fatal);
        Tester proxyTester(&proxy, Tester::FailureReportingMode::Fatal);
        model.setServers(serversFromText({"fr-paris:1:0*", "Berlin:2:0*", "Paris-FR:1:0", "de-fra:2:0", "odd:0:0"}));

        proxy.showAll(search);
        if (view == "standart")
            proxy.showStandart();
        else if (view == "double")
            proxy.showDouble();
        else if (view == "favorite")
            proxy.showFavorite();
        QTEST(outline(proxy).split(QLatin1Char(','), Qt::SkipEmptyParts), "rows");
    }

    void proxyStartsOnStandardServers()
    {
        ServerPingModel model;
        model.setServers(serversFromText({"b:2:0", "a:1:0"}));
        PingSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        QCOMPARE(outline(proxy), QStringLiteral("a"));
    }

    void proxyOrder_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<QStringList>("sorted");

        QTest::newRow("plain names before hyphenated ones")
            << QStringList({"a-b", "Berlin", "Amsterdam"}) << QStringList({"Amsterdam", "Berlin", "a-b"});
        QTest::newRow("case is ignored within each kind")
            << QStringList({"b-x", "A-y", "zurich", "Oslo"}) << QStringList({"Oslo", "zurich", "A-y", "b-x"});
        QTest::newRow("hyphen anywhere counts") << QStringList({"x-", "-a", "y"}) << QStringList({"y", "-a", "x-"});
    }
    void proxyOrder()
    {
        QFETCH(QStringList, names);
        QStringList entries;
        for (const QString& name : names)
            entries.append(name + ":1:0");
        ServerPingModel model;
        PingSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.sort(0);
        Tester proxyTester(&proxy, Tester::FailureReportingMode::Fatal);
        model.setServers(serversFromText(entries));
        QTEST(outline(proxy).split(QLatin1Char(',')), "sorted");
    }

    void proxyOverAPlainItemModel()
    {
        QStandardItemModel model;
        for (const QString& name : QStringList {"b-x", "Oslo", "A-y", "zurich"}) {
            auto* item = new QStandardItem(name);
            item->setData(int(ServerInfo::Standart), Qt::UserRole + 1);
            model.appendRow({item, new QStandardItem()});
        }
        PingSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.sort(0);
        QCOMPARE(outline(proxy), QStringLiteral("Oslo,zurich,A-y,b-x"));
        QString search = QStringLiteral("O");
        proxy.showAll(search);
        QCOMPARE(outline(proxy), QStringLiteral("Oslo"));
    }

    void proxyFollowsFavouriteToggles()
    {
        ServerPingModel model;
        PingSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.sort(0);
        Tester proxyTester(&proxy, Tester::FailureReportingMode::Fatal);
        model.setServers(serversFromText({"b:1:0", "a:2:0*"}));
        proxy.showFavorite();
        QCOMPARE(outline(proxy), QStringLiteral("a"));
        QVERIFY(proxy.setData(proxy.index(0, 1), false));
        QCOMPARE(proxy.rowCount(), 0);
        QVERIFY(model.setData(model.index(0, 1), true));
        QCOMPARE(outline(proxy), QStringLiteral("b"));
    }

    void favoritesProxyPassesEverythingInOrder()
    {
        FavoritesServerModel model;
        FavoritesSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.sort(0);
        Tester proxyTester(&proxy, Tester::FailureReportingMode::Fatal);
        model.setServers(serversFromText({"z:1:0*", "b:2:5", "a:1:9"}));
        QString search = QStringLiteral("zzz");
        proxy.showAll(search);
        proxy.showDouble();
        proxy.showFavorite();
        proxy.showStandart();
        QCOMPARE(outline(proxy), QStringLiteral("<*>,z,<=>,z,a,b"));
    }
};

QTEST_GUILESS_MAIN(TestServerPingModel)
#include "tst_ServerPingModel.moc"

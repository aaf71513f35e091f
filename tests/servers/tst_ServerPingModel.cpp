#include <QtTest>

#include "FavoritesServerModel.h"
#include "FavoritesSortFilterProxyModel.h"
#include "PingSortFilterProxyModel.h"
#include "ServerListFixture.h"
#include "ServerPingModel.h"

using Sorted = SortedModel<ServerPingModel, PingSortFilterProxyModel>;

class TestServerPingModel : public QObject
{
    Q_OBJECT

private slots:
    void bestLocation_data()
    {
        QTest::addColumn<QString>("entries");
        QTest::addColumn<QString>("best");
        addRow("nothing measured gives the greatest name", "A:1:0 C:1:0 B:1:0", "C");
        addRow("an unmeasured server overtakes a measured one", "A:1:30 B:1:20 C:1:0", "C");
        addRow("equal latencies keep the first name", "B:1:20 A:1:20", "A");
    }
    void bestLocation()
    {
        QFETCH(QString, entries);
        ServerPingModel model;
        model.setServers(serversFromText(entries));
        QTEST(model.getBestLocation().name, "best");
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

    void proxyViews_data()
    {
        QTest::addColumn<QString>("view");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QString>("rows");
        addRow("the proxy starts on standard servers", "", "", "fr-paris,Paris-FR");
        addRow("double", "double", "", "Berlin,de-fra");
        addRow("favourite whatever the kind", "favorite", "", "Berlin,fr-paris");
        addRow("all without search", "all", "", "Berlin,de-fra,fr-paris,Paris-FR");
        addRow("search ignores case", "all", "FR", "de-fra,fr-paris,Paris-FR");
    }
    void proxyViews()
    {
        QFETCH(QString, view);
        QFETCH(QString, search);
        Sorted sorted("fr-paris:1:0* Berlin:2:0* Paris-FR:1:0 de-fra:2:0 odd:0:0");
        if (!view.isEmpty())
            sorted.proxy.showAll(search);
        if (view == "double")
            sorted.proxy.showDouble();
        else if (view == "favorite")
            sorted.proxy.showFavorite();
        QTEST(outline(sorted.proxy), "rows");
    }
};

QTEST_GUILESS_MAIN(TestServerPingModel)
#include "tst_ServerPingModel.moc"

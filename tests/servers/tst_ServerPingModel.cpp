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
};

QTEST_GUILESS_MAIN(TestServerPingModel)
#include "tst_ServerPingModel.moc"

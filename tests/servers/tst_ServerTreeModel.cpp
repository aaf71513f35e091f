#include <QtTest>

#include "ServerListFixture.h"
#include "ServerTreeModel.h"
#include "TreePingSortFilterProxyModel.h"

using Sorted = SortedModel<ServerTreeModel, TreePingSortFilterProxyModel>;

class TestServerTreeModel : public QObject
{
    Q_OBJECT

private slots:
    void grouping_data()
    {
        QTest::addColumn<QString>("entries");
        QTest::addColumn<QString>("tree");
        addRow("groups in order of first appearance",
               "DE-Berlin FR-Paris DE-Frankfurt Singapore",
               "DE[DE-Berlin,DE-Frankfurt],FR[FR-Paris],Singapore[Singapore]");
        addRow("a repeated record appears each time", "DE-a DE-a vpn2/DE-a", "DE[DE-a,DE-a,DE-a]");
    }
    void grouping()
    {
        QFETCH(QString, entries);
        ServerTreeModel model;
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        model.setServers(serversFromText(entries));
        QTEST(outline(model), "tree");
    }

    // The page shows the tree only in its double view, only with double-hop servers, and marks favourites there.
    void doubleView()
    {
        Sorted sorted(QStringLiteral("FR-Paris:2 DE-frankfurt:2 FR-Lyon:2* DE-Berlin:2"));
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
        QStringList favorites;
        for (const ServerInfo& server : sorted.model.getFavoriteLocation())
            favorites.append(server.name);
        QCOMPARE(favorites, QStringList {"DE-Berlin"});
    }
};

QTEST_GUILESS_MAIN(TestServerTreeModel)
#include "tst_ServerTreeModel.moc"

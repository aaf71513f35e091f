#include <QtTest>

#include "ServerListFixture.h"
#include "ServerTreeModel.h"
#include "TreePingSortFilterProxyModel.h"

using Sorted = SortedModel<ServerTreeModel, TreePingSortFilterProxyModel>;

namespace {
const QString sample = QStringLiteral("DE-Berlin:1:0 FR-Paris:2:0* DE-Frankfurt:2:0 Singapore:1:0* FR-Lyon:2:0");
} // namespace

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
        addRow("leading hyphen gives an empty group", "-x y", "[-x],y[y]");
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

    void views_data()
    {
        QTest::addColumn<QString>("view");
        QTest::addColumn<QString>("search");
        QTest::addColumn<QString>("tree");
        addRow("standard hides all-double groups", "standart", "", "DE[DE-Berlin],Singapore[Singapore]");
        addRow("favourites only where a server is one", "favorite", "", "FR[FR-Paris],Singapore[Singapore]");
        addRow("all, ordered ignoring case",
               "all",
               "",
               "DE[DE-Berlin,DE-Frankfurt],FR[FR-Lyon,FR-Paris],Singapore[Singapore]");
        addRow("search keeps the group of a match", "all", "fra", "DE[DE-Frankfurt]");
    }
    void views()
    {
        QFETCH(QString, view);
        QFETCH(QString, search);
        Sorted sorted(sample);
        if (view == "standart")
            sorted.proxy.showStandart();
        else if (view == "double")
            sorted.proxy.showDouble();
        else if (view == "favorite")
            sorted.proxy.showFavorite();
        else
            sorted.proxy.showAll(search);
        QTEST(outline(sorted.proxy), "tree");
    }

    void favouriteToggleMovesGroups()
    {
        Sorted sorted(sample);
        sorted.proxy.showFavorite();
        QSignalSpy changed(&sorted.model, &ServerTreeModel::favoriteChanged);
        const QModelIndex de = sorted.model.index(0, 0);
        QVERIFY(sorted.model.setData(sorted.model.index(0, 1, de), true));
        QCOMPARE(outline(sorted.proxy), QStringLiteral("DE[DE-Berlin],FR[FR-Paris],Singapore[Singapore]"));
        QVERIFY(sorted.proxy.setData(sorted.proxy.index(0, 1, sorted.proxy.index(1, 0)), false));
        QCOMPARE(outline(sorted.proxy), QStringLiteral("DE[DE-Berlin],Singapore[Singapore]"));
        QCOMPARE(changed.count(), 2);
        // Group rows and the name column take no mark.
        QVERIFY(!sorted.model.setData(de.siblingAtColumn(1), true));
        QStringList favorites;
        for (const ServerInfo& server : sorted.model.getFavoriteLocation())
            favorites.append(server.name);
        QCOMPARE(favorites, QStringList({"DE-Berlin", "Singapore"}));
    }
};

QTEST_GUILESS_MAIN(TestServerTreeModel)
#include "tst_ServerTreeModel.moc"

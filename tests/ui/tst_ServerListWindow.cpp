#include <QAbstractItemModelTester>
#include <QHelpEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QToolTip>
#include <QtTest>

#include "AbstractFilterModel.h"
#include "AbstractServerModel.h"
#include "LocalSettings.h"
#include "ServerListWindow.h"
#include "ServerTreeView.h"
#include "TestEnvironment.h"
#include "servers/ServerListFixture.h"

namespace {

// Standard servers and two double-hop groups, every one usable with every protocol.
QVector<ServerInfo> catalogue()
{
    return serversFromText(QStringLiteral("Berlin Amsterdam Paris DE-Frankfurt:2 DE-Munich:2 FR-Lyon:2"));
}

QModelIndex findRow(QAbstractItemModel* model, const QString& name)
{
    return model->match(model->index(0, 0), Qt::DisplayRole, name, 1, Qt::MatchExactly | Qt::MatchRecursive).value(0);
}

void clickIndex(ServerTreeView* view, const QModelIndex& index)
{
    view->scrollTo(index);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, view->visualRect(index).center());
}

} // namespace

Q_DECLARE_METATYPE(ServerListWindow::FilterId)

class TestServerListWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<ServerIdentif>("ServerIdentif"); }
    void init()
    {
        LocalSettings::instance()->createDefaultSettings();
        m_page.reset(new ServerListWindow);
        m_page->resize(340, 500);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.data()));
    }
    void cleanup() { m_page.reset(); }

    void keepsServersUsableWithProtocol_data()
    {
        QTest::addColumn<int>("protocol");
        QTest::addColumn<QStringList>("kept");
        QTest::newRow("udp needs udp ports") << 4 << QStringList {"Both", "UdpOnly", "All"};
        QTest::newRow("tcp needs tcp ports") << 5 << QStringList {"Both", "TcpOnly", "All"};
        QTest::newRow("stealth needs an ssl port") << 6 << QStringList {"All"};
    }
    void keepsServersUsableWithProtocol()
    {
        QFETCH(int, protocol);
        QVector<ServerInfo> servers = serversFromText(QStringLiteral("Both UdpOnly TcpOnly All"));
        servers[0].sslPort = 0;
        servers[1].tcpPorts.clear();
        servers[1].sslPort = 0;
        servers[2].udpPorts.clear();
        servers[2].sslPort = -1;
        m_page->setServers(servers, protocol, false);
        QStringList names;
        for (const ServerInfo& s : m_page->servers()) {
            names << s.name;
            QCOMPARE(int(s.protocol), protocol);
        }
        QTEST(names, "kept");
        QCOMPARE(m_page->protocol(), protocol);
        // -1 keeps the protocol of the call before.
        m_page->setServers(servers, -1, false);
        QCOMPARE(m_page->protocol(), protocol);
    }

    // A list of the same length in another order, or with other names, is ordered anew; one with the same names in
    // the same order keeps what was worked out from them.
    void refillOrdersByName_data()
    {
        QTest::addColumn<QString>("second");
        QTest::addColumn<QString>("shown");
        QTest::newRow("same names, another order") << "Paris Berlin Amsterdam"
                                                   << "Amsterdam Berlin Paris";
        QTest::newRow("other names, one twice") << "Oslo Rome Oslo"
                                                << "Oslo Oslo Rome";
        QTest::newRow("the same list") << "Berlin Amsterdam Paris"
                                       << "Amsterdam Berlin Paris";
    }
    void refillOrdersByName()
    {
        QFETCH(QString, second);
        m_page->setServers(serversFromText(QStringLiteral("Berlin Amsterdam Paris")), 5, false);
        m_page->setServers(serversFromText(second), 5, false);
        QStringList shown;
        for (int row = 0; row < m_page->view()->model()->rowCount(); ++row)
            shown << m_page->view()->model()->index(row, 0).data().toString();
        QTEST(shown.join(' '), "shown");
    }

    void choosesViewFromRememberedLocation_data()
    {
        QTest::addColumn<QString>("lastLocation");
        QTest::addColumn<bool>("flag");
        QTest::addColumn<QString>("favorites");
        QTest::addColumn<ServerListWindow::FilterId>("view");
        QTest::newRow("opening the page with favourites follows a hyphenated location")
            << "vpn1::DE-Munich" << false << "vpn1::Berlin" << ServerListWindow::DoubleFilter;
        QTest::newRow("a refresh with favourites opens the favourites")
            << "vpn1::Paris" << true << "vpn1::Berlin" << ServerListWindow::FavoritesFilter;
        QTest::newRow("a refresh without favourites follows the location")
            << "vpn1::Paris" << true << "" << ServerListWindow::StandartFilter;
    }
    void choosesViewFromRememberedLocation()
    {
        QFETCH(QString, lastLocation);
        QFETCH(bool, flag);
        QFETCH(QString, favorites);
        QFETCH(ServerListWindow::FilterId, view);
        LocalSettings::instance()->setValue(Keys::LastLocation, lastLocation);
        LocalSettings::instance()->setValue(Keys::FavoriteServersTcp, QStringList {favorites});
        m_page->setServers(catalogue(), 5, flag);
        for (auto id :
             {ServerListWindow::FavoritesFilter, ServerListWindow::StandartFilter, ServerListWindow::DoubleFilter})
            QCOMPARE(m_page->filterButton(id)->isChecked(), id == view);
        QVERIFY(m_page->view()->isVisible());
    }

    void clickingRows_data()
    {
        QTest::addColumn<ServerListWindow::FilterId>("view");
        QTest::addColumn<QString>("row");
        QTest::addColumn<bool>("selects");
        QTest::newRow("standard server") << ServerListWindow::StandartFilter << "Paris" << true;
        QTest::newRow("double group row") << ServerListWindow::DoubleFilter << "DE" << false;
        QTest::newRow("recommended server") << ServerListWindow::FavoritesFilter << "Amsterdam" << true;
    }
    void clickingRows()
    {
        QFETCH(ServerListWindow::FilterId, view);
        QFETCH(QString, row);
        QFETCH(bool, selects);
        LocalSettings::instance()->setValue(Keys::FavoriteServersUdp, QStringList {QStringLiteral("vpn1::Berlin")});
        m_page->setServers(catalogue(), 4, false);
        m_page->onFilterChange(view);
        QAbstractItemModelTester tester(m_page->proxy(), QAbstractItemModelTester::FailureReportingMode::QtTest);
        QSignalSpy selected(m_page.data(), &ServerListWindow::serverSelected);
        const QModelIndex index = findRow(m_page->proxy(), row);
        QVERIFY(index.isValid());
        clickIndex(m_page->view(), index);
        QCOMPARE(selected.count(), selects ? 1 : 0);
        if (selects)
            QCOMPARE(selected.first().first().value<ServerIdentif>(), ServerIdentif(QStringLiteral("vpn1"), row));
        // A group row opens and closes instead.
        if (row == QLatin1String("DE")) {
            QVERIFY(m_page->view()->isExpanded(index));
            clickIndex(m_page->view(), index);
            QVERIFY(!m_page->view()->isExpanded(index));
        }
    }

    void starIsStoredPerProtocol()
    {
        const QString key = Keys::FavoriteServersTcp;
        const QString row = QStringLiteral("DE-Munich");
        const auto clickStar = [&] {
            m_page->onFilterChange(ServerListWindow::DoubleFilter);
            m_page->view()->expandAll();
            const QModelIndex index = findRow(m_page->proxy(), row);
            QVERIFY(index.isValid());
            clickIndex(m_page->view(), index.sibling(index.row(), 1));
        };
        m_page->setServers(catalogue(), 5, false);
        clickStar();
        QTRY_COMPARE(LocalSettings::instance()->value(key).toStringList(), QStringList {"vpn1::" + row});

        // Another protocol has its own list; coming back restores the mark.
        m_page->setServers(catalogue(), 4, false);
        for (const ServerInfo& s : m_page->servers())
            QVERIFY(!s.favorite);
        m_page->setServers(catalogue(), 5, false);
        for (const ServerInfo& s : m_page->servers())
            QCOMPARE(s.favorite, s.name == row);

        // A second click takes the star away again.
        clickStar();
        QTRY_COMPARE(LocalSettings::instance()->value(key).toStringList(), QStringList());
    }

    void rowsFollowLayoutDirection_data()
    {
        QTest::addColumn<Qt::LayoutDirection>("direction");
        QTest::newRow("LeftToRight") << Qt::LeftToRight;
        QTest::newRow("RightToLeft") << Qt::RightToLeft;
    }
    void rowsFollowLayoutDirection()
    {
        QFETCH(Qt::LayoutDirection, direction);
        m_page->setLayoutDirection(direction);
        m_page->setServers(serversFromText(QStringLiteral("Berlin")), 4, false);
        m_page->onFilterChange(ServerListWindow::StandartFilter);
        QWidget* viewport = m_page->view()->viewport();
        const QRect cell = m_page->view()->visualRect(findRow(m_page->proxy(), QStringLiteral("Berlin")));
        const QImage picture = viewport->grab().toImage();
        // How far the ink (flag, name, the dash of the unknown latency) keeps from the cell's ends; the
        // bottom line is the separator.
        int left = cell.width(), right = cell.width();
        for (int i = 0; i < cell.width() * (cell.height() - 1); ++i) {
            const int x = i % cell.width();
            if (qGray(picture.pixel(cell.left() + x, cell.top() + i / cell.width())) < 230) {
                left = qMin(left, x);
                right = qMin(right, cell.width() - 1 - x);
            }
        }
        // The flag is indented from the leading end; the dash sits close to the trailing end, and its note
        // answers there.
        const bool rtl = direction == Qt::RightToLeft;
        QCOMPARE(left > right, !rtl);
        const QPoint dash(rtl ? cell.left() + left + 1 : cell.right() - right - 1, cell.center().y());
        QHelpEvent help(QEvent::ToolTip, dash, viewport->mapToGlobal(dash));
        QApplication::sendEvent(viewport, &help);
        QVERIFY(!QToolTip::text().isEmpty());
        QToolTip::hideText();
    }

private:
    QScopedPointer<ServerListWindow> m_page;
};

TAVRIN_PAGE_TEST_MAIN(TestServerListWindow)
#include "tst_ServerListWindow.moc"

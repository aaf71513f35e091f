#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <algorithm>
#include <functional>

#include "AbstractFilterModel.h"
#include "AbstractServerModel.h"
#include "BenchGoal.h"
#include "SearchEdit.h"
#include "ServerListWindow.h"
#include "ServerTreeView.h"

// Times what the user waits for on the server list page: filling it, switching views and one keystroke of the
// search, each until the view has laid out and painted its visible rows.
namespace {

const int runs = 9;
const double goalMs = 6.0;
// The slowest step at 10,000 locations, for the goal line.
double worstAtGoalSize = 0;

QTextStream& out()
{
    static QTextStream stream(stdout);
    return stream;
}

QVector<ServerInfo> catalogue(int size, const QString& suffix = QString())
{
    static const char* const flags[] = {"de", "fr", "nl", "us", "jp", "gb", "se", "ch", "ca", "no", "cz", "it"};
    QVector<ServerInfo> servers;
    servers.reserve(size);
    for (int i = 0; i < size; ++i) {
        ServerInfo s;
        const bool twoHops = i % 4 == 3;
        const QString country = QString::fromLatin1(flags[i % 12]).toUpper();
        s.name = (twoHops ? QStringLiteral("%1-Exit %2").arg(country).arg(i)
                          : QStringLiteral("%1 City %2").arg(country).arg(i))
            + suffix;
        s.flag = QLatin1String(flags[i % 12]);
        s.user = QStringLiteral("vpn%1").arg(i % 2);
        s.ip = QStringLiteral("192.0.2.%1").arg(i % 250);
        s.tcpPorts = QStringList {QStringLiteral("80")};
        s.udpPorts = QStringList {QStringLiteral("1194")};
        s.sslPort = 443;
        s.ping = (i * 37) % 300;
        s.type = twoHops ? ServerInfo::Double : ServerInfo::Standart;
        servers.append(s);
    }
    return servers;
}

// The view's own layout of rows it has left for later, without waiting for the event loop (a protected member).
struct DelayedLayout : QAbstractItemView
{
    using QAbstractItemView::executeDelayedItemsLayout;
};

// Layout and one paint of what is visible, as the user would see it: a layout the page has already done is not done
// again.
void settle(ServerListWindow& page)
{
    auto* view = static_cast<QAbstractItemView*>(page.view());
    (view->*&DelayedLayout::executeDelayedItemsLayout)();
    view->viewport()->repaint();
    QCoreApplication::processEvents();
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

bool measure(const QString& name,
             int size,
             const std::function<void()>& prepare,
             const std::function<void()>& step,
             ServerListWindow& page)
{
    QVector<double> times;
    for (int run = 0; run < runs; ++run) {
        prepare();
        settle(page);
        QElapsedTimer timer;
        timer.start();
        step();
        settle(page);
        times.append(timer.nsecsElapsed() / 1e6);
    }
    const double ms = median(times);
    if (size == 10000)
        worstAtGoalSize = std::max(worstAtGoalSize, ms);
    const bool ok = size != 10000 || ms <= goalMs;
    out() << QStringLiteral("%1 %2 %3 ms%4\n")
                 .arg(name, -40)
                 .arg(size, 6)
                 .arg(ms, 8, 'f', 2)
                 .arg(ok ? QString() : QStringLiteral("  over the goal"));
    return ok;
}

} // namespace

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // The page reads and writes favourites; keep them out of the user's own settings.
    QTemporaryDir config;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(config.path()));
    QApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("QOLV"));
    app.setApplicationName(QStringLiteral("Tavrin"));
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});

    out() << "median of " << runs << " runs, layout and paint included\n";
    bool allOk = true;
    for (int size : {1000, 10000}) {
        const QVector<ServerInfo> servers = catalogue(size);
        ServerListWindow page;
        page.resize(340, 500);
        page.show();
        if (!QTest::qWaitForWindowExposed(&page))
            return 2;
        auto standard = [&] {
            page.onFilterChange(ServerListWindow::StandartFilter);
        };
        auto none = [] {
        };
        // A list of other names (a new account or a changed list), then the same list again (a refresh).
        const QVector<ServerInfo> others = catalogue(size, QStringLiteral(" b"));
        int fills = 0;
        allOk &= measure(
            QStringLiteral("fill with a new list of names"),
            size,
            none,
            [&] { page.setServers(++fills % 2 ? others : servers, OpenVpnUdp, false); },
            page);
        allOk &= measure(
            QStringLiteral("fill again (a refresh, the same names)"),
            size,
            none,
            [&] { page.setServers(servers, OpenVpnUdp, false); },
            page);
        page.setServers(servers, OpenVpnUdp, false);
        allOk &= measure(
            QStringLiteral("switch to double view"),
            size,
            standard,
            [&] { page.onFilterChange(ServerListWindow::DoubleFilter); },
            page);
        allOk &= measure(
            QStringLiteral("switch to favourites"),
            size,
            standard,
            [&] { page.onFilterChange(ServerListWindow::FavoritesFilter); },
            page);
        allOk &= measure(
            QStringLiteral("switch to standard view"),
            size,
            [&] { page.onFilterChange(ServerListWindow::DoubleFilter); },
            standard,
            page);
        QPushButton* search = page.filterButton(ServerListWindow::SearchFilter);
        allOk &= measure(
            QStringLiteral("open the search"),
            size,
            [&] {
                page.searchEdit()->clear();
                standard();
            },
            [&] { QTest::mouseClick(search, Qt::LeftButton); },
            page);
        allOk &= measure(
            QStringLiteral("first keystroke of a search"),
            size,
            [&] {
                if (!search->isChecked())
                    QTest::mouseClick(search, Qt::LeftButton);
                page.searchEdit()->clear();
            },
            [&] { QTest::keyClick(page.searchEdit(), Qt::Key_D); },
            page);
        allOk &= measure(
            QStringLiteral("second keystroke of a search"),
            size,
            [&] {
                if (!search->isChecked())
                    QTest::mouseClick(search, Qt::LeftButton);
                page.searchEdit()->setText(QStringLiteral("d"));
            },
            [&] { QTest::keyClick(page.searchEdit(), Qt::Key_E); },
            page);
    }
    out() << goalLine("server-list page at 10000 (slowest step)", worstAtGoalSize, "ms", goalMs) << '\n';
    return allOk ? 0 : 1;
}

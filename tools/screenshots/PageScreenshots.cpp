// Renders the sign-in, selection, server list, settings, account and purchase pages with the fake service's demo
// account, and the location list with latencies in English and Arabic, into PNG files, so that a person can look at
// them (scripts/screenshots pages runs this under Xvfb).
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>

#include "AbstractFilterModel.h"
#include "AbstractServerModel.h"
#include "AccountWindow.h"
#include "FakeService.h"
#include "LocalSettings.h"
#include "LoginWindow.h"
#include "NetworkManager.h"
#include "SearchEdit.h"
#include "SelectionAccountWindow.h"
#include "ServerListWindow.h"
#include "ServerTreeView.h"
#include "SettingsWindow.h"
#include "SubscriptionPurchaseWindow.h"

namespace {

bool save(QWidget& page, const QDir& dir, const QString& name)
{
    page.resize(340, 500);
    page.show();
    QTest::qWait(50);
    const QString path = dir.filePath(name);
    if (!page.grab().save(path)) {
        QTextStream(stderr) << "cannot write " << path << "\n";
        return false;
    }
    QTextStream(stdout) << path << "\n";
    page.hide();
    return true;
}

bool signIn()
{
    QSignalSpy auth(NetworkManager::instance(), &NetworkManager::auth);
    NetworkManager::instance()->authRequest(QStringLiteral("demo"), QStringLiteral("demo"));
    if (!auth.wait(10000))
        return false;
    const auto answer = auth.first().first().value<NetworkManager::ApiError>();
    if (answer != NetworkManager::Success && answer != NetworkManager::LiteAccount)
        return false;
    // The list shows the servers of the chosen VPN login.
    LocalSettings::instance()->setValue(Keys::VpnLogin, QStringLiteral("vpn-demo1"));
    return !NetworkManager::instance()->servers().isEmpty();
}

} // namespace

int main(int argc, char* argv[])
{
    // A private home and settings, and the service on loopback only.
    QTemporaryDir root;
    qputenv("HOME", QFile::encodeName(root.path()));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(root.path() + QStringLiteral("/config")));
    qputenv("XDG_DATA_HOME", QFile::encodeName(root.path() + QStringLiteral("/data")));
    qputenv("TAVRIN_PROBE_URL", "http://127.0.0.1:1/");
    // The demo account's locations are documentation addresses off this machine: its pings go to a stand-in.
    QDir().mkpath(root.path() + QStringLiteral("/bin"));
    QFile::link(QStringLiteral("/bin/true"), root.path() + QStringLiteral("/bin/ping"));
    qputenv("PATH", QFile::encodeName(root.path() + QStringLiteral("/bin:")) + qgetenv("PATH"));
    QApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("QOLV"));
    app.setApplicationName(QStringLiteral("Tavrin"));
    const QDir dir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots"));
    if (!dir.mkpath(QStringLiteral(".")))
        return 1;

    FakeService service;
    QString error;
    if (!service.start(0, &error)) {
        QTextStream(stderr) << "fake service: " << error << "\n";
        return 1;
    }
    qputenv("TAVRIN_API_URL", service.baseUrl().toUtf8());
    qputenv("TAVRIN_CA_FILE", QFile::encodeName(FakeService::caFile()));
    qputenv("TAVRIN_SITE_URL", service.baseUrl().toUtf8());
    LocalSettings::instance()->createDefaultSettings();
    if (!signIn()) {
        QTextStream(stderr) << "cannot sign in to the fake service\n";
        return 1;
    }
    bool ok = true;

    SettingsWindow settings;
    settings.setVersion(QStringLiteral("3.6.9"));
    LocalSettings::instance()->setValue(Keys::Language, QStringLiteral("en"));
    LocalSettings::instance()->setValue(Keys::KillConnect, true);
    LocalSettings::instance()->setValue(Keys::LaunchOnStart, true);
    LocalSettings::instance()->setValue(Keys::OvpnProtocol, QStringLiteral("udp"));
    settings.loadSettings({OpenVpnTcp, OpenVpnUdp, Stealth});
    settings.showWithMode(SettingsWindow::Full);
    ok &= save(settings, dir, QStringLiteral("page-settings.png"));
    settings.showWithMode(SettingsWindow::Lite);
    ok &= save(settings, dir, QStringLiteral("page-settings-lite.png"));

    LoginWindow login;
    ok &= save(login, dir, QStringLiteral("page-sign-in.png"));
    login.loginEdit()->setText(QStringLiteral("demo"));
    login.passwordEdit()->setText(QStringLiteral("demo"));
    ok &= save(login, dir, QStringLiteral("page-sign-in-filled.png"));

    SelectionAccountWindow selection;
    selection.setUsers(NetworkManager::instance()->cacheUsers());
    ok &= save(selection, dir, QStringLiteral("page-selection.png"));

    // Some measured latencies, so that the list shows both figures and the dash.
    QVector<ServerInfo> servers = NetworkManager::instance()->servers();
    for (int i = 0; i < servers.size(); ++i)
        servers[i].ping = i % 3 == 2 ? 0 : 18 + 23 * i;
    LocalSettings::instance()->setValue(
        Keys::FavoriteServersUdp,
        QStringList {QStringLiteral("vpn-demo1::Zurich"), QStringLiteral("vpn-demo1::Tokyo")});
    ServerListWindow list;
    list.setServers(servers, OpenVpnUdp, true);
    ok &= save(list, dir, QStringLiteral("page-servers-favorites.png"));
    list.onFilterChange(ServerListWindow::StandartFilter);
    ok &= save(list, dir, QStringLiteral("page-servers-standard.png"));
    list.onFilterChange(ServerListWindow::DoubleFilter);
    list.view()->expand(list.proxy()->index(0, 0));
    ok &= save(list, dir, QStringLiteral("page-servers-double.png"));
    list.filterButton(ServerListWindow::SearchFilter)->click();
    list.searchEdit()->setText(QStringLiteral("o"));
    ok &= save(list, dir, QStringLiteral("page-servers-search.png"));
    list.searchEdit()->setText(QStringLiteral("nowhere"));
    ok &= save(list, dir, QStringLiteral("page-servers-search-empty.png"));
    // The latencies in the favourite and recommended locations, and in the search over all of them.
    const auto latencyShots = [&list, &dir](const QString& code) {
        list.searchEdit()->clear();
        list.onFilterChange(ServerListWindow::FavoritesFilter);
        bool done = save(list, dir, QStringLiteral("locations-latency-%1.png").arg(code));
        list.filterButton(ServerListWindow::SearchFilter)->click();
        done &= save(list, dir, QStringLiteral("locations-latency-all-%1.png").arg(code));
        list.onFilterChange(ServerListWindow::FavoritesFilter);
        return done;
    };
    ok &= latencyShots(QStringLiteral("en"));

    LocalSettings::instance()->setValue(Keys::VpnLogin, QStringLiteral("vpn-demo1"));
    AccountWindow account;
    ok &= save(account, dir, QStringLiteral("page-account.png"));

    SubscriptionPurchaseWindow purchase;
    ok &= save(purchase, dir, QStringLiteral("page-purchase.png"));

    // One page in another language, switched from the settings page.
    settings.languageBox()->setCurrentIndex(settings.languageBox()->findData(QStringLiteral("de")));
    QTest::qWait(50);
    list.searchEdit()->clear();
    list.onFilterChange(ServerListWindow::FavoritesFilter);
    ok &= save(list, dir, QStringLiteral("page-servers-de.png"));
    settings.showWithMode(SettingsWindow::Full);
    ok &= save(settings, dir, QStringLiteral("page-settings-de.png"));
    settings.languageBox()->setCurrentIndex(settings.languageBox()->findData(QStringLiteral("ru")));
    QTest::qWait(50);
    ok &= save(settings, dir, QStringLiteral("page-settings-ru.png"));
    settings.languageBox()->setCurrentIndex(settings.languageBox()->findData(QStringLiteral("ar")));
    QTest::qWait(50);
    ok &= latencyShots(QStringLiteral("ar"));
    return ok ? 0 : 1;
}

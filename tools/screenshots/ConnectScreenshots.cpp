// Renders the connect page in its idle, connecting, connected and kill-switch-blocked looks, and the tray's menu
// and tooltip while blocked, into PNG files, so that a person can look at them (scripts/screenshots connect runs
// this under Xvfb).
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTemporaryDir>
#include <QTest>
#include <QTextStream>
#include <QToolTip>
#include <QTranslator>

#include "ConnectHost.h"
#include "ConnectWindow.h"
#include "FakeHelperDaemon.h"
#include "LocalSettings.h"
#include "SystemTray.h"
#include "WidgetStyle.h"

namespace {

// A tray that never pops up a balloon.
class QuietTray : public SystemTray
{
public:
    using SystemTray::SystemTray;

protected:
    void showBalloon(const QString&) override { }
};

// Stands in for the main window, with a real tray behind the relays.
class ScreenshotHost : public ConnectHost
{
public:
    ScreenshotHost() { tray.init(); }

    QByteArray getConfigOvpnByServer(QString) override { return {}; }
    QByteArray getCertifOvpnByUser(QString) override { return {}; }
    QByteArray getKeyOvpnByUser(QString) override { return {}; }
    void onBack() override { }
    void onShow() override { }
    void setTrayStatusConnected(bool notify) override { tray.setStatusConnected(notify); }
    void setTrayStatusDisconnected(bool notify) override { tray.setStatusDisconnected(notify); }
    void setTrayStatusConnecting() override { tray.setStatusConnecting(); }
    void setTrayStatusReestablishing() override { tray.setStatusReestablishing(); }
    void setTrayActiveServer(QString& name) override { tray.setActiveServer(name); }
    void setTrayBlocked(bool blocked) override { tray.setBlocked(blocked); }

    QuietTray tray;
};

bool save(const QPixmap& picture, const QDir& dir, const QString& name)
{
    const QString path = dir.filePath(name);
    if (!picture.save(path)) {
        QTextStream(stderr) << "cannot write " << path << "\n";
        return false;
    }
    QTextStream(stdout) << path << "\n";
    return true;
}

bool save(QWidget& page, const QDir& dir, const QString& name)
{
    QApplication::processEvents();
    return save(page.grab(), dir, name);
}

// The tooltip on show, if any.
QWidget* shownToolTip()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->inherits("QTipLabel") && window->isVisible())
            return window;
    }
    return nullptr;
}

// The tray as a user meets it: the icon in a panel, the tooltip that hovering it shows, and the menu that a
// click opens, stacked under the icon (on the left of a right-to-left desktop). Null if no tooltip showed.
QPixmap trayPicture(SystemTray& tray)
{
    QToolTip::showText(QPoint(200, 100), tray.icon()->toolTip());
    if (!QTest::qWaitFor([] { return shownToolTip() != nullptr; }))
        return {};
    const QPixmap tip = shownToolTip()->grab();
    QToolTip::hideText();
    QMenu* menu = tray.contextMenu();
    menu->popup(QPoint(200, 200));
    QTest::qWait(100);
    const QPixmap items = menu->grab();
    menu->hide();

    const int margin = 8;
    const int panel = 28;
    const int iconSize = 20;
    const int width = 2 * margin + qMax(items.width(), tip.width());
    QPixmap canvas(width, panel + 3 * margin + tip.height() + items.height());
    canvas.fill(QColor(QStringLiteral("#eef0f2")));
    QPainter painter(&canvas);
    const auto left = [&](int itemWidth) {
        return QApplication::isRightToLeft() ? margin : width - margin - itemWidth;
    };
    painter.fillRect(0, 0, width, panel, QColor(QStringLiteral("#2d2f33")));
    painter.fillRect(left(iconSize) - 4, 2, iconSize + 8, panel - 4, QColor(QStringLiteral("#4a4d52")));
    painter.drawPixmap(left(iconSize), (panel - iconSize) / 2, QIcon(tray.iconPath()).pixmap(iconSize, iconSize));
    painter.drawPixmap(left(tip.width()), panel + margin, tip);
    painter.drawPixmap(left(items.width()), panel + 2 * margin + tip.height(), items);
    return canvas;
}

// The looks of the page that follow its state, set directly as the engine would make them.
bool lookShots(const ServerInfo& server, const QDir& dir)
{
    ScreenshotHost host;
    ConnectWindow page(&host);
    page.setFixedSize(340, 470);
    page.show();
    bool ok = save(page, dir, QStringLiteral("connect-no-location.png"));

    page.setServers({server});
    page.onServerChanged(ServerIdentif(server.user, server.name));
    // The notice as it looks a few days before the expiry.
    page.findChild<QLabel*>("lbSubscribtionInfo")->setText(QStringLiteral("VPN subscription expires: 28.11.2026"));
    for (const char* name : {"lbSubscribtionInfo", "lbSubscribtionAdditionalInfo", "btRenew"})
        page.findChild<QWidget*>(name)->show();
    ok = save(page, dir, QStringLiteral("connect-idle.png")) && ok;

    page.setUiState(ConnectWindow::Connecting);
    ok = save(page, dir, QStringLiteral("connect-connecting.png")) && ok;

    page.setUiState(ConnectWindow::Connected);
    page.findChild<QLabel*>("lbRates")->setText(
        QStringLiteral("\u2193 %1    \u2191 %2")
            .arg(ConnectWindow::formatRate(1.4 * 1024 * 1024), ConnectWindow::formatRate(86 * 1024)));
    return save(page, dir, QStringLiteral("connect-connected.png")) && ok;
}

// The page made blocked as the program makes it: the kill switch is on and the helper daemon (a fake on
// loopback) confirms the rules for no connection; then the page and the tray in each language.
bool blockedShots(const ServerInfo& server, const QDir& dir)
{
    FakeHelperDaemon daemon;
    if (!daemon.start())
        return false;
    LocalSettings::instance()->setValue(Keys::OvpnProtocol, QStringLiteral("udp"));
    LocalSettings::instance()->setValue(Keys::KillConnect, true);
    ScreenshotHost host;
    ConnectWindow page(&host);
    page.setFixedSize(340, 470);
    page.setServers({server});
    page.onServerChanged(ServerIdentif(server.user, server.name));
    page.show();
    page.loadSettings();
    if (!QTest::qWaitFor([&page] { return page.isBlocking(); }, 5000)) {
        QTextStream(stderr) << "the kill switch's rules were not confirmed\n";
        return false;
    }
    bool ok = true;
    for (const QString& code : {QStringLiteral("en"), QStringLiteral("ar")}) {
        // As the settings page switches the language; the main window passes it on to the tray.
        QTranslator translator;
        if (!translator.load(QStringLiteral(":/translations/TavrinApp_%1").arg(code)))
            return false;
        QCoreApplication::installTranslator(&translator);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::LanguageChange);
        host.tray.retranslate();
        ok = save(page, dir, QStringLiteral("connect-blocked-%1.png").arg(code)) && ok;
        ok = save(trayPicture(host.tray), dir, QStringLiteral("tray-blocked-%1.png").arg(code)) && ok;
        QCoreApplication::removeTranslator(&translator);
    }
    return ok;
}

} // namespace

int main(int argc, char* argv[])
{
    // Own settings, no service to reach and, until the blocked look, no daemon: nothing here leaves the machine.
    QTemporaryDir root;
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(root.path()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(root.path()));
    qputenv("TAVRIN_API_URL", "https://127.0.0.1:1");
    qputenv("TAVRIN_HELPER_PORT", "1");
    QApplication app(argc, argv);
    app.setOrganizationName(QStringLiteral("QOLV"));
    app.setApplicationName(QStringLiteral("Tavrin"));
    app.setStyleSheet(WidgetStyle::sheet());
    const QDir dir(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("screenshots"));
    if (!dir.mkpath(QStringLiteral(".")))
        return 1;

    ServerInfo server;
    server.name = QStringLiteral("Frankfurt");
    server.flag = QStringLiteral("de");
    server.ip = QStringLiteral("203.0.113.10");
    server.user = QStringLiteral("vpn123");
    server.tcpPorts = QStringList {QStringLiteral("443")};
    server.udpPorts = QStringList {QStringLiteral("1194")};
    server.type = ServerInfo::Standart;
    server.protocol = OpenVpnUdp;

    bool ok = lookShots(server, dir);
    ok = blockedShots(server, dir) && ok;
    return ok ? 0 : 1;
}

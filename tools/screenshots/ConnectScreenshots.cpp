// Renders the connect page in its idle, connecting and connected looks into PNG files, so that a
// person can look at them (scripts/screenshots connect runs this under Xvfb).
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTextStream>

#include "ConnectHost.h"
#include "ConnectWindow.h"
#include "LocalSettings.h"
#include "WidgetStyle.h"

namespace {

class ScreenshotHost : public ConnectHost
{
public:
    QByteArray getConfigOvpnByServer(QString) override { return {}; }
    QByteArray getCertifOvpnByUser(QString) override { return {}; }
    QByteArray getKeyOvpnByUser(QString) override { return {}; }
    void onBack() override { }
    void onShow() override { }
    void setTrayStatusConnected(bool) override { }
    void setTrayStatusDisconnected(bool) override { }
    void setTrayStatusConnecting() override { }
    void setTrayStatusReestablishing() override { }
    void setTrayActiveServer(QString&) override { }
    void setTrayBlocked(bool) override { }
};

bool save(QWidget& page, const QDir& dir, const QString& name)
{
    QApplication::processEvents();
    const QString path = dir.filePath(name);
    if (!page.grab().save(path)) {
        QTextStream(stderr) << "cannot write " << path << "\n";
        return false;
    }
    QTextStream(stdout) << path << "\n";
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    // Own settings, and no daemon or service to reach: nothing here leaves the process.
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
    server.type = ServerInfo::Standart;
    server.protocol = OpenVpnUdp;

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
    ok = save(page, dir, QStringLiteral("connect-connected.png")) && ok;
    return ok ? 0 : 1;
}

#include "MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDebug>
#include <QGuiApplication>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include "AccountWindow.h"
#include "ConnectWindow.h"
#include "Constants.h"
#include "CustomMessageBox.h"
#include "Keys.h"
#include "LocalSettings.h"
#include "LoginWindow.h"
#include "ProgressDlg.h"
#include "ReachabilityQt.h"
#include "SelectionAccountWindow.h"
#include "ServerListWindow.h"
#include "ServiceUrls.h"
#include "SettingsWindow.h"
#include "SoftwareUpdater.h"
#include "SubscriptionPurchaseWindow.h"
#include "SystemTray.h"

bool needExit = false;

int MainWindow::serverListRetryMs = 8000;

namespace {
QVariant setting(const QString& key)
{
    return LocalSettings::instance()->value(key);
}

void setSetting(const QString& key, const QVariant& value)
{
    LocalSettings::instance()->setValue(key, value);
}

// Whether a page is the one up, by its own flag: during a cached start the window itself is still hidden.
bool isShown(const QWidget* page)
{
    return page && !page->isHidden();
}
} // namespace

MainWindow::MainWindow(QWidget* parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("MainWindowClass"));
    setStyleSheet(QStringLiteral("QMainWindow#MainWindowClass {\nbackground:transparent;\n}"));
    auto* central = new QWidget(this);
    central->setObjectName(QStringLiteral("mainCentralWidget"));
    central->setStyleSheet(QStringLiteral("QWidget#mainCentralWidget { background: white; }"));
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    setCentralWidget(central);

    setWindowIcon(QIcon(QStringLiteral(":/resources/tvn.ico")));
    setWindowTitle(QStringLiteral("Tavrin"));
    setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowMinimizeButtonHint | Qt::CustomizeWindowHint
                   | Qt::WindowCloseButtonHint);

    initTray();
    initPageWidget();

    NetworkManager* network = NetworkManager::instance();
    connect(network, &NetworkManager::serverUpdated, this, &MainWindow::onServerUpdateFinished);
    connect(network, &NetworkManager::auth, this, &MainWindow::onAuthRequest);

    m_reachability = new ReachabilityQt();
    connect(m_reachability, &ReachabilityQt::statusChangeWifi, this, &MainWindow::onStatusChangeWifi);
    m_reachability->installWifiNotifier();
    m_reachability->startNotifier();
    updateSize();
}

MainWindow::~MainWindow()
{
    // The program ends here: an open tunnel is closed and the kill switch lifted before the pages go.
    if (m_connectWindow)
        m_connectWindow->preClose();
    // The pages may still talk to the tray while they go, so they go first.
    m_progressDlg.reset();
    m_selectionWindow.reset();
    m_accountWindow.reset();
    m_purchaseWindow.reset();
    m_serverListWindow.reset();
    m_connectWindow.reset();
    m_settingsWindow.reset();
    m_loginWindow.reset();
    m_updater.reset();
    delete m_reachability;
    m_reachability = nullptr;
    delete m_tray;
    m_tray = nullptr;
}

void MainWindow::initTray()
{
    m_tray = new SystemTray();
    m_tray->init();
    const bool ok = connect(m_tray, &SystemTray::clickShow, this, &MainWindow::onTrayShow)
        && connect(m_tray, &SystemTray::clickConnect, this, &MainWindow::onTrayConnect)
        && connect(m_tray, &SystemTray::clickReconnect, this, &MainWindow::onTrayReconnect)
        && connect(m_tray, &SystemTray::clickDisconnect, this, &MainWindow::onTrayDisconnect)
        && connect(m_tray, &SystemTray::clickExit, this, &MainWindow::onExit);
    if (!ok) {
        qDebug() << "FAIL initTray signal";
        throw QStringLiteral("FAIL initTray signal");
    }
}

void MainWindow::initPageWidget()
{
    QLayout* layout = centralWidget()->layout();
    auto addPage = [layout](QWidget* page, bool visible) {
        layout->addWidget(page);
        page->setVisible(visible);
    };

    m_loginWindow.reset(new LoginWindow(centralWidget()));
    addPage(m_loginWindow.data(), true);
    connect(m_loginWindow.data(), &LoginWindow::signedIn, this, &MainWindow::onSignIn);

    m_settingsWindow.reset(new SettingsWindow(centralWidget()));
    m_settingsWindow->setVersion(Constants::ClientVersion);
    m_settingsWindow->loadLanguage();
    addPage(m_settingsWindow.data(), false);
    connect(m_settingsWindow.data(), &SettingsWindow::back, this, &MainWindow::onBack);
    connect(m_settingsWindow.data(), &SettingsWindow::changed, this, &MainWindow::onSettingsChanged);

    m_connectWindow.reset(new ConnectWindow(this, centralWidget()));
    if (!m_connectWindow->installHelper()) {
        CustomMessageBox::information(
            this, QStringLiteral("Tavrin"), tr("Failed to install helper for program. Please contact support."));
        needExit = true;
        QTimer::singleShot(1, qApp, &QCoreApplication::quit);
    }
    addPage(m_connectWindow.data(), false);
    connect(m_connectWindow.data(), &ConnectWindow::serverList, this, &MainWindow::onServerList);
    connect(m_connectWindow.data(), &ConnectWindow::settings, this, &MainWindow::onSettings);
    connect(m_connectWindow.data(), &ConnectWindow::account, this, &MainWindow::onAccount);
    connect(m_connectWindow.data(), &ConnectWindow::connected, this, &MainWindow::onConnected);

    m_serverListWindow.reset(new ServerListWindow(centralWidget()));
    addPage(m_serverListWindow.data(), false);
    connect(m_serverListWindow.data(), &ServerListWindow::back, this, &MainWindow::onBack);
    connect(m_serverListWindow.data(), &ServerListWindow::serverUpdate, this, &MainWindow::onServerListUpdateRequest);
    connect(m_serverListWindow.data(), &ServerListWindow::serverSelected, this, &MainWindow::onChangeServer);

    m_purchaseWindow.reset(new SubscriptionPurchaseWindow(centralWidget()));
    addPage(m_purchaseWindow.data(), false);
    connect(m_purchaseWindow.data(), &SubscriptionPurchaseWindow::returnToSignUp, this, &MainWindow::onReturnToSignUp);

    m_accountWindow.reset(new AccountWindow(centralWidget()));
    addPage(m_accountWindow.data(), false);
    connect(m_accountWindow.data(), &AccountWindow::back, this, &MainWindow::onBack);
    connect(m_accountWindow.data(), &AccountWindow::returnToSignUp, this, &MainWindow::onReturnToSignUp);
    connect(m_accountWindow.data(), &AccountWindow::accountChanged, this, &MainWindow::onSubscriptionChange);

    m_selectionWindow.reset(new SelectionAccountWindow(centralWidget()));
    addPage(m_selectionWindow.data(), false);
    connect(m_selectionWindow.data(), &SelectionAccountWindow::continueAuth, this, &MainWindow::onSubscriptionSelected);
}

void MainWindow::updateSize()
{
    adjustSize();
    setFixedSize(FixedWidth, FixedHeight);
}

QString MainWindow::siteHostName()
{
    const QString host = QUrl(ServiceUrls::site()).host();
    return host.isEmpty() ? QStringLiteral("velmora.com") : host;
}

void MainWindow::checkAutologin()
{
    const bool remember = setting(Keys::RememberUser).toBool();
    QString login;
    QString password;
    if (remember) {
        login = setting(Keys::Login).toString();
        password = setting(Keys::Passwd).toString();
    }
    if (remember && !login.isEmpty() && !password.isEmpty()) {
        m_autoLoginPending = true;
        m_loginWindow->hide();
        m_connectWindow->show();
        m_connectWindow->setServers(NetworkManager::instance()->servers());
        doSignIn(login, password);
    } else {
        m_loginWindow->show();
        m_settingsWindow->loadDefaults();
        m_tray->setEnableUserActions(false);
        show();
    }
    updateSize();
}

void MainWindow::onSignIn(QString login, QString password)
{
    // A sign-in by hand starts from the default settings, whoever used the program before.
    LocalSettings::instance()->createDefaultSettings();
    doSignIn(login, password);
}

void MainWindow::doSignIn(QString login, QString password)
{
    setSetting(Keys::Login, login);
    setSetting(Keys::Passwd, password);
    m_liteAccount = LocalSettings::instance()->isLiteVersion();
    m_tray->setEnableUserActions(false);
    m_connectWindow->setAcountData(login, password);
    m_connectWindow->loadSettings();
    NetworkManager::instance()->authRequest(login, password);
    updateSize();
}

void MainWindow::onAuthRequest(NetworkManager::ApiError errorCode, QString errorString)
{
    qDebug() << "Auth Request finished [code:" << errorCode << "error: " << errorString << "]";
    m_tray->setStatusDisconnected(false);
    m_loginWindow->setEnabled(true);
    m_loginWindow->restoreCursor();

    switch (errorCode) {
    case NetworkManager::Success:
    case NetworkManager::LiteAccount: {
        const bool lite = errorCode == NetworkManager::LiteAccount;
        m_liteAccount = lite;
        LocalSettings::instance()->setIsLiteVersion(lite);
        if (lite)
            setSetting(Keys::KillConnect, false);
        if (isShown(m_purchaseWindow.data()))
            m_purchaseWindow->hide();

        const bool remember = setting(Keys::RememberUser).toBool();
        const QStringList users = NetworkManager::instance()->cacheUsers();
        if (users.size() >= 2 && !remember) {
            if (isShown(m_loginWindow.data())) {
                m_loginWindow->hide();
                m_selectionWindow->setUsers(users);
                m_selectionWindow->show();
            }
            break;
        }
        if (users.size() == 1 && !remember) {
            setSetting(Keys::VpnLogin, users.first());
        } else {
            const QString vpnLogin = setting(Keys::VpnLogin).toString();
            if (vpnLogin.isEmpty() || !users.contains(vpnLogin, Qt::CaseSensitive))
                setSetting(Keys::VpnLogin, users.isEmpty() ? QString() : users.first());
        }
        authSuccess();
        break;
    }
    case NetworkManager::BadVersion:
        badVersionDlg();
        break;
    case NetworkManager::WrongLogin:
        CustomMessageBox::critical(this, QStringLiteral("Tavrin"), tr("Wrong Login/Password."));
        break;
    case NetworkManager::NoSubscription:
        if (isShown(m_loginWindow.data()))
            m_loginWindow->hide();
        m_purchaseWindow->show();
        break;
    default:
        m_liteAccount = LocalSettings::instance()->isLiteVersion();
        if (m_autoLoginPending) {
            // Started from the cache while the service is out of reach: carry on with what is stored.
            scheduleCheckUpdate();
            m_autoLoginPending = false;
            m_connectWindow->setServers(NetworkManager::instance()->servers());
            m_connectWindow->autoConnect();
            break;
        }
        m_connectWindow->hide();
        m_settingsWindow->hide();
        m_serverListWindow->hide();
        m_loginWindow->show();
        if (errorCode == NetworkManager::NetworkFailure) {
            m_loginWindow->setCursor(Qt::WaitCursor);
            m_loginWindow->setEnabled(false);
            const bool internet = NetworkManager::instance()->checkInternet();
            m_loginWindow->setEnabled(true);
            m_loginWindow->restoreCursor();
            CustomMessageBox::critical(this,
                                       QStringLiteral("Tavrin"),
                                       internet ? tr("Application has no access to Velmora")
                                                : tr("Application has no access to network."));
        } else if (errorCode == NetworkManager::UnverifiedService) {
            CustomMessageBox::critical(this, QStringLiteral("Tavrin"), CustomMessageBox::unverifiedServiceText());
        }
        break;
    }
    updateSize();
}

void MainWindow::authSuccess()
{
    setSetting(Keys::RememberUser, true);
    if (isShown(m_loginWindow.data())) {
        m_loginWindow->hide();
        m_connectWindow->show();
    }
    if (isShown(m_selectionWindow.data())) {
        m_selectionWindow->hide();
        m_connectWindow->show();
    }
    NetworkManager* network = NetworkManager::instance();
    if (isShown(m_serverListWindow.data()))
        m_serverListWindow->setServers(network->servers(), m_connectWindow->curentFilterId(), true);
    m_connectWindow->setServers(network->servers());
    m_connectWindow->autoConnect();
    scheduleCheckUpdate();
}

void MainWindow::onSubscriptionSelected(const QString& vpnLogin)
{
    setSetting(Keys::VpnLogin, vpnLogin);
    authSuccess();
    updateSize();
}

void MainWindow::onServerUpdateFinished(NetworkManager::ApiError errorCode, QString errorStr)
{
    qDebug() << "onServerUpdateFinished success=" << errorCode << "error=" << errorStr;
    if (isShown(m_loginWindow.data()) || m_connectWindow->isConnected())
        return;

    if (errorCode == NetworkManager::Success) {
        const QVector<ServerInfo> servers = NetworkManager::instance()->servers();
        m_connectWindow->setServers(servers);
        if (isShown(m_serverListWindow.data())) {
            m_serverListWindow->setServers(servers, -1, true);
        } else if (isShown(m_connectWindow.data())) {
            show();
            m_connectWindow->autoConnect();
            m_connectWindow->show();
            updateSize();
        }
    } else if (errorCode == NetworkManager::BadVersion) {
        badVersionDlg();
    } else {
        m_serverListTimer.reset(new QTimer);
        m_serverListTimer->setSingleShot(true);
        m_serverListTimer->setInterval(serverListRetryMs);
        connect(m_serverListTimer.data(), &QTimer::timeout, this, &MainWindow::onServerListUpdateRequest);
        m_serverListTimer->start();
    }
}

void MainWindow::onServerListUpdateRequest()
{
    NetworkManager::instance()->serverListRequest();
    NetworkManager::instance()->pingDoubleServerRequest();
}

void MainWindow::onBack()
{
    m_settingsWindow->hide();
    m_serverListWindow->hide();
    m_accountWindow->hide();
    m_connectWindow->loadSettings();
    m_connectWindow->show();
    updateSize();
}

void MainWindow::onStatus()
{
    m_settingsWindow->hide();
    m_connectWindow->show();
    updateSize();
}

void MainWindow::onAccount()
{
    m_connectWindow->saveSettings();
    m_connectWindow->hide();
    m_accountWindow->show();
    updateSize();
}

void MainWindow::onServerList(int protocol)
{
    onServerListUpdateRequest();
    m_connectWindow->saveSettings();
    m_connectWindow->hide();
    m_settingsWindow->hide();
    m_serverListWindow->setServers(NetworkManager::instance()->servers(), protocol, false);
    m_serverListWindow->show();
    updateSize();
}

void MainWindow::onChangeServer(const ServerIdentif& id)
{
    qDebug() << "MainWindow::onChangeServer" << id.first << id.second;
    m_serverListWindow->hide();
    m_settingsWindow->hide();
    m_connectWindow->show();
    m_connectWindow->onServerChanged(id);
    // Choosing a location is the request to use it.
    m_connectWindow->onClickConnect();
    updateSize();
}

void MainWindow::onSettings()
{
    qDebug().noquote() << "Show settings [mode: " << (m_liteAccount ? "Lite" : "Full") << "]";
    QList<PROTOCOL_TYPE> protocols;
    const QMap<ServerIdentif, ServerInfo> servers = m_connectWindow->getServers();
    for (const ServerInfo& server : servers) {
        for (PROTOCOL_TYPE id : {OpenVpnTcp, OpenVpnUdp, Stealth}) {
            if (offersProtocol(server, id) && !protocols.contains(id))
                protocols << id;
        }
    }
    m_connectWindow->saveSettings();
    m_connectWindow->hide();
    m_settingsWindow->loadSettings(protocols);
    m_settingsWindow->showWithMode(m_liteAccount ? SettingsWindow::Lite : SettingsWindow::Full);
    updateSize();
}

void MainWindow::onReturnToSignUp()
{
    m_returningToSignUp = true;
    const QString text = m_connectWindow->isConnected() ? tr("VPN connection is active. \nDisconnect and logout?")
                                                        : tr("Do you want to logout?");
    if (CustomMessageBox::question(this, tr("Logout"), text, QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        == QMessageBox::No)
        return;

    LocalSettings::instance()->createDefaultSettings();
    m_serverListTimer.reset();
    m_autoLoginPending = false;
    m_liteAccount = true;
    m_tray->setEnableUserActions(false);
    m_connectWindow->logOut();
    m_connectWindow->hide();
    m_settingsWindow->hide();
    m_accountWindow->hide();
    m_selectionWindow->hide();
    m_purchaseWindow->hide();
    m_loginWindow->clear();
    m_loginWindow->show();
    NetworkManager::instance()->clearCache();
    updateSize();
}

void MainWindow::onSubscriptionChange()
{
    if (m_connectWindow->isConnected()) {
        if (CustomMessageBox::question(this,
                                       tr("Logout"),
                                       tr("VPN connection is active. \nDisconnect and logout?"),
                                       QMessageBox::Yes | QMessageBox::No,
                                       QMessageBox::No)
            == QMessageBox::No)
            return;
        m_connectWindow->onClickConnect();
    }
    m_connectWindow->logOut();
    m_connectWindow->hide();
    m_settingsWindow->hide();
    m_loginWindow->hide();
    m_accountWindow->hide();
    m_selectionWindow->setUsers(NetworkManager::instance()->cacheUsers());
    m_selectionWindow->show();
    updateSize();
}

void MainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::WindowStateChange) {
        if (isMinimized()) {
            m_tray->icon()->setVisible(true);
            QTimer::singleShot(0, this, &QWidget::hide);
        } else {
            QTimer::singleShot(0, this, &QWidget::show);
        }
        event->ignore();
    } else if (event->type() == QEvent::ActivationChange) {
        // Back from the browser on the purchase page: a subscription may have been bought meanwhile.
        if (isActiveWindow() && isShown(m_purchaseWindow.data()) && !m_returningToSignUp) {
            NetworkManager::instance()->authRequest(setting(Keys::Login).toString(), setting(Keys::Passwd).toString());
        }
        m_returningToSignUp = false;
    } else if (event->type() == QEvent::LanguageChange) {
        setWindowTitle(QString());
        if (m_tray)
            m_tray->retranslate();
    }
    QMainWindow::changeEvent(event);
}

void MainWindow::onShow()
{
    qDebug() << "MainWindow::onShow";
    show();
    setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
    activateWindow();
    QRect rect = geometry();
    centerScreen(rect);
    setGeometry(rect);
    raise();
}

void MainWindow::onHide()
{
    qDebug() << "MainWindow::onHide";
    m_tray->icon()->setVisible(true);
    hide();
}

void MainWindow::onWakeUp()
{
    activateWindow();
}

void MainWindow::onConnected() { }

void MainWindow::onSettingsChanged() { }

void MainWindow::centerScreen(QRect& rect)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    if (screens.isEmpty() || !screens.first()) {
        qDebug() << "[FAIL] centerScreen: screen pointer is null";
        return;
    }
    const QRect screen = screens.first()->geometry();
    const int w = rect.width();
    const int h = rect.height();
    rect.setLeft(screen.width() / 2 - w / 2);
    rect.setTop(screen.height() / 2 - h / 2);
}

void MainWindow::onTrayShow()
{
    onShow();
}

void MainWindow::onTrayConnect()
{
    m_connectWindow->onClickConnect();
}

void MainWindow::onTrayDisconnect()
{
    m_connectWindow->onClickConnect();
}

void MainWindow::onTrayReconnect()
{
    m_connectWindow->onClickConnect();
    m_connectWindow->onClickConnect();
    m_tray->setStatusConnecting();
}

void MainWindow::onStatusChangeWifi(bool connected, bool unsecured, QString ssid)
{
    qDebug().noquote() << "onStatusChangeWifi: " << (connected ? "true" : "false") << (unsecured ? "true" : "false")
                       << ssid;
    if (!isShown(m_loginWindow.data()) && connected)
        m_connectWindow->onWirelessConnectionChanged(true, ssid);
}

QByteArray MainWindow::getConfigOvpnByServer(QString server)
{
    return NetworkManager::instance()->getConfigOVPNbyServer(server);
}

QByteArray MainWindow::getCertifOvpnByUser(QString user)
{
    return NetworkManager::instance()->getCertifOvpnByUser(user);
}

QByteArray MainWindow::getKeyOvpnByUser(QString user)
{
    return NetworkManager::instance()->getKeyOvpnByUser(user);
}

void MainWindow::setTrayStatusConnected(bool notify)
{
    m_trayConnected = true;
    m_tray->setStatusConnected(notify);
}

void MainWindow::setTrayStatusDisconnected(bool notify)
{
    m_trayConnected = false;
    m_tray->setStatusDisconnected(notify);
}

void MainWindow::setTrayStatusConnecting()
{
    m_tray->setStatusConnecting();
}

void MainWindow::setTrayStatusReestablishing()
{
    m_tray->setStatusReestablishing();
}

void MainWindow::setTrayActiveServer(QString& name)
{
    m_tray->setActiveServer(name);
}

void MainWindow::scheduleCheckUpdate()
{
    m_updateTimer.reset(new QTimer);
    m_updateTimer->setSingleShot(true);
    m_updateTimer->setInterval(UpdateCheckDelayMs);
    connect(m_updateTimer.data(), &QTimer::timeout, this, &MainWindow::onCheckSoftwareUpdateScheduled);
    m_updateTimer->start();
}

void MainWindow::onCheckSoftwareUpdateScheduled()
{
    // The timer is the sender: let it finish its signal before it goes.
    if (m_updateTimer) {
        m_updateTimer->stop();
        m_updateTimer.clear();
    }
    m_updater.reset(new SoftwareUpdater, &QObject::deleteLater);
    connect(m_updater.data(), &SoftwareUpdater::newUpdate, this, &MainWindow::onCheckSoftwareUpdateNewVersion);
    connect(m_updater.data(), &SoftwareUpdater::versionError, this, &MainWindow::onCheckSoftwareFailed);
    m_updater->check();
}

void MainWindow::onCheckSoftwareFailed()
{
    scheduleCheckUpdate();
}

void MainWindow::onCheckSoftwareUpdateNewVersion()
{
    onShow();
    if (CustomMessageBox::question(this,
                                   tr("Tavrin Update"),
                                   tr("Available new update. Download it?"),
                                   QMessageBox::Yes | QMessageBox::No,
                                   QMessageBox::Yes)
        == QMessageBox::Yes)
        onConfirmNewUpdate();
}

void MainWindow::onConfirmNewUpdate()
{
    if (!m_updater)
        return;
    m_progressDlg.reset(new ProgressDlg(this), &QObject::deleteLater);
    connect(m_progressDlg.data(), &ProgressDlg::cancel, this, &MainWindow::onCancelDownloadNewUpdate);
    connect(m_updater.data(), &SoftwareUpdater::progressDownload, m_progressDlg.data(), &ProgressDlg::setProgress);
    connect(m_updater.data(), &SoftwareUpdater::downloadFailed, this, &MainWindow::onFailDownloadNewUpdate);
    connect(m_updater.data(), &SoftwareUpdater::installFailed, this, &MainWindow::onFailInstallNewUpdate);
    connect(m_updater.data(), &SoftwareUpdater::downloadComplited, this, &MainWindow::onDownloadNewUpdateComplited);
    m_updater->downloadUpdate();
    m_progressDlg->show();
    m_tray->setEnableUserActions(false);
}

void MainWindow::restoreTrayStatus()
{
    if (m_connectWindow->isConnected())
        m_tray->setStatusConnected(false);
    else
        m_tray->setStatusDisconnected(false);
}

void MainWindow::onCancelDownloadNewUpdate()
{
    restoreTrayStatus();
    if (m_progressDlg) {
        m_progressDlg->hide();
        m_progressDlg.reset();
    }
    if (m_updater)
        m_updater->cancelDownloadUpdate();
}

void MainWindow::onFailDownloadNewUpdate()
{
    const bool unverified = m_updater && m_updater->downloadUnverified();
    restoreTrayStatus();
    onCancelDownloadNewUpdate();
    CustomMessageBox::critical(this,
                               QStringLiteral("Tavrin"),
                               unverified ? CustomMessageBox::unverifiedServiceText()
                                          : tr("Error during downloading update."));
}

void MainWindow::onFailInstallNewUpdate()
{
    restoreTrayStatus();
    onCancelDownloadNewUpdate();
    CustomMessageBox::critical(this, QStringLiteral("Tavrin"), tr("Error during installing update."));
}

void MainWindow::onDownloadNewUpdateComplited(QString updatePathName)
{
    // Refused, the installed version keeps running.
    if (!m_connectWindow->doUpdateClient(updatePathName)) {
        onFailInstallNewUpdate();
        return;
    }
    if (m_progressDlg) {
        m_progressDlg->hide();
        m_progressDlg.reset();
    }
    onExit();
}

void MainWindow::badVersionDlg()
{
    CustomMessageBox::critical(this,
                               QStringLiteral("Tavrin"),
                               tr("Your version is outdated. Please, download new Tavrin app on ") + siteHostName());
    QCoreApplication::quit();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    m_connectWindow->saveSettings();
    if (!m_connectWindow->isConnected()) {
        onExit();
        return;
    }
    show();
    if (CustomMessageBox::question(this,
                                   tr("Exit"),
                                   tr("VPN connection is active. Disconnect and exit?"),
                                   QMessageBox::Yes | QMessageBox::No,
                                   QMessageBox::No)
        == QMessageBox::No) {
        event->ignore();
        return;
    }
    onExit();
    onExit();
}

void MainWindow::onExit()
{
    qDebug() << "onExit";
    needExit = true;
    showNormal();
    activateWindow();
    m_tray->removeNotification();
    if (close())
        QCoreApplication::quit();
    else
        needExit = false;
}

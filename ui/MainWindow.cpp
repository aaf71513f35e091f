#include "MainWindow.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDebug>
#include <QLayout>
#include <QTimer>

#include "AccountSession.h"
#include "AccountWindow.h"
#include "ConnectWindow.h"
#include "Constants.h"
#include "CustomMessageBox.h"
#include "LoginWindow.h"
#include "ReachabilityQt.h"
#include "SelectionAccountWindow.h"
#include "ServerListWindow.h"
#include "SettingsWindow.h"
#include "SubscriptionPurchaseWindow.h"
#include "SystemTray.h"
#include "UpdateOffer.h"

bool needExit = false;

namespace {
// Whether a page is the one up, by its own flag: during a cached start the window itself is still hidden.
bool isShown(const QWidget* page)
{
    return page && !page->isHidden();
}

void hidePages(std::initializer_list<QWidget*> pages)
{
    for (QWidget* page : pages) {
        if (page)
            page->hide();
    }
}
} // namespace

MainWindow::MainWindow(QWidget* parent)
    : TrayWindow(parent)
{
    initTray();
    initPageWidget();
    m_updateOffer = std::make_unique<UpdateOffer>(this, m_tray.get(), m_connectWindow.data());
    m_session = std::make_unique<AccountSession>([this] { return m_connectWindow->isConnected(); });
    connectSession();

    m_reachability = std::make_unique<ReachabilityQt>();
    connect(m_reachability.get(), &ReachabilityQt::statusChangeWifi, this, &MainWindow::onStatusChangeWifi);
    m_reachability->installWifiNotifier();
    m_reachability->startNotifier();
    updateSize();
}

MainWindow::~MainWindow()
{
    // The program ends here: an open tunnel is closed and the kill switch lifted before the pages go.
    if (m_connectWindow)
        m_connectWindow->preClose();
}

void MainWindow::initTray()
{
    m_tray = std::make_unique<SystemTray>();
    m_tray->init();
    SystemTray* tray = m_tray.get();
    connect(tray, &SystemTray::clickShow, this, &MainWindow::onTrayShow);
    connect(tray, &SystemTray::clickConnect, this, &MainWindow::onTrayConnect);
    connect(tray, &SystemTray::clickReconnect, this, &MainWindow::onTrayReconnect);
    connect(tray, &SystemTray::clickDisconnect, this, &MainWindow::onTrayDisconnect);
    connect(tray, &SystemTray::clickExit, this, &MainWindow::onExit);
}

void MainWindow::initPageWidget()
{
    QLayout* layout = centralWidget()->layout();
    auto addPage = [layout](QWidget* page, bool visible) {
        layout->addWidget(page);
        page->setVisible(visible);
    };
    m_loginWindow.makeIn(centralWidget(), [this](LoginWindow* page) {
        connect(page, &LoginWindow::signedIn, this, &MainWindow::onSignIn);
    });

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

    m_serverListWindow.makeIn(centralWidget(), [this](ServerListWindow* page) {
        connect(page, &ServerListWindow::back, this, &MainWindow::onBack);
        connect(page, &ServerListWindow::serverUpdate, this, [this] { m_session->requestServerList(); });
        connect(page, &ServerListWindow::serverSelected, this, &MainWindow::onChangeServer);
    });
    m_purchaseWindow.makeIn(centralWidget(), [this](SubscriptionPurchaseWindow* page) {
        connect(page, &SubscriptionPurchaseWindow::returnToSignUp, this, &MainWindow::onReturnToSignUp);
    });
    m_accountWindow.makeIn(centralWidget(), [this](AccountWindow* page) {
        connect(page, &AccountWindow::back, this, &MainWindow::onBack);
        connect(page, &AccountWindow::returnToSignUp, this, &MainWindow::onReturnToSignUp);
        connect(page, &AccountWindow::accountChanged, this, &MainWindow::onSubscriptionChange);
    });
    m_selectionWindow.makeIn(centralWidget(), [this](SelectionAccountWindow* page) {
        connect(page, &SelectionAccountWindow::continueAuth, this, &MainWindow::onSubscriptionSelected);
    });
}

// What the session decides, shown as pages and messages.
void MainWindow::connectSession()
{
    AccountSession* session = m_session.get();
    connect(session, &AccountSession::resumedFromCache, this, [this](const QVector<ServerInfo>& servers) {
        hidePages({m_loginWindow.made()});
        m_connectWindow->show();
        m_connectWindow->setServers(servers);
    });
    connect(session, &AccountSession::signingIn, this, [this] {
        m_tray->setEnableUserActions(false);
        m_connectWindow->loadSettings();
    });
    connect(session, &AccountSession::signInAnswered, this, [this](bool accepted) {
        m_tray->setStatusDisconnected(false);
        if (LoginWindow* login = m_loginWindow.made()) {
            login->setEnabled(true);
            login->restoreCursor();
        }
        if (accepted)
            hidePages({m_purchaseWindow.made()});
    });
    connect(session, &AccountSession::vpnLoginChoiceNeeded, this, [this](const QStringList& vpnLogins) {
        m_selectionWindow->setUsers(vpnLogins);
        showPage(m_selectionWindow.get(), {m_loginWindow.made()});
    });
    connect(session, &AccountSession::signedIn, this, &MainWindow::onSignedIn);
    connect(session, &AccountSession::continuingOffline, this, [this](const QVector<ServerInfo>& servers) {
        m_connectWindow->setServers(servers);
        m_connectWindow->autoConnect();
    });
    connect(session, &AccountSession::signInRefused, this, [this] {
        CustomMessageBox::critical(this, QStringLiteral("Tavrin"), tr("Wrong Login/Password."));
    });
    connect(session, &AccountSession::subscriptionMissing, this, [this] {
        showPage(m_purchaseWindow.get(), {m_loginWindow.made()});
    });
    connect(session, &AccountSession::signInFailed, this, &MainWindow::onSignInFailed);
    connect(session, &AccountSession::versionRejected, this, &MainWindow::badVersionDlg);
    connect(session, &AccountSession::serverListArrived, this, &MainWindow::onServerListArrived);
    connect(session, &AccountSession::latenciesArrived, this, &MainWindow::showServers);
    connect(session, &AccountSession::signedOut, this, [this] {
        m_tray->setEnableUserActions(false);
        m_connectWindow->logOut();
        hidePages({m_connectWindow.data(),
                   m_settingsWindow.data(),
                   m_accountWindow.made(),
                   m_selectionWindow.made(),
                   m_purchaseWindow.made()});
        m_loginWindow->clear();
        showPage(m_loginWindow.get());
    });
    connect(session, &AccountSession::updateCheckDue, m_updateOffer.get(), &UpdateOffer::check);
    connect(m_updateOffer.get(), &UpdateOffer::checkFailed, session, &AccountSession::retryUpdateCheck);
}

void MainWindow::showPage(QWidget* page, std::initializer_list<QWidget*> hidden)
{
    hidePages(hidden);
    page->show();
    updateSize();
}

void MainWindow::checkAutologin()
{
    if (!m_session->resume()) {
        m_loginWindow->show();
        m_settingsWindow->loadDefaults();
        m_tray->setEnableUserActions(false);
        show();
    }
    updateSize();
}

void MainWindow::onSignIn(QString login, QString password)
{
    m_session->signInByHand(login, password);
    updateSize();
}

void MainWindow::onSubscriptionSelected(const QString& vpnLogin)
{
    m_session->chooseVpnLogin(vpnLogin);
    updateSize();
}

void MainWindow::onSignedIn(const QVector<ServerInfo>& servers)
{
    if (isShown(m_loginWindow.made()) || isShown(m_selectionWindow.made()))
        showPage(m_connectWindow.data(), {m_loginWindow.made(), m_selectionWindow.made()});
    if (isShown(m_serverListWindow.made()))
        m_serverListWindow->setServers(servers, m_connectWindow->curentFilterId(), true);
    m_connectWindow->setServers(servers);
    m_connectWindow->autoConnect();
}

void MainWindow::onSignInFailed(NetworkManager::ApiError error)
{
    showPage(m_loginWindow.get(), {m_connectWindow.data(), m_settingsWindow.data(), m_serverListWindow.made()});
    if (error == NetworkManager::NetworkFailure)
        m_loginWindow->explainNoAnswer();
    else if (error == NetworkManager::UnverifiedService)
        CustomMessageBox::critical(this, QStringLiteral("Tavrin"), CustomMessageBox::unverifiedServiceText());
}

void MainWindow::showServers(const QVector<ServerInfo>& servers)
{
    m_connectWindow->setServers(servers);
    if (isShown(m_serverListWindow.made()))
        m_serverListWindow->setServers(servers, -1, true);
}

void MainWindow::onServerListArrived(const QVector<ServerInfo>& servers)
{
    showServers(servers);
    if (!isShown(m_serverListWindow.made()) && isShown(m_connectWindow.data())) {
        show();
        m_connectWindow->autoConnect();
        showPage(m_connectWindow.data());
    }
}

void MainWindow::onBack()
{
    hidePages({m_settingsWindow.data(), m_serverListWindow.made(), m_accountWindow.made()});
    m_connectWindow->loadSettings();
    showPage(m_connectWindow.data());
}

void MainWindow::onStatus()
{
    showPage(m_connectWindow.data(), {m_settingsWindow.data()});
}

void MainWindow::onAccount()
{
    m_connectWindow->saveSettings();
    showPage(m_accountWindow.get(), {m_connectWindow.data()});
}

void MainWindow::onServerList(int protocol)
{
    m_session->requestServerList();
    m_connectWindow->saveSettings();
    hidePages({m_connectWindow.data(), m_settingsWindow.data()});
    m_serverListWindow->setServers(NetworkManager::instance()->servers(), protocol, false);
    showPage(m_serverListWindow.get());
}

void MainWindow::onChangeServer(const ServerIdentif& id)
{
    qDebug() << "MainWindow::onChangeServer" << id.first << id.second;
    showPage(m_connectWindow.data(), {m_serverListWindow.made(), m_settingsWindow.data()});
    m_connectWindow->onServerChanged(id);
    // Choosing a location is the request to use it.
    m_connectWindow->onClickConnect();
}

void MainWindow::onSettings()
{
    const bool lite = m_session->isLiteAccount();
    qDebug().noquote() << "Show settings [mode: " << (lite ? "Lite" : "Full") << "]";
    m_connectWindow->saveSettings();
    m_connectWindow->hide();
    m_settingsWindow->loadSettings(offeredProtocols(m_connectWindow->getServers()));
    m_settingsWindow->showWithMode(lite ? SettingsWindow::Lite : SettingsWindow::Full);
    updateSize();
}

bool MainWindow::confirm(const QString& title, const QString& text)
{
    return CustomMessageBox::question(this, title, text, QMessageBox::Yes | QMessageBox::No, QMessageBox::No)
        != QMessageBox::No;
}

void MainWindow::onReturnToSignUp()
{
    m_returningToSignUp = true;
    if (confirm(tr("Logout"),
                m_connectWindow->isConnected() ? tr("VPN connection is active. \nDisconnect and logout?")
                                               : tr("Do you want to logout?")))
        m_session->signOut();
}

void MainWindow::onSubscriptionChange()
{
    if (m_connectWindow->isConnected()) {
        if (!confirm(tr("Change VPN login"), tr("VPN connection is active. \nDisconnect and change the VPN login?")))
            return;
        m_connectWindow->onClickConnect();
    }
    m_connectWindow->logOut();
    hidePages({m_connectWindow.data(), m_settingsWindow.data(), m_loginWindow.made(), m_accountWindow.made()});
    m_selectionWindow->setUsers(NetworkManager::instance()->cacheUsers());
    showPage(m_selectionWindow.get());
}

void MainWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::ActivationChange) {
        // Back from the browser on the purchase page: a subscription may have been bought meanwhile.
        if (isActiveWindow() && isShown(m_purchaseWindow.made()) && !m_returningToSignUp)
            m_session->signInAgain();
        m_returningToSignUp = false;
    }
    TrayWindow::changeEvent(event);
}

void MainWindow::onShow()
{
    qDebug() << "MainWindow::onShow";
    showCentred();
}

void MainWindow::onHide()
{
    qDebug() << "MainWindow::onHide";
    hideToTray();
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
    if (!isShown(m_loginWindow.made()) && connected)
        m_connectWindow->onWirelessConnectionChanged(true, ssid);
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
    if (!confirm(tr("Exit"), tr("VPN connection is active. Disconnect and exit?"))) {
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

#pragma once

#include <QSharedPointer>
#include <QString>

#include <initializer_list>
#include <memory>

#include "ConnectHost.h"
#include "ConnectWindow.h"
#include "LazyPage.h"
#include "NetworkManager.h"
#include "ServerIdentif.h"
#include "ServiceUrls.h"
#include "TrayWindow.h"

class AccountSession;
class AccountWindow;
class LoginWindow;
class ReachabilityQt;
class SelectionAccountWindow;
class ServerListWindow;
class SettingsWindow;
class SubscriptionPurchaseWindow;
class UpdateOffer;

// The program's only top-level window: owns every page and shows one at a time, turns what its AccountSession
// decides into pages and messages, holds the update offer and relays the tray's commands.
class MainWindow : public TrayWindow, public ConnectHost
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    void checkAutologin();
    void badVersionDlg();
    void initTray();
    void initPageWidget();

    // Host name shown in the outdated-version message: the web site's host.
    static QString siteHostName() { return ServiceUrls::siteHost(); }

    QByteArray getConfigOvpnByServer(QString server) override
    {
        return NetworkManager::instance()->getConfigOVPNbyServer(server);
    }
    QByteArray getCertifOvpnByUser(QString user) override
    {
        return NetworkManager::instance()->getCertifOvpnByUser(user);
    }
    QByteArray getKeyOvpnByUser(QString user) override { return NetworkManager::instance()->getKeyOvpnByUser(user); }
    void setTrayStatusConnected(bool notify) override { m_tray->setStatusConnected(notify); }
    void setTrayStatusDisconnected(bool notify) override { m_tray->setStatusDisconnected(notify); }
    void setTrayStatusConnecting() override { m_tray->setStatusConnecting(); }
    void setTrayStatusReestablishing() override { m_tray->setStatusReestablishing(); }
    void setTrayActiveServer(QString& name) override { m_tray->setActiveServer(name); }
    void setTrayBlocked(bool blocked) override { m_tray->setBlocked(blocked); }

    // For tests: the pages and helpers this window owns.
    LoginWindow* loginPage() const { return m_loginWindow.get(); }
    ConnectWindow* connectPage() const { return m_connectWindow.data(); }
    SettingsWindow* settingsPage() const { return m_settingsWindow.data(); }
    ServerListWindow* serverListPage() const { return m_serverListWindow.get(); }
    SubscriptionPurchaseWindow* purchasePage() const { return m_purchaseWindow.get(); }
    AccountWindow* accountPage() const { return m_accountWindow.get(); }
    SelectionAccountWindow* selectionPage() const { return m_selectionWindow.get(); }
    UpdateOffer* updateOffer() const { return m_updateOffer.get(); }
    AccountSession* session() const { return m_session.get(); }

public slots:
    void onSettings();
    void onAccount();
    void onShow() override;
    void onHide();
    void onExit();
    void onStatus();
    void onConnected() { }
    void onWakeUp() { activateWindow(); }
    void onBack() override;
    void onSignIn(QString login, QString password);
    void onReturnToSignUp();
    void onServerList(int protocol);
    void onChangeServer(const ServerIdentif& id);
    void onTrayConnect() { m_connectWindow->onClickConnect(); }
    void onTrayReconnect();
    void onTrayDisconnect() { m_connectWindow->onClickConnect(); }
    void onTrayShow() { onShow(); }
    void onSettingsChanged() { }
    void onStatusChangeWifi(bool connected, bool unsecured, QString ssid);
    // The pages that show the servers take them; no page is opened.
    void showServers(const QVector<ServerInfo>& servers);
    void onSubscriptionSelected(const QString& vpnLogin);
    void onSubscriptionChange();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void connectSession();
    // Hides the pages given, shows `page` and keeps the window's size.
    void showPage(QWidget* page, std::initializer_list<QWidget*> hidden = {});
    // A question with Yes and No, No the default: whether the answer was other than No.
    bool confirm(const QString& title, const QString& text);
    void onSignedIn(const QVector<ServerInfo>& servers);
    void onSignInFailed(NetworkManager::ApiError error);
    void onServerListArrived(const QVector<ServerInfo>& servers);

    // Members go in reverse order (the tray, held by the base, goes after all of them).
    std::unique_ptr<ReachabilityQt> m_reachability;
    LazyPage<LoginWindow> m_loginWindow;
    QSharedPointer<SettingsWindow> m_settingsWindow;
    QSharedPointer<ConnectWindow> m_connectWindow;
    LazyPage<ServerListWindow> m_serverListWindow;
    LazyPage<SubscriptionPurchaseWindow> m_purchaseWindow;
    LazyPage<AccountWindow> m_accountWindow;
    LazyPage<SelectionAccountWindow> m_selectionWindow;
    std::unique_ptr<UpdateOffer> m_updateOffer;
    std::unique_ptr<AccountSession> m_session;
    bool m_returningToSignUp = false;
};

// Set when the program is about to quit on purpose.
extern bool needExit;

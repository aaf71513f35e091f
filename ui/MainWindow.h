#pragma once

#include <QMainWindow>
#include <QSharedPointer>
#include <QString>

#include "ConnectHost.h"
#include "NetworkManager.h"
#include "ServerIdentif.h"

class AccountWindow;
class ConnectWindow;
class LoginWindow;
class ProgressDlg;
class QTimer;
class ReachabilityQt;
class SelectionAccountWindow;
class ServerListWindow;
class SettingsWindow;
class SoftwareUpdater;
class SubscriptionPurchaseWindow;
class SystemTray;

// The program's only top-level window: owns every page, shows one at a time, drives sign-in and
// sign-out, retries the server list, schedules update checks and relays the tray's commands.
class MainWindow : public QMainWindow, public ConnectHost
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    static constexpr int FixedWidth = 340;
    static constexpr int FixedHeight = 500;
    static constexpr int UpdateCheckDelayMs = 5000;

    // Pause before the server list is asked again after a failed answer. Tests shorten it.
    static int serverListRetryMs;

    void checkAutologin();
    void doSignIn(QString login, QString password);
    void authSuccess();
    void badVersionDlg();
    void scheduleCheckUpdate();
    void initTray();
    void initPageWidget();
    void updateSize();
    void centerScreen(QRect& rect);

    // Host name shown in the outdated-version message: the web site's host.
    static QString siteHostName();

    QByteArray getConfigOvpnByServer(QString server) override;
    QByteArray getCertifOvpnByUser(QString user) override;
    QByteArray getKeyOvpnByUser(QString user) override;
    void setTrayStatusConnected(bool notify) override;
    void setTrayStatusDisconnected(bool notify) override;
    void setTrayStatusConnecting() override;
    void setTrayStatusReestablishing() override;
    void setTrayActiveServer(QString& name) override;

    // For tests: the pages and helpers this window owns.
    SystemTray* tray() const { return m_tray; }
    LoginWindow* loginPage() const { return m_loginWindow.data(); }
    ConnectWindow* connectPage() const { return m_connectWindow.data(); }
    SettingsWindow* settingsPage() const { return m_settingsWindow.data(); }
    ServerListWindow* serverListPage() const { return m_serverListWindow.data(); }
    SubscriptionPurchaseWindow* purchasePage() const { return m_purchaseWindow.data(); }
    AccountWindow* accountPage() const { return m_accountWindow.data(); }
    SelectionAccountWindow* selectionPage() const { return m_selectionWindow.data(); }
    ProgressDlg* progressDialog() const { return m_progressDlg.data(); }
    SoftwareUpdater* updater() const { return m_updater.data(); }
    bool isAutoLoginPending() const { return m_autoLoginPending; }
    bool hasServerListRetry() const { return !m_serverListTimer.isNull(); }

public slots:
    void onSettings();
    void onAccount();
    void onShow() override;
    void onHide();
    void onExit();
    void onStatus();
    void onConnected();
    void onWakeUp();
    void onBack() override;
    void onSignIn(QString login, QString password);
    void onReturnToSignUp();
    void onServerList(int protocol);
    void onChangeServer(const ServerIdentif& id);
    void onServerUpdateFinished(NetworkManager::ApiError errorCode, QString errorStr);
    void onServerListUpdateRequest();
    void onAuthRequest(NetworkManager::ApiError errorCode, QString errorString);
    void onTrayConnect();
    void onTrayReconnect();
    void onTrayDisconnect();
    void onTrayShow();
    void onSettingsChanged();
    void onCheckSoftwareUpdateScheduled();
    void onCheckSoftwareUpdateNewVersion();
    void onCheckSoftwareFailed();
    void onConfirmNewUpdate();
    void onCancelDownloadNewUpdate();
    void onFailDownloadNewUpdate();
    void onFailInstallNewUpdate();
    void onDownloadNewUpdateComplited(QString updatePathName);
    void onStatusChangeWifi(bool connected, bool unsecured, QString ssid);
    void onSubscriptionSelected(const QString& vpnLogin);
    void onSubscriptionChange();

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void restoreTrayStatus();

    SystemTray* m_tray = nullptr;
    QSharedPointer<LoginWindow> m_loginWindow;
    QSharedPointer<ConnectWindow> m_connectWindow;
    QSharedPointer<SettingsWindow> m_settingsWindow;
    QSharedPointer<ServerListWindow> m_serverListWindow;
    QSharedPointer<SubscriptionPurchaseWindow> m_purchaseWindow;
    QSharedPointer<AccountWindow> m_accountWindow;
    QSharedPointer<SelectionAccountWindow> m_selectionWindow;
    QSharedPointer<SoftwareUpdater> m_updater;
    QSharedPointer<ProgressDlg> m_progressDlg;
    ReachabilityQt* m_reachability = nullptr;
    bool m_trayConnected = false;
    bool m_autoLoginPending = false;
    bool m_liteAccount = true;
    QSharedPointer<QTimer> m_serverListTimer;
    QSharedPointer<QTimer> m_updateTimer;
    bool m_returningToSignUp = false;
};

// Set when the program is about to quit on purpose.
extern bool needExit;

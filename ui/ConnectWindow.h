#pragma once

#include "ConnectWindowForm.h"
#include "ConnectionController.h"
#include "ServerIdentif.h"
#include "ServerInfo.h"

#include <QMap>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <memory>

struct ConfigServer;
class ConnectHost;
class RotateWidget;
class ShowLog;

// The main page: the selected location, the one connect button and the subscription notice. It shows
// what its ConnectionController reports and forwards the user's clicks to it.
//
// States: 0 connected, 1 idle, 2 connecting (also while OpenVPN starts), 3 generating the
// configuration, 4 configuration ready, 5 connection ending or failed.
class ConnectWindow : public QWidget
{
    Q_OBJECT

public:
    // The controller's states as the page numbers them (OpenVPN starting counts as connecting).
    enum State {
        Connected = int(ConnectionController::State::Connected),
        Idle = int(ConnectionController::State::Idle),
        Connecting = int(ConnectionController::State::Connecting),
        Generating = int(ConnectionController::State::Generating),
        ConfigReady = int(ConnectionController::State::ConfigReady),
        Ending = int(ConnectionController::State::Ending),
    };

    static constexpr int SubscriptionIntervalMs = 10000;

    explicit ConnectWindow(ConnectHost* host, QWidget* parent = nullptr);
    ~ConnectWindow() override;

    ConnectionController& controller() { return m_controller; }
    int state() const { return ConnectionController::pageState(m_controller.state()); }
    bool isBlocking() const { return m_controller.isBlocking(); }
    bool isConnected() const { return m_controller.isConnected(); }
    QMap<ServerIdentif, ServerInfo> getServers() const { return m_controller.servers(); }
    ServerInfo currentServer() const { return m_controller.currentServer(); }
    // Received and sent bytes since the connection came up, as OpenVPN last reported them.
    double receivedTotal() const { return m_controller.receivedTotal(); }
    double sentTotal() const { return m_controller.sentTotal(); }
    int curentFilterId() { return m_controller.protocolId(); }
    bool useStealth() const { return m_controller.useStealth(); }
    bool installHelper() { return m_controller.installHelper(); }
    QStringList generateAllowIp() const { return m_controller.allowList(); }
    QStringList getMainServerIPs() const { return m_controller.serviceAddresses(); }
    void setFullProtection(bool on) { m_controller.setFullProtection(on); }
    void setUiState(int state);
    QByteArray getConfigOVPNbyUrl(QString url);
    void preClose() { m_controller.preClose(); }
    void logOut() { m_controller.logOut(); }

    // Human-readable bytes per second.
    static QString formatRate(double bytesPerSecond);

signals:
    void serverList(int protocol);
    void connected();
    void settings();
    void account();
    void support();
    void faq();
    // Every state the page enters.
    void stateChanged(int state);
    // The helper daemon's answer to doUpdateClient(): whether it took the package (it refuses one
    // that is not a newer signed release).
    void updateInstallAnswered(bool accepted);

public slots:
    void onClickConnect() { m_controller.toggle(); }
    void autoConnect() { m_controller.autoConnect(); }
    void onSelectLocation();
    void onSettings() { emit settings(); }
    void onAccount() { emit account(); }
    void onShowLog();
    void onServerChanged(const ServerIdentif& id) { m_controller.selectServer(id); }
    void setServers(const QVector<ServerInfo>& servers) { m_controller.setServers(servers); }
    void loadSettings();
    void saveSettings() { m_controller.saveSettings(); }
    void doFirewall(bool idle = true) { m_controller.refreshFirewall(idle); }
    void onWirelessConnectionChanged(bool joined, QString)
    {
        if (joined)
            m_controller.onWirelessJoined();
    }
    void doUpdateSubscriptionInfo();
    void onRenewButtonClicked();
    void goBuyLink(QString url);
    void doUpdateClient(QString path) { m_controller.installUpdate(path); }
    void onMyIpUpdated(bool, QString, QString) { }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void initUI();
    void showLook(ConnectionController::Look look);
    void showBlocking(bool blocking);
    void showNotice(ConnectionController::Notice notice);
    void showFailure(const QString& message);
    void applyStateTexts();
    void showRates();
    void showLocation(const ServerInfo& server);

    ConnectWindowForm ui;
    ConnectHost* m_host;
    std::unique_ptr<RotateWidget> m_spinner;
    // Made before the controller and gone after it, which may still report while it ends.
    std::unique_ptr<ShowLog> m_log;
    ConnectionController m_controller;
    QTimer m_subscriptionTimer;
    // The look the page shows, which lags behind the state while a disconnect waits for the engine.
    ConnectionController::Look m_look = ConnectionController::Look::Idle;
    // The last rates, kept so that a language change can write them again in the new units.
    double m_rateReceived = 0;
    double m_rateSent = 0;
};

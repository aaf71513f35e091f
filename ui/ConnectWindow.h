#pragma once

#include "ConnectWindowForm.h"
#include "Connection.h"
#include "HelperWire.h"
#include "MakeOVPNFile.h"
#include "ServerIdentif.h"
#include "ServerInfo.h"

#include <QFutureWatcher>
#include <QMap>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVector>
#include <QWidget>

struct ConfigServer;
class ConnectHost;
class QTimer;
class RotateWidget;
class ShowLog;
class StunnelManager;

// The main page: the selected location, the one connect button and the subscription notice. Runs the
// whole connect and disconnect sequence, the kill-switch firewall and the time zone change.
//
// States: 0 connected, 1 idle, 2 connecting (also while OpenVPN starts), 3 generating the
// configuration, 4 configuration ready, 5 connection ending or failed.
class ConnectWindow : public QWidget
{
    Q_OBJECT

public:
    enum State {
        Connected = 0,
        Idle = 1,
        Connecting = 2,
        Generating = 3,
        ConfigReady = 4,
        Ending = 5,
        // Shown only: connected, while OpenVPN sets a lost tunnel up again.
        Reestablishing = 6,
    };

    // The pause after the first connect steps, so that the page shows "connecting" before the work.
    static constexpr int ResponsivePauseMs = 1000;
    static constexpr int SubscriptionIntervalMs = 10000;
    static constexpr int WirelessSettleMs = 2000;
    static constexpr int MaxSilentAttempts = 3;
    // A stunnel that dies while its connection is up is started again this often per attempt.
    static constexpr int MaxStunnelRestarts = 3;

    explicit ConnectWindow(ConnectHost* host, QWidget* parent = nullptr);
    ~ConnectWindow() override;

    int state() const { return m_state; }
    bool isConnected() const { return m_state == Connected; }
    QMap<ServerIdentif, ServerInfo> getServers() const { return m_servers; }
    ServerInfo currentServer() const { return m_currentServer; }
    // Received and sent bytes since the connection came up, as OpenVPN last reported them.
    double receivedTotal() const { return m_receivedTotal; }
    double sentTotal() const { return m_sentTotal; }
    int curentFilterId();
    bool useStealth();
    bool installHelper();
    QStringList generateAllowIp() const;
    QStringList getMainServerIPs() const { return m_mainServerIps; }
    void findMainServerHostFromURL();
    void setFullProtection(bool on);
    void doTimezone(bool restore, QString zone);
    void doRestoreDNS(bool);
    void doGenerateConfig(const ConfigServer& config);
    void setUiState(int state);
    void sleepFor(qint64 ms);
    QByteArray getConfigOVPNbyUrl(QString url);
    void preClose();
    void logOut();

    // Human-readable bytes per second.
    static QString formatRate(double bytesPerSecond);

signals:
    void serverList(int protocol);
    void connected();
    void settings();
    void account();
    void support();
    void faq();
    // Every state the page enters, also when it enters the same one again.
    void stateChanged(int state);

public slots:
    void onClickConnect();
    void doConnect();
    void autoConnect();
    void onSelectLocation();
    void onSettings();
    void onAccount();
    void onShowLog();
    void onConnected();
    void onDisconnected();
    void onConnectionError(QString message);
    void onConnectionUpdateLog(QString text);
    void onStunnelStopped();
    void onAsyncFinished();
    void onServerChanged(const ServerIdentif& id);
    void setServers(const QVector<ServerInfo>& servers);
    void loadSettings();
    void saveSettings();
    void setAcountData(QString login, QString password);
    void doFirewall(bool idle = true);
    void onChangeTimezone(QString zone, bool ok);
    void onWirelessConnectionChanged(bool joined, QString ssid);
    void doUpdateSubscriptionInfo();
    void onRenewButtonClicked();
    void goBuyLink(QString url);
    // Whether the helper daemon took the package; it refuses one that is not a newer signed release.
    bool doUpdateClient(QString path);
    void onMyIpUpdated(bool, QString, QString) { }

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void setState(int state);
    void initUI();
    void startConnection();
    void onStatisticsChanged(double received, double sent, double receivedTotal, double sentTotal);
    void applyStateTexts();
    void showRates();
    void clearSelection();
    void showLocation(const ServerInfo& server);
    void removeConnectionLeftovers();

    ConnectWindowForm ui;
    qint32 m_state = Idle;
    Connection m_connection;
    int m_attempts = 0;
    int m_stunnelRestarts = 0;
    QMap<ServerIdentif, ServerInfo> m_servers;
    QString m_login;
    QString m_password;
    bool m_autoConnectPending = false;
    bool m_cancelRequested = false;
    bool m_fullProtection = false;
    bool m_closing = false;
    FIREWALL_PARAMETERS m_firewall;
    QStringList m_mainServerIps;
    MakeOVPNFile m_makeOvpn;
    ServerInfo m_currentServer;
    QSharedPointer<RotateWidget> m_spinner;
    QSharedPointer<ShowLog> m_log;
    QSharedPointer<StunnelManager> m_stunnel;
    QSharedPointer<QTimer> m_subscriptionTimer;
    QFutureWatcher<bool>* m_watcher = nullptr;
    ConnectHost* m_host;

    // The facade keeps no state of its own; this follows its connected and disconnected signals.
    bool m_tunnelUp = false;
    // The state whose appearance the page shows (states 3 and 4 keep the previous one).
    int m_shownState = Idle;
    double m_receivedTotal = 0;
    double m_sentTotal = 0;
    // The last rates, kept so that a language change can write them again in the new units.
    double m_rateReceived = 0;
    double m_rateSent = 0;
};

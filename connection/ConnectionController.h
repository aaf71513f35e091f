#pragma once

#include "ConfigServer.h"
#include "Connection.h"
#include "HelperWire.h"
#include "MakeOVPNFile.h"
#include "ServerIdentif.h"
#include "ServerInfo.h"
#include "StunnelManager.h"

#include <QFutureWatcher>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>

// The connect and disconnect sequence without a window: the selected location, the pause before the
// work, the configuration, stunnel, the engine, the kill-switch rules before and after a connection,
// the exit's time zone and the silent retries. The connect page shows what it reports and forwards
// the user's clicks; every helper daemon request is answered later, so a slow daemon never stalls it.
class ConnectionController : public QObject
{
    Q_OBJECT

public:
    // The values are the connect page's state numbers.
    enum class State {
        Connected = 0,
        Idle = 1,
        // Connecting: the pause before the configuration is written.
        Connecting = 2,
        Generating = 3,
        ConfigReady = 4,
        Ending = 5,
        // Still "connecting" to the page: OpenVPN has been started and has not reported yet.
        Starting = 6,
        // Already "idle" to the page: OpenVPN has been asked to stop and has not reported its end.
        Stopping = 7,
    };
    Q_ENUM(State)

    // What the page shows; it lags behind the state when a disconnect waits for the engine's end.
    enum class Look { Idle, Connecting, Connected, Reestablishing, Failed };
    Q_ENUM(Look)

    // Reasons for a message box, each with its own translated text on the page.
    enum class Notice {
        NoConfig,
        NoCertificate,
        NoKey,
        FirewallUnsupported,
        TimezoneUnsupported,
        TimezoneUnknown,
        UpdatePathEmpty,
    };
    Q_ENUM(Notice)

    // The account's material for a connection, as the service delivered it.
    class Materials
    {
    public:
        virtual ~Materials() = default;
        virtual QByteArray getConfigOvpnByServer(QString server) = 0;
        virtual QByteArray getCertifOvpnByUser(QString user) = 0;
        virtual QByteArray getKeyOvpnByUser(QString user) = 0;
    };

    static constexpr int ResponsivePauseMs = 1000;
    static constexpr int WirelessSettleMs = 2000;
    static constexpr int MaxSilentAttempts = 3;
    // A stunnel that dies while its connection is up is started again this often per attempt.
    static constexpr int MaxStunnelRestarts = 3;

    // The service's addresses go into the kill switch's allow list, so that the program's own requests pass.
    ConnectionController(Materials* materials, const QStringList& serviceAddresses, QObject* parent = nullptr);
    ~ConnectionController() override;

    // The page's number for a state: OpenVPN starting is still "connecting".
    static int pageState(State state)
    {
        return state == State::Starting ? int(State::Connecting)
            : state == State::Stopping  ? int(State::Idle)
                                        : int(state);
    }
    State state() const { return m_state; }
    bool isConnected() const { return m_state == State::Connected; }
    // The kill switch's rules for no connection are in force: nothing but the allow list gets out.
    bool isBlocking() const { return m_fullProtection && m_rulesIdle; }

    QMap<ServerIdentif, ServerInfo> servers() const { return m_servers; }
    ServerInfo currentServer() const { return m_currentServer; }
    double receivedTotal() const { return m_receivedTotal; }
    double sentTotal() const { return m_sentTotal; }
    QStringList allowList() const;
    QStringList serviceAddresses() const { return m_serviceAddresses; }
    // The protocol id of the setting; an empty setting is stored as "tcp" first.
    int protocolId();
    bool useStealth() const;
    bool installHelper() { return m_connection.installHelper(); }

    // The one toggle of the button, the tray and the main window.
    void toggle();
    // Connects once per run, when the setting asks for it and a location is selected.
    void autoConnect();
    void setServers(const QVector<ServerInfo>& servers);
    void selectServer(const ServerIdentif& id);
    void loadSettings();
    void saveSettings();

    void setFullProtection(bool on);
    // Sends the rules again, for a connection (idle false) or for none (idle true).
    void refreshFirewall(bool idle = true, Connection::Answer answer = {});
    void onWirelessJoined();
    // The service's answer to the time zone request.
    void onTimezoneAnswer(const QString& zone, bool ok);
    void installUpdate(const QString& path);
    void logOut();
    // Once, at the program's end: stops the engine and lifts the rules before returning.
    void preClose();

    // The engine's reports.
    void onConnected();
    void onDisconnected();
    void onConnectionError(const QString& message);

signals:
    // Every change of state.
    void stateChanged(ConnectionController::State state);
    void lookChanged(ConnectionController::Look look);
    void notice(ConnectionController::Notice notice);
    // The third failure in a row: the engine's message, possibly empty.
    void failed(const QString& message);
    void locationChanged(const ServerInfo& server);
    // A connect without a location: the server list should be shown.
    void locationWanted();
    // A connect begins: its page should come to the front.
    void connectStarted();
    void connected();
    void timezoneWanted();
    void ratesChanged(double received, double sent);
    void logLine(const QString& text);
    void logCleared();
    void updateInstallAnswered(bool accepted);
    void blockingChanged(bool blocking);

private:
    enum class Event { Press, PauseOver, Generated, GenerationCancelled, Up, Down, Failure };
    using Action = void (ConnectionController::*)();
    struct Transition
    {
        State from;
        Event event;
        Action action;
        State to;
    };
    static const Transition Transitions[];

    void handle(Event event);
    void setState(State state);

    // Actions of the table.
    void start();
    void cancelPause();
    void cancelGeneration();
    void stopEngine();
    void generate();
    void startEngine();
    void dropGeneration();
    void tunnelUp();
    void tunnelUpAgain();
    void tunnelDown();
    void failure();

    void pauseStepDone(unsigned attempt);
    void onGenerated();
    void onStunnelStopped();
    void onStatistics(double received, double sent, double receivedTotal, double sentTotal);
    void removeConnectionLeftovers();
    // The daemon confirmed rules: on or off, and for a connection or for none.
    void rulesConfirmed(bool on, bool idle);
    void showLocation(const ServerInfo& server);

    Materials* m_materials;
    Connection m_connection;
    State m_state = State::Idle;
    int m_attempts = 0;
    int m_stunnelRestarts = 0;
    QMap<ServerIdentif, ServerInfo> m_servers;
    ServerInfo m_currentServer;
    QString m_lastError;
    bool m_autoConnectPending = false;
    // The run's automatic connection was made, declined by the setting, or overtaken by one by hand: reloading the
    // settings does not arm it again.
    bool m_autoConnectSettled = false;
    bool m_cancelRequested = false;
    bool m_fullProtection = false;
    // The rules in force are those for no connection.
    bool m_rulesIdle = false;
    bool m_closing = false;
    bool m_tunnelUp = false;
    bool m_reestablishing = false;
    // What the kill switch was last asked to be; m_fullProtection is what the daemon confirmed.
    bool m_protectionWanted = false;
    // Kill-switch on and off requests made so far; each answer knows its number.
    quint64 m_protectionRequests = 0;
    // Numbers each attempt, so that a daemon answer for an attempt that has ended is left unused.
    unsigned m_attempt = 0;
    // The pause before the work ends when its time is over and the rules for the coming connection
    // are in force (or refused): two steps, counted down.
    int m_pauseSteps = 0;
    FIREWALL_PARAMETERS m_firewall;
    QStringList m_serviceAddresses;
    ConfigServer m_config;
    MakeOVPNFile m_makeOvpn;
    StunnelManager m_stunnel;
    QTimer m_pause;
    QFutureWatcher<bool> m_watcher;
    double m_receivedTotal = 0;
    double m_sentTotal = 0;
};

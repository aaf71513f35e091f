#include "ConnectionController.h"

#include "ALog.h"
#include "Keys.h"
#include "LocalSettings.h"
#include "ProxySetting.h"
#include "VpnProtocols.h"

#include <QDebug>
#include <QFile>
#include <QSettings>
#include <QtConcurrent>

namespace {

const QString TunnelInterface = QStringLiteral("tun0");

QVariant setting(const QString& key)
{
    return LocalSettings::instance()->value(key);
}

// The protocol setting; an empty one means TCP.
QString protocolSetting()
{
    const QString name = setting(Keys::OvpnProtocol).toString();
    return name.isEmpty() ? QStringLiteral("tcp") : name;
}

const char* flagText(bool flag)
{
    return flag ? "true" : "false";
}

} // namespace

using S = ConnectionController::State;
using C = ConnectionController;

// What each report or click does in each state. A pair that is not listed changes nothing: for one,
// the engine's report of an attempt that has been replaced, or a click while the connection ends.
// clang-format off
const ConnectionController::Transition ConnectionController::Transitions[] = {
    // from         event                       action                to
    // start() moves on to Connecting once a location is selected and no tunnel is up.
    {S::Idle,        Event::Press,               &C::start,            S::Idle},
    {S::Stopping,    Event::Press,               &C::start,            S::Stopping},
    {S::Connecting,  Event::Press,               &C::cancelPause,      S::Idle},
    {S::Generating,  Event::Press,               &C::cancelGeneration, S::Generating},
    {S::Starting,    Event::Press,               &C::stopEngine,       S::Stopping},
    {S::Connected,   Event::Press,               &C::stopEngine,       S::Stopping},

    {S::Connecting,  Event::PauseOver,           &C::generate,         S::Generating},
    {S::Generating,  Event::Generated,           &C::startEngine,      S::ConfigReady},
    {S::Generating,  Event::GenerationCancelled, &C::dropGeneration,   S::Idle},

    {S::Starting,    Event::Up,                  &C::tunnelUp,         S::Connected},
    // An attempt given up on that came up after all: the tunnel is there, and the page says so.
    {S::Idle,        Event::Up,                  &C::tunnelUp,         S::Connected},
    {S::Connected,   Event::Up,                  &C::tunnelUpAgain,    S::Connected},

    {S::Starting,    Event::Down,                &C::tunnelDown,       S::Ending},
    {S::Connected,   Event::Down,                &C::tunnelDown,       S::Ending},
    {S::Stopping,    Event::Down,                &C::tunnelDown,       S::Ending},

    {S::Starting,    Event::Failure,             &C::failure,          S::Ending},
    {S::Connected,   Event::Failure,             &C::failure,          S::Ending},
    // Asked to stop, the engine gave up instead: the end all the same, without a retry.
    {S::Stopping,    Event::Failure,             &C::tunnelDown,       S::Ending},
};
// clang-format on

ConnectionController::ConnectionController(Materials* materials, const QStringList& serviceAddresses, QObject* parent)
    : QObject(parent)
    , m_materials(materials)
    , m_serviceAddresses(serviceAddresses)
{
    connect(&m_connection, &Connection::connected, this, &ConnectionController::onConnected);
    connect(&m_connection, &Connection::disconnected, this, &ConnectionController::onDisconnected);
    connect(&m_connection, &Connection::error, this, &ConnectionController::onConnectionError);
    connect(&m_connection, &Connection::reconnecting, this, [this] {
        // The tunnel is gone for now: say so, and show no stale rates, until it is back.
        if (m_state == State::Connected && !m_reestablishing) {
            m_reestablishing = true;
            emit lookChanged(Look::Reestablishing);
        }
    });
    connect(&m_connection, &Connection::logUpdate, this, &ConnectionController::logLine);
    connect(&m_connection, &Connection::statisticsChanged, this, &ConnectionController::onStatistics);

    m_autoConnectPending
        = QSettings().value(Keys::ConnectOnStart, QStringLiteral("false")).toString() == QLatin1String("true");
    // What a run that crashed left: its stunnel, and its configuration with the private key.
    m_stunnel.killProcess();
    m_stunnel.removeLeftovers();
    connect(&m_stunnel, &StunnelManager::stopped, this, &ConnectionController::onStunnelStopped);
    MakeOVPNFile::removeLeftovers();
    m_firewall.killConnect = setting(Keys::KillConnect).toBool();
    m_firewall.ipv6Block = setting(Keys::IPv6LeakProtect).toBool();
    m_firewall.allowLocalIp = setting(Keys::AllowLocalDevices).toBool();
    m_firewall.changeTimezone = setting(Keys::ChangeTimezone).toBool();

    m_pause.setSingleShot(true);
    connect(&m_pause, &QTimer::timeout, this, [this] { pauseStepDone(m_attempt); });
    connect(&m_watcher, &QFutureWatcher<bool>::finished, this, [this] {
        handle(m_cancelRequested ? Event::GenerationCancelled : Event::Generated);
    });
}

ConnectionController::~ConnectionController()
{
    m_watcher.waitForFinished();
}

void ConnectionController::handle(Event event)
{
    for (const Transition& transition : Transitions) {
        if (transition.from == m_state && transition.event == event) {
            setState(transition.to);
            (this->*transition.action)();
            return;
        }
    }
    qDebug() << "ConnectionController: no step for event" << int(event) << "in state" << m_state;
}

void ConnectionController::setState(State state)
{
    if (state == m_state)
        return;
    m_state = state;
    emit stateChanged(state);
}

void ConnectionController::toggle()
{
    handle(Event::Press);
}

void ConnectionController::onConnected()
{
    m_tunnelUp = true;
    handle(Event::Up);
}

void ConnectionController::onDisconnected()
{
    m_tunnelUp = false;
    handle(Event::Down);
}

void ConnectionController::onConnectionError(const QString& message)
{
    // An error after "connected" ends without a disconnect report; the next attempt must not take
    // the tunnel for up.
    m_tunnelUp = false;
    m_lastError = message;
    handle(Event::Failure);
}

// ---- the actions of the table

void ConnectionController::start()
{
    qDebug() << "Connecting";
    ++m_attempts;
    m_cancelRequested = false;
    emit connectStarted();

    const ServerInfo server = m_currentServer;
    if (server.ip.isEmpty() || server.flag.isEmpty()) {
        emit locationWanted();
        return;
    }
    if (m_tunnelUp) {
        ALog::Out(QStringLiteral("connection_.isConnected()"));
        return;
    }

    setState(State::Connecting);
    const unsigned attempt = ++m_attempt;
    m_config = ConfigServer();
    // Each is checked as soon as it is fetched; without one the attempt stops where it is.
    m_config.config = m_materials->getConfigOvpnByServer(server.name);
    if (m_config.config.isEmpty()) {
        emit notice(Notice::NoConfig);
        return;
    }
    m_config.cert = m_materials->getCertifOvpnByUser(server.user);
    if (m_config.cert.isEmpty()) {
        emit notice(Notice::NoCertificate);
        return;
    }
    m_config.key = m_materials->getKeyOvpnByUser(server.user);
    if (m_config.key.isEmpty()) {
        emit notice(Notice::NoKey);
        return;
    }

    m_pauseSteps = m_protectionWanted ? 2 : 1;
    if (m_protectionWanted)
        refreshFirewall(false, [this, attempt](bool) { pauseStepDone(attempt); });
    m_pause.start(ResponsivePauseMs);
    // Last: the page may run events while it changes its look, a press among them.
    emit lookChanged(Look::Connecting);
}

void ConnectionController::pauseStepDone(unsigned attempt)
{
    if (attempt != m_attempt || --m_pauseSteps > 0)
        return;
    handle(Event::PauseOver);
}

// A press during the pause: nothing was started, so the page is idle at once.
void ConnectionController::cancelPause()
{
    qDebug() << "Disconnecting";
    m_cancelRequested = true;
    m_pause.stop();
    ++m_attempt;
    // Also stops what a previous attempt may have left running.
    m_connection.disconnect(true);
    emit lookChanged(Look::Idle);
    refreshFirewall(true);
}

void ConnectionController::cancelGeneration()
{
    m_cancelRequested = true;
    if (m_watcher.isRunning())
        m_watcher.cancel();
}

void ConnectionController::stopEngine()
{
    qDebug() << "Disconnecting";
    m_cancelRequested = true;
    m_connection.disconnect(true);
}

void ConnectionController::generate()
{
    const VpnProtocol protocol = getVpnProtocolByLabel(protocolSetting());
    m_config.protocol = protocol.shortName;
    m_config.ip = m_currentServer.ip;
    if (protocol.id == Stealth) {
        m_stunnelRestarts = 0;
        m_stunnel.setConfigAndRunProcess(m_currentServer.ip, m_currentServer.sslPort, m_currentServer.sni);
        m_config.stunnelPort = m_stunnel.getPort();
    } else {
        m_config.ports = protocol.id == OpenVpnUdp ? m_currentServer.udpPorts : m_currentServer.tcpPorts;
    }
    MakeOVPNFile* writer = &m_makeOvpn;
    const bool stealth = protocol.id == Stealth;
    m_watcher.setFuture(QtConcurrent::run([writer, config = m_config, stealth]() {
        return stealth ? writer->generateStunnel(config) : writer->generate(config);
    }));
}

void ConnectionController::startEngine()
{
    emit logCleared();
    QFile::remove(ALog::tracePath());
    setState(State::Starting);
    qDebug() << "OpenVpn config:" << m_makeOvpn.configFileName;
    m_autoConnectPending = false;
    m_autoConnectSettled = true;
    m_connection.connect(
        m_currentServer, m_currentServer.user, m_currentServer.password, m_makeOvpn.configFileName, ProxySetting());
}

void ConnectionController::dropGeneration()
{
    removeConnectionLeftovers();
    emit lookChanged(Look::Idle);
    refreshFirewall(true);
}

void ConnectionController::tunnelUp()
{
    m_attempts = 0;
    m_reestablishing = false;
    m_receivedTotal = 0;
    m_sentTotal = 0;
    emit ratesChanged(0, 0);
    if (m_firewall.changeTimezone) {
        const unsigned attempt = m_attempt;
        m_connection.timezonechangeSupported([this, attempt](bool supported) {
            if (attempt != m_attempt || m_state != State::Connected)
                return;
            if (supported) {
                emit timezoneWanted();
                return;
            }
            LocalSettings::instance()->setValue(Keys::ChangeTimezone, false);
            m_firewall.changeTimezone = setting(Keys::ChangeTimezone).toBool();
            emit notice(Notice::TimezoneUnsupported);
        });
    }
    emit lookChanged(Look::Connected);
    emit connected();
}

// OpenVPN echoes each state change in a log line before the state line itself, so the engine reports
// one connection twice; the second report changes nothing, unless the tunnel was being set up again.
void ConnectionController::tunnelUpAgain()
{
    if (!m_reestablishing)
        return;
    m_reestablishing = false;
    emit lookChanged(Look::Connected);
}

void ConnectionController::tunnelDown()
{
    m_reestablishing = false;
    emit lookChanged(Look::Idle);
    removeConnectionLeftovers();
    setState(State::Idle);
    refreshFirewall(true);
    if (m_firewall.changeTimezone)
        m_connection.timezoneChange(true, QString());
}

void ConnectionController::failure()
{
    m_reestablishing = false;
    emit lookChanged(Look::Failed);
    if (m_attempts < MaxSilentAttempts) {
        setState(State::Idle);
        handle(Event::Press);
        return;
    }
    m_attempts = 0;
    if (!m_lastError.isEmpty())
        ALog::Out(QStringLiteral("onConnectionError()"));
    emit failed(m_lastError);
    removeConnectionLeftovers();
    setState(State::Idle);
    emit lookChanged(Look::Idle);
    refreshFirewall(true);
}

void ConnectionController::removeConnectionLeftovers()
{
    if (useStealth())
        m_stunnel.killProcess();
    // The daemon runs OpenVPN from a copy of its own: the file with the private key goes now.
    m_makeOvpn.discard();
}

// OpenVPN keeps trying to reach the local port: a stunnel started again there carries the tunnel on.
// One that keeps dying ends the attempt.
void ConnectionController::onStunnelStopped()
{
    if (m_state != State::Starting && m_state != State::Connected)
        return;
    if (m_stunnelRestarts < MaxStunnelRestarts) {
        ++m_stunnelRestarts;
        ALog::Out(QStringLiteral("stunnel stopped: starting it again (%1 of %2)")
                      .arg(m_stunnelRestarts)
                      .arg(MaxStunnelRestarts));
        m_stunnel.restart();
        return;
    }
    ALog::Out(QStringLiteral("stunnel stopped %1 times: the connection ends").arg(m_stunnelRestarts + 1));
    m_connection.disconnect(false);
}

void ConnectionController::onStatistics(double received, double sent, double receivedTotal, double sentTotal)
{
    m_receivedTotal = receivedTotal;
    m_sentTotal = sentTotal;
    emit ratesChanged(received, sent);
}

void ConnectionController::autoConnect()
{
    if (m_currentServer.ip.isEmpty() || m_currentServer.flag.isEmpty())
        return;
    m_autoConnectSettled = true;
    if (!m_autoConnectPending)
        return;
    m_autoConnectPending = false;
    toggle();
}

// ---- locations and settings

int ConnectionController::protocolId()
{
    QString name = setting(Keys::OvpnProtocol).toString();
    if (name.isEmpty()) {
        name = QStringLiteral("tcp");
        LocalSettings::instance()->setValue(Keys::OvpnProtocol, name);
    }
    return getVpnProtocolByLabel(name).id;
}

bool ConnectionController::useStealth() const
{
    return getVpnProtocolByLabel(protocolSetting()).id == Stealth;
}

void ConnectionController::setServers(const QVector<ServerInfo>& servers)
{
    qDebug() << "ConnectWindow::setServers count:" << servers.size();
    m_servers.clear();
    for (const ServerInfo& server : servers)
        m_servers.insert(ServerIdentif(server.user, server.name), server);
    const ServerIdentif id = identifFromSettings(setting(Keys::LastLocation).toString());
    if (m_servers.contains(id)) {
        selectServer(id);
    } else {
        m_currentServer = ServerInfo();
        emit locationChanged(m_currentServer);
    }
}

void ConnectionController::selectServer(const ServerIdentif& id)
{
    qDebug() << "ConnectWindow::onServerChanged" << id.first << id.second;
    if (!m_servers.contains(id))
        return;
    LocalSettings::instance()->setValue(Keys::LastLocation, identifToSettings(id));
    m_currentServer = m_servers.value(id);
    emit locationChanged(m_currentServer);
}

void ConnectionController::loadSettings()
{
    m_autoConnectPending = !m_autoConnectSettled && setting(Keys::ConnectOnStart).toBool();

    if (!offersProtocol(m_currentServer, getVpnProtocolByLabel(protocolSetting()).id)) {
        m_currentServer = ServerInfo();
        LocalSettings::instance()->setValue(Keys::LastLocation, QString());
        emit locationChanged(m_currentServer);
    }

    const bool killConnect = setting(Keys::KillConnect).toBool();
    // The IPv6 flag keeps the value it had when the controller was made.
    const bool allowLocal = setting(Keys::AllowLocalDevices).toBool();
    m_firewall.changeTimezone = setting(Keys::ChangeTimezone).toBool();
    if (killConnect != m_firewall.killConnect || allowLocal != m_firewall.allowLocalIp) {
        m_firewall.killConnect = killConnect;
        m_firewall.allowLocalIp = allowLocal;
        refreshFirewall(true);
    }
    setFullProtection(killConnect);
}

void ConnectionController::saveSettings()
{
    const ServerIdentif id(m_currentServer.user, m_currentServer.name);
    qDebug() << "ConnectWindow::saveSettings" << identifToSettings(id);
    QSettings().setValue(Keys::LastLocation, identifToSettings(id));
}

// ---- firewall

QStringList ConnectionController::allowList() const
{
    QStringList list {QStringLiteral("127.0.0.1")};
    for (const ServerInfo& server : m_servers) {
        if (!server.ip.isEmpty() && !list.contains(server.ip, Qt::CaseSensitive))
            list.append(server.ip);
    }
    list.append(m_serviceAddresses);
    return list;
}

void ConnectionController::setFullProtection(bool on)
{
    if (on == m_protectionWanted)
        return;
    m_protectionWanted = on;
    // The daemon answers in the order asked, so every confirmation is taken as it comes; only the latest
    // request's refusal decides what is wanted, since a later request supersedes an earlier one.
    const quint64 request = ++m_protectionRequests;
    const auto settle = [this, on, request](bool ok, bool idle) {
        if (ok) {
            rulesConfirmed(on, idle);
            return;
        }
        if (request != m_protectionRequests)
            return;
        m_protectionWanted = m_fullProtection;
        if (on) {
            // A refused or unanswered switch-on may still have left rules in force: take them down, so the
            // daemon holds nothing the page does not show.
            emit notice(Notice::FirewallUnsupported);
            m_connection.firewallOff([this](bool off) {
                if (off)
                    rulesConfirmed(false, false);
            });
        }
    };
    if (!on) {
        m_connection.firewallOff([settle](bool ok) { settle(ok, false); });
        return;
    }
    const QString list = allowList().join(QLatin1Char(';'));
    qDebug() << "kill_c: " << flagText(m_firewall.killConnect) << "ipv6_b: " << flagText(m_firewall.ipv6Block)
             << "allow_loc_ip: " << flagText(m_firewall.allowLocalIp)
             << "change_t: " << flagText(m_firewall.changeTimezone);
    qDebug() << "Allow Firewall ip:" << list;
    m_firewall.idle = !m_autoConnectPending;
    m_connection.firewallOnWhereSupported(
        list, TunnelInterface, m_firewall, [settle, idle = m_firewall.idle](bool ok) { settle(ok, idle); });
}

// Changes the rules in force, after whatever was asked of the daemon before: while the kill switch is
// wanted, even before the daemon has confirmed it.
void ConnectionController::refreshFirewall(bool idle, Connection::Answer answer)
{
    if (!m_protectionWanted) {
        if (answer)
            answer(false);
        return;
    }
    const QString list = allowList().join(QLatin1Char(';'));
    qDebug() << "Change Firewall ip:" << list;
    m_firewall.idle = idle;
    // Rules changed before a later switch-off or switch-on are not what is in force once that is answered.
    m_connection.firewallChange(
        list, TunnelInterface, m_firewall, [this, idle, answer, request = m_protectionRequests](bool ok) {
            if (ok && request == m_protectionRequests)
                rulesConfirmed(true, idle);
            if (answer)
                answer(ok);
        });
}

void ConnectionController::rulesConfirmed(bool on, bool idle)
{
    const bool before = isBlocking();
    m_fullProtection = on;
    m_rulesIdle = idle;
    if (isBlocking() != before)
        emit blockingChanged(isBlocking());
}

void ConnectionController::onWirelessJoined()
{
    // Give the new network a moment, then make the rules follow it.
    QTimer::singleShot(WirelessSettleMs, this, [this]() { refreshFirewall(); });
}

void ConnectionController::logOut()
{
    setFullProtection(false);
}

void ConnectionController::preClose()
{
    if (m_closing)
        return;
    m_closing = true;
    m_pause.stop();
    m_connection.disconnect(false);
    m_watcher.waitForFinished();
    removeConnectionLeftovers();
    m_connection.firewallOff();
    if (m_firewall.changeTimezone)
        m_connection.timezoneChange(true, QString());
    m_connection.waitForDaemon();
}

// ---- time zone and update

void ConnectionController::onTimezoneAnswer(const QString& zone, bool ok)
{
    qDebug() << "onChangeTimezone" << zone << flagText(ok);
    // An answer that arrives after the connection ended must not move the clock to the exit's zone.
    if (m_state != State::Connected)
        return;
    if (ok && !zone.isEmpty())
        m_connection.timezoneChange(false, zone);
    else
        emit notice(Notice::TimezoneUnknown);
}

void ConnectionController::installUpdate(const QString& path)
{
    qDebug() << "doUpdateClient" << path;
    if (path.isEmpty()) {
        emit notice(Notice::UpdatePathEmpty);
        emit updateInstallAnswered(false);
        return;
    }
    m_connection.updateInstall(path, [this](bool accepted) { emit updateInstallAnswered(accepted); });
}

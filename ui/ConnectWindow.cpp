#include "ConnectWindow.h"

#include "ALog.h"
#include "Clock.h"
#include "ConfigServer.h"
#include "ConnectHost.h"
#include "CustomMessageBox.h"
#include "DownloadConfig.h"
#include "FlagPicture.h"
#include "Keys.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "ProxySetting.h"
#include "RotateWidget.h"
#include "ShowLog.h"
#include "StunnelManager.h"
#include "VpnProtocols.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDebug>
#include <QDesktopServices>
#include <QEvent>
#include <QEventLoop>
#include <QFile>
#include <QHostInfo>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QUrl>
#include <QtConcurrent>

namespace {

const QString ProductTitle = QStringLiteral("Tavrin");
const QString TunnelInterface = QStringLiteral("tun0");
const QSize LocationIconSize(15, 15);

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

} // namespace

ConnectWindow::ConnectWindow(ConnectHost* host, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
{
    ui.setupUi(this);
    initUI();
    setUiState(Idle);

    connect(ui.btnSettings, &QPushButton::clicked, this, &ConnectWindow::onSettings);
    connect(ui.btnAccount, &QPushButton::clicked, this, &ConnectWindow::onAccount);
    connect(ui.btnConnect, &QPushButton::clicked, this, &ConnectWindow::onClickConnect);
    connect(ui.btnSelectLocation, &QPushButton::clicked, this, &ConnectWindow::onSelectLocation);
    connect(&m_connection, &Connection::connected, this, &ConnectWindow::onConnected);
    connect(&m_connection, &Connection::disconnected, this, &ConnectWindow::onDisconnected);
    connect(&m_connection, &Connection::reconnecting, this, [this] {
        // The tunnel is gone for now: say so, and show no stale rates, until it is back.
        if (m_state == Connected && m_shownState == Connected)
            setUiState(Reestablishing);
    });
    connect(&m_connection, &Connection::error, this, &ConnectWindow::onConnectionError);
    connect(&m_connection, &Connection::logUpdate, this, &ConnectWindow::onConnectionUpdateLog);
    connect(&m_connection, &Connection::statisticsChanged, this, &ConnectWindow::onStatisticsChanged);
    connect(ui.btRenew, &QPushButton::clicked, this, &ConnectWindow::onRenewButtonClicked);
    NetworkManager* api = NetworkManager::instance();
    connect(api, &NetworkManager::gotIpTimezone, this, &ConnectWindow::onChangeTimezone);
    connect(api, &NetworkManager::gotBuyLink, this, &ConnectWindow::goBuyLink);

    m_log.reset(new ShowLog());
    m_autoConnectPending
        = QSettings().value(Keys::ConnectOnStart, QStringLiteral("false")).toString() == QLatin1String("true");
    m_stunnel.reset(new StunnelManager());
    // What a run that crashed left: its stunnel, and its configuration with the private key.
    m_stunnel->killProcess();
    m_stunnel->removeLeftovers();
    connect(m_stunnel.data(), &StunnelManager::stopped, this, &ConnectWindow::onStunnelStopped);
    MakeOVPNFile::removeLeftovers();
    m_firewall.killConnect = setting(Keys::KillConnect).toBool();
    m_firewall.ipv6Block = setting(Keys::IPv6LeakProtect).toBool();
    m_firewall.allowLocalIp = setting(Keys::AllowLocalDevices).toBool();
    m_firewall.changeTimezone = setting(Keys::ChangeTimezone).toBool();
    findMainServerHostFromURL();

    m_subscriptionTimer.reset(new QTimer());
    m_subscriptionTimer->setInterval(SubscriptionIntervalMs);
    connect(m_subscriptionTimer.data(), &QTimer::timeout, this, &ConnectWindow::doUpdateSubscriptionInfo);
    ui.lbSubscribtionInfo->hide();
    ui.lbSubscribtionAdditionalInfo->hide();
    ui.btRenew->hide();
}

ConnectWindow::~ConnectWindow()
{
    if (m_watcher) {
        m_watcher->waitForFinished();
        delete m_watcher;
    }
}

void ConnectWindow::setState(int state)
{
    m_state = state;
    emit stateChanged(state);
}

void ConnectWindow::initUI()
{
    // The button is only its round picture.
    ui.btnConnect->setAttribute(Qt::WA_TranslucentBackground);
    ui.btnConnect->setAttribute(Qt::WA_NoSystemBackground);
    ui.btnConnect->setAttribute(Qt::WA_OpaquePaintEvent, false);
    ui.btnConnect->setFlat(true);
}

// ---- appearance

void ConnectWindow::setUiState(int state)
{
    switch (state) {
    case Connected:
        ui.btnConnect->setIcon(QIcon(QStringLiteral(":/resources/connect-red.svg")));
        ui.lbLocation->setStyleSheet(QStringLiteral("QLabel{font: 16px \"Arial\"; color: #7ed321;}"));
        ui.lbShield->setStyleSheet(QStringLiteral("image: url(:/resources/shield-green.svg);"));
        ui.lbRotatorGreen->show();
        ui.lbRotatorAnimation->hide();
        m_spinner.reset();
        ui.lbRates->show();
        m_host->setTrayStatusConnected(true);
        break;
    case Idle:
    case Ending:
        ui.btnConnect->setIcon(QIcon(QStringLiteral(":/resources/connect-green.svg")));
        ui.btnSelectLocation->setIcon(QIcon(QStringLiteral(":/resources/location-blue.svg")));
        ui.btnSelectLocation->setIconSize(LocationIconSize);
        ui.btnSelectLocation->setStyleSheet(QStringLiteral(
            "QPushButton{border: 0px;font: 16px \"Arial\";color: #33a5db;background-color:transparent;}"));
        ui.lbLocation->setStyleSheet(QStringLiteral("QLabel{font: 16px \"Arial\"; color: #4a4a4a;}"));
        ui.btnSettings->setEnabled(true);
        ui.lbShield->setStyleSheet(QStringLiteral("image: url(:/resources/shield-grey.svg);"));
        ui.lbRotatorGreen->hide();
        ui.lbRotatorAnimation->setStyleSheet(
            QStringLiteral("QLabel{background-color:transparent; image: url(:/resources/rotator-orange.png);}"));
        ui.lbRotatorAnimation->show();
        m_spinner.reset();
        ui.lbRates->hide();
        m_host->setTrayStatusDisconnected(true);
        break;
    case Connecting:
    case Reestablishing:
        ui.btnConnect->setIcon(QIcon(QStringLiteral(":/resources/connect-orange.svg")));
        ui.btnSelectLocation->setIcon(QIcon(QStringLiteral(":/resources/location-info.svg")));
        ui.btnSelectLocation->setIconSize(LocationIconSize);
        ui.btnSelectLocation->setStyleSheet(QStringLiteral(
            "QPushButton{border: 0px;font: 16px \"Arial\";color: #9b9b9b;background-color:transparent;}"));
        ui.lbLocation->setStyleSheet(QStringLiteral("QLabel{font: 16px \"Arial\"; color: #ff9600;}"));
        ui.btnSettings->setEnabled(false);
        ui.lbRotatorGreen->hide();
        ui.lbRotatorAnimation->show();
        ui.lbRotatorAnimation->clear();
        ui.lbRotatorAnimation->setStyleSheet(QStringLiteral("QLabel{background-color:transparent; image: none;}"));
        m_spinner.reset(new RotateWidget(QStringLiteral(":/resources/rotator-orange.png"), ui.lbRotatorAnimation));
        m_spinner->show();
        m_spinner->start();
        ui.lbRates->hide();
        if (state == Reestablishing)
            m_host->setTrayStatusReestablishing();
        else
            m_host->setTrayStatusConnecting();
        break;
    default:
        QCoreApplication::processEvents();
        return;
    }
    m_shownState = state;
    applyStateTexts();
    QCoreApplication::processEvents();
}

// The texts that follow the appearance, set again after a language change.
void ConnectWindow::applyStateTexts()
{
    if (m_shownState == Connected) {
        // The connected look keeps the button of the connecting one.
        ui.btnSelectLocation->setText(tr("Show connection"));
        ui.lbStatus->setText(tr("Connected"));
        showRates();
    } else if (m_shownState == Connecting) {
        ui.btnSelectLocation->setText(tr("Show connection"));
        ui.lbStatus->setText(tr("Connecting..."));
    } else if (m_shownState == Reestablishing) {
        ui.btnSelectLocation->setText(tr("Show connection"));
        ui.lbStatus->setText(tr("Re-establishing the connection..."));
    } else {
        ui.btnSelectLocation->setText(tr("Select VPN Location"));
        ui.lbStatus->setText(tr("Not connected"));
    }
}

void ConnectWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange) {
        ui.retranslateUi();
        applyStateTexts();
    }
    QWidget::changeEvent(event);
}

QString ConnectWindow::formatRate(double bytesPerSecond)
{
    const double value = qMax(0.0, bytesPerSecond);
    if (value < 1024)
        return tr("%1 B/s").arg(qRound(value));
    if (value < 1024 * 1024)
        return tr("%1 KB/s").arg(value / 1024, 0, 'f', 1);
    return tr("%1 MB/s").arg(value / (1024 * 1024), 0, 'f', 1);
}

void ConnectWindow::showRates()
{
    ui.lbRates->setText(
        QStringLiteral("\u2193 %1    \u2191 %2").arg(formatRate(m_rateReceived), formatRate(m_rateSent)));
}

void ConnectWindow::onStatisticsChanged(double received, double sent, double receivedTotal, double sentTotal)
{
    m_receivedTotal = receivedTotal;
    m_sentTotal = sentTotal;
    m_rateReceived = received;
    m_rateSent = sent;
    showRates();
}

// ---- connect and disconnect

void ConnectWindow::onClickConnect()
{
    if (m_state == Generating || m_state == ConfigReady) {
        m_cancelRequested = true;
        if (m_watcher && m_watcher->isRunning())
            m_watcher->cancel();
        return;
    }
    doConnect();
}

void ConnectWindow::doConnect()
{
    switch (m_state) {
    case Idle:
        startConnection();
        break;
    case Generating:
        m_log->clear();
        QFile::remove(ALog::tracePath());
        setState(ConfigReady);
        doRestoreDNS(true);
        break;
    case ConfigReady:
        setState(Connecting);
        qDebug() << "OpenVpn config:" << m_makeOvpn.configFileName;
        m_autoConnectPending = false;
        m_connection.connect(
            m_currentServer, m_currentServer.user, m_currentServer.password, m_makeOvpn.configFileName, ProxySetting());
        break;
    case Connected:
    case Connecting:
        qDebug() << "Disconnecting";
        // Also ends an attempt that is still in its pause before the configuration is written.
        m_cancelRequested = true;
        setState(Idle);
        m_connection.disconnect(true);
        break;
    default:
        break;
    }
}

void ConnectWindow::startConnection()
{
    qDebug() << "Connecting";
    ++m_attempts;
    m_cancelRequested = false;
    m_host->onBack();

    const ServerInfo server = m_currentServer;
    if (server.ip.isEmpty() || server.flag.isEmpty()) {
        onSelectLocation();
        return;
    }
    if (m_tunnelUp) {
        ALog::Out(QStringLiteral("connection_.isConnected()"));
        return;
    }

    setState(Connecting);
    ConfigServer config;
    config.config = m_host->getConfigOvpnByServer(server.name);
    if (config.config.isEmpty()) {
        CustomMessageBox::critical(this, ProductTitle, tr("Error of loading of the config."));
        return;
    }
    config.cert = m_host->getCertifOvpnByUser(server.user);
    if (config.cert.isEmpty()) {
        CustomMessageBox::critical(this, ProductTitle, tr("Error of loading of the certificate."));
        return;
    }
    config.key = m_host->getKeyOvpnByUser(server.user);
    if (config.key.isEmpty()) {
        CustomMessageBox::critical(this, ProductTitle, tr("Error of loading of the key."));
        return;
    }

    setUiState(Connecting);
    doFirewall(false);
    sleepFor(ResponsivePauseMs);
    // A press during the pause has ended the attempt: nothing was started, so the page is idle now.
    if (m_cancelRequested) {
        setUiState(Idle);
        doFirewall(true);
        return;
    }

    const VpnProtocol protocol = getVpnProtocolByLabel(protocolSetting());
    setState(Generating);
    config.protocol = protocol.shortName;
    config.ip = server.ip;
    if (protocol.id == Stealth) {
        m_stunnelRestarts = 0;
        m_stunnel->setConfigAndRunProcess(server.ip, server.sslPort, server.sni);
        config.stunnelPort = m_stunnel->getPort();
    } else {
        config.ports = protocol.id == OpenVpnUdp ? server.udpPorts : server.tcpPorts;
    }
    doGenerateConfig(config);
}

void ConnectWindow::doGenerateConfig(const ConfigServer& config)
{
    setState(Generating);
    if (m_watcher) {
        m_watcher->waitForFinished();
        delete m_watcher;
    }
    m_watcher = new QFutureWatcher<bool>();
    connect(m_watcher, &QFutureWatcher<bool>::finished, this, &ConnectWindow::onAsyncFinished);
    MakeOVPNFile* writer = &m_makeOvpn;
    const bool stealth = useStealth();
    m_watcher->setFuture(QtConcurrent::run(
        [writer, config, stealth]() { return stealth ? writer->generateStunnel(config) : writer->generate(config); }));
}

void ConnectWindow::onAsyncFinished()
{
    switch (m_state) {
    case Generating:
    case ConfigReady:
        if (!m_cancelRequested) {
            doConnect();
        } else {
            setState(Idle);
            removeConnectionLeftovers();
            setUiState(Idle);
        }
        break;
    case Ending:
        removeConnectionLeftovers();
        ui.btnConnect->setEnabled(true);
        setState(Idle);
        break;
    default:
        break;
    }
}

void ConnectWindow::doRestoreDNS(bool)
{
    onAsyncFinished();
}

void ConnectWindow::removeConnectionLeftovers()
{
    if (useStealth())
        m_stunnel->killProcess();
    // The daemon runs OpenVPN from a copy of its own: the file with the private key goes now.
    m_makeOvpn.discard();
}

void ConnectWindow::onConnected()
{
    m_tunnelUp = true;
    // OpenVPN echoes each state change in a log line before the state line itself, so the facade
    // reports one connection twice; the second report changes nothing, unless the tunnel was
    // being set up again meanwhile.
    if (m_state == Connected) {
        if (m_shownState == Reestablishing)
            setUiState(Connected);
        return;
    }
    setState(Connected);
    m_attempts = 0;
    m_receivedTotal = 0;
    m_sentTotal = 0;
    m_rateReceived = 0;
    m_rateSent = 0;
    showRates();
    if (m_firewall.changeTimezone) {
        if (!m_connection.timezonechangeSupported()) {
            CustomMessageBox::information(this, ProductTitle, tr("Timezone changes does not support on your system."));
            LocalSettings::instance()->setValue(Keys::ChangeTimezone, false);
            m_firewall.changeTimezone = setting(Keys::ChangeTimezone).toBool();
        } else {
            NetworkManager::instance()->ipTimezoneRequest();
        }
    }
    setUiState(m_state);
    emit connected();
}

void ConnectWindow::onDisconnected()
{
    m_tunnelUp = false;
    setState(Ending);
    m_host->setTrayStatusConnecting();
    setUiState(Ending);
    ui.btnConnect->setEnabled(false);
    repaint();
    QCoreApplication::processEvents();
    doRestoreDNS(false);
    doFirewall(true);
    if (m_firewall.changeTimezone)
        doTimezone(true, QString());
}

void ConnectWindow::onConnectionError(QString message)
{
    // An error after "connected" (for one, a connected state with an error) ends without a
    // disconnect report; the next attempt must not take the tunnel for up.
    m_tunnelUp = false;
    setState(Ending);
    setUiState(Ending);
    m_host->setTrayStatusConnecting();
    if (m_attempts < MaxSilentAttempts) {
        setState(Idle);
        onClickConnect();
        return;
    }
    m_attempts = 0;
    if (!message.isEmpty()) {
        ALog::Out(QStringLiteral("onConnectionError()"));
        m_host->onShow();
        CustomMessageBox::information(this, ProductTitle, message);
    }
    removeConnectionLeftovers();
    setState(Idle);
    setUiState(Idle);
}

// OpenVPN keeps trying to reach the local port: a stunnel started again there carries the tunnel
// on. One that keeps dying ends the attempt.
void ConnectWindow::onStunnelStopped()
{
    if (m_state != Connecting && m_state != Connected)
        return;
    if (m_stunnelRestarts < MaxStunnelRestarts) {
        ++m_stunnelRestarts;
        ALog::Out(QStringLiteral("stunnel stopped: starting it again (%1 of %2)")
                      .arg(m_stunnelRestarts)
                      .arg(MaxStunnelRestarts));
        m_stunnel->restart();
        return;
    }
    ALog::Out(QStringLiteral("stunnel stopped %1 times: the connection ends").arg(m_stunnelRestarts + 1));
    m_connection.disconnect(false);
}

void ConnectWindow::onConnectionUpdateLog(QString text)
{
    qDebug() << "ConnectWindow::onConnectionUpdateLog - " << text;
    m_log->onUpdateLog(text);
}

void ConnectWindow::autoConnect()
{
    if (m_currentServer.ip.isEmpty() || m_currentServer.flag.isEmpty() || !m_autoConnectPending)
        return;
    m_autoConnectPending = false;
    onClickConnect();
}

void ConnectWindow::sleepFor(qint64 ms)
{
    const QDeadlineTimer deadline(ms);
    while (!deadline.hasExpired()) {
        QEventLoop loop;
        QTimer::singleShot(int(qBound<qint64>(0, deadline.remainingTime(), 100)), &loop, &QEventLoop::quit);
        loop.exec();
    }
}

QByteArray ConnectWindow::getConfigOVPNbyUrl(QString url)
{
    DownloadConfig download(url, nullptr);
    QEventLoop loop;
    connect(&download, &QThread::finished, &loop, &QEventLoop::quit);
    download.start(QThread::InheritPriority);
    if (!download.isFinished())
        loop.exec();
    download.wait();
    return download.success ? download.data.toLocal8Bit() : QByteArray();
}

// ---- locations and settings

void ConnectWindow::onSelectLocation()
{
    if (m_state == Idle || m_state > Ending)
        emit serverList(curentFilterId());
    else if (m_state != Ending)
        onShowLog();
}

void ConnectWindow::onSettings()
{
    emit settings();
}

void ConnectWindow::onAccount()
{
    emit account();
}

void ConnectWindow::onShowLog()
{
    m_log->show();
    m_log->raise();
}

int ConnectWindow::curentFilterId()
{
    QString name = setting(Keys::OvpnProtocol).toString();
    if (name.isEmpty()) {
        name = QStringLiteral("tcp");
        LocalSettings::instance()->setValue(Keys::OvpnProtocol, name);
    }
    return getVpnProtocolByLabel(name).id;
}

bool ConnectWindow::useStealth()
{
    return getVpnProtocolByLabel(protocolSetting()).id == Stealth;
}

bool ConnectWindow::installHelper()
{
    return m_connection.installHelper();
}

void ConnectWindow::setServers(const QVector<ServerInfo>& servers)
{
    qDebug() << "ConnectWindow::setServers count:" << servers.size();
    m_servers.clear();
    for (const ServerInfo& server : servers)
        m_servers.insert(ServerIdentif(server.user, server.name), server);
    const ServerIdentif id = identifFromSettings(setting(Keys::LastLocation).toString());
    if (m_servers.contains(id)) {
        onServerChanged(id);
    } else {
        m_currentServer = ServerInfo();
        showLocation(m_currentServer);
    }
}

void ConnectWindow::onServerChanged(const ServerIdentif& id)
{
    qDebug() << "ConnectWindow::onServerChanged" << id.first << id.second;
    if (!m_servers.contains(id))
        return;
    LocalSettings::instance()->setValue(Keys::LastLocation, identifToSettings(id));
    m_currentServer = m_servers.value(id);
    showLocation(m_currentServer);
    QString name = m_currentServer.name;
    m_host->setTrayActiveServer(name);
}

void ConnectWindow::showLocation(const ServerInfo& server)
{
    ui.lbLocation->setText(server.name);
    if (server.name.isEmpty())
        ui.lbFlag->clear();
    else
        ui.lbFlag->setPixmap(FlagPicture::pixmap(server.flag));
}

void ConnectWindow::clearSelection()
{
    m_currentServer = ServerInfo();
    LocalSettings::instance()->setValue(Keys::LastLocation, QString());
    showLocation(m_currentServer);
}

void ConnectWindow::setAcountData(QString login, QString password)
{
    m_login = login;
    m_password = password;
}

void ConnectWindow::loadSettings()
{
    m_login = setting(Keys::Login).toString();
    m_password = setting(Keys::Passwd).toString();
    m_autoConnectPending = setting(Keys::ConnectOnStart).toBool();

    if (!offersProtocol(m_currentServer, getVpnProtocolByLabel(protocolSetting()).id))
        clearSelection();

    const bool killConnect = setting(Keys::KillConnect).toBool();
    // Read for completeness; the IPv6 flag keeps the value it had when the page was made.
    const bool ipv6Block = setting(Keys::IPv6LeakProtect).toBool();
    Q_UNUSED(ipv6Block)
    const bool allowLocal = setting(Keys::AllowLocalDevices).toBool();
    const bool changeTimezone = setting(Keys::ChangeTimezone).toBool();
    if (changeTimezone != m_firewall.changeTimezone)
        m_firewall.changeTimezone = changeTimezone;
    if (killConnect != m_firewall.killConnect || allowLocal != m_firewall.allowLocalIp) {
        m_firewall.killConnect = killConnect;
        m_firewall.allowLocalIp = allowLocal;
        doFirewall(true);
    }
    setFullProtection(killConnect);
}

void ConnectWindow::saveSettings()
{
    const ServerIdentif id(m_currentServer.user, m_currentServer.name);
    qDebug() << "ConnectWindow::saveSettings" << identifToSettings(id);
    QSettings().setValue(Keys::LastLocation, identifToSettings(id));
}

// ---- firewall

void ConnectWindow::findMainServerHostFromURL()
{
    m_mainServerIps.clear();
    const QHostInfo info = QHostInfo::fromName(QUrl(NetworkManager::apiLink()).host());
    if (!info.addresses().isEmpty())
        m_mainServerIps.append(info.addresses().first().toString());
}

QStringList ConnectWindow::generateAllowIp() const
{
    QStringList list {QStringLiteral("127.0.0.1")};
    for (const ServerInfo& server : m_servers) {
        if (!server.ip.isEmpty() && !list.contains(server.ip, Qt::CaseSensitive))
            list.append(server.ip);
    }
    list.append(m_mainServerIps);
    return list;
}

void ConnectWindow::setFullProtection(bool on)
{
    if (on == m_fullProtection)
        return;
    if (!m_connection.firewallSupported()) {
        CustomMessageBox::information(this, ProductTitle, tr("Firewall does not support on your system."));
        return;
    }
    if (on) {
        const QStringList list = generateAllowIp();
        const auto text = [](bool flag) {
            return flag ? "true" : "false";
        };
        qDebug() << "kill_c: " << text(m_firewall.killConnect) << "ipv6_b: " << text(m_firewall.ipv6Block)
                 << "allow_loc_ip: " << text(m_firewall.allowLocalIp)
                 << "change_t: " << text(m_firewall.changeTimezone);
        qDebug() << "Allow Firewall ip:" << list.join(QLatin1Char(';'));
        m_firewall.idle = !m_autoConnectPending;
        if (m_connection.firewallOn(list.join(QLatin1Char(';')), TunnelInterface, m_firewall))
            m_fullProtection = !m_fullProtection;
    } else if (m_connection.firewallOff()) {
        m_fullProtection = !m_fullProtection;
    }
}

void ConnectWindow::doFirewall(bool idle)
{
    if (!m_fullProtection)
        return;
    const QStringList list = generateAllowIp();
    qDebug() << "Change Firewall ip:" << list.join(QLatin1Char(';'));
    m_firewall.idle = idle;
    m_connection.firewallChange(list.join(QLatin1Char(';')), TunnelInterface, m_firewall);
}

void ConnectWindow::onWirelessConnectionChanged(bool joined, QString ssid)
{
    Q_UNUSED(ssid)
    // Give the new network a moment, then make the rules follow it.
    if (joined)
        QTimer::singleShot(WirelessSettleMs, this, [this]() { doFirewall(); });
}

void ConnectWindow::logOut()
{
    setFullProtection(false);
}

void ConnectWindow::preClose()
{
    if (m_closing)
        return;
    m_closing = true;
    m_connection.disconnect(false);
    doRestoreDNS(false);
    m_connection.firewallOff();
    if (m_firewall.changeTimezone)
        doTimezone(true, QString());
}

// ---- time zone

void ConnectWindow::onChangeTimezone(QString zone, bool ok)
{
    qDebug() << "onChangeTimezone" << zone << (ok ? "true" : "false");
    if (ok && !zone.isEmpty())
        doTimezone(false, zone);
    else
        CustomMessageBox::information(this, ProductTitle, tr("Timezone is not changed because of no data."));
}

void ConnectWindow::doTimezone(bool restore, QString zone)
{
    m_connection.timezoneChange(restore, zone);
}

// ---- subscription, renewal and updates

void ConnectWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_subscriptionTimer->start();
    doUpdateSubscriptionInfo();
}

void ConnectWindow::hideEvent(QHideEvent* event)
{
    m_subscriptionTimer->stop();
    QWidget::hideEvent(event);
}

void ConnectWindow::doUpdateSubscriptionInfo()
{
    if (!isVisible())
        return;
    const Subscription subscription = NetworkManager::instance()->subscription(setting(Keys::VpnLogin).toString());
    const QDateTime expires = subscription.expiresTime();
    const qint64 days = Clock::currentDateTime().daysTo(expires);
    const bool near = expires.isValid() && qAbs(days) < 8;
    ui.lbSubscribtionInfo->setVisible(near);
    ui.btRenew->setVisible(near);
    ui.lbSubscribtionAdditionalInfo->setVisible(near);
    if (near)
        ui.lbSubscribtionInfo->setText(
            tr("VPN subscription expires: %1").arg(expires.toString(QStringLiteral("dd.MM.yyyy"))));
}

void ConnectWindow::onRenewButtonClicked()
{
    NetworkManager::instance()->getBuyLinkRequest(setting(Keys::VpnLogin).toString());
    ui.btRenew->setEnabled(false);
}

void ConnectWindow::goBuyLink(QString url)
{
    if (isVisible())
        QDesktopServices::openUrl(QUrl(url));
    ui.btRenew->setEnabled(true);
}

bool ConnectWindow::doUpdateClient(QString path)
{
    qDebug() << "doUpdateClient" << path;
    if (path.isEmpty()) {
        CustomMessageBox::information(this, ProductTitle, tr("Name of update file is empty."));
        return false;
    }
    return m_connection.updateInstall(path);
}

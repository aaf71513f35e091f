#include "ConnectWindow.h"

#include "Clock.h"
#include "ConnectHost.h"
#include "CustomMessageBox.h"
#include "DownloadConfig.h"
#include "FlagPicture.h"
#include "Keys.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "RotateWidget.h"
#include "ServiceAddresses.h"
#include "ShowLog.h"

#include <QCoreApplication>
#include <QDebug>
#include <QEvent>
#include <QEventLoop>
#include <QGraphicsOpacityEffect>
#include <QLabel>
#include <QPushButton>

namespace {

const QString ProductTitle = QStringLiteral("Tavrin");
const QSize LocationIconSize(15, 15);

using Look = ConnectionController::Look;

} // namespace

ConnectWindow::ConnectWindow(ConnectHost* host, QWidget* parent)
    : QWidget(parent)
    , m_host(host)
    , m_log(new ShowLog())
    , m_controller(host, ServiceAddresses::pinned())
{
    ui.setupUi(this);
    initUI();
    setUiState(Idle);

    connect(ui.btnSettings, &QPushButton::clicked, this, &ConnectWindow::onSettings);
    connect(ui.btnAccount, &QPushButton::clicked, this, &ConnectWindow::onAccount);
    connect(ui.btnConnect, &QPushButton::clicked, this, &ConnectWindow::onClickConnect);
    connect(ui.btnSelectLocation, &QPushButton::clicked, this, &ConnectWindow::onSelectLocation);
    connect(ui.btRenew, &QPushButton::clicked, this, &ConnectWindow::onRenewButtonClicked);

    ConnectionController* c = &m_controller;
    connect(c, &ConnectionController::stateChanged, this, [this](ConnectionController::State state) {
        emit stateChanged(ConnectionController::pageState(state));
    });
    connect(c, &ConnectionController::lookChanged, this, &ConnectWindow::showLook);
    connect(c, &ConnectionController::notice, this, &ConnectWindow::showNotice);
    connect(c, &ConnectionController::failed, this, &ConnectWindow::showFailure);
    connect(c, &ConnectionController::locationChanged, this, &ConnectWindow::showLocation);
    connect(c, &ConnectionController::locationWanted, this, [this] { emit serverList(curentFilterId()); });
    connect(c, &ConnectionController::connectStarted, this, [this] { m_host->onBack(); });
    connect(c, &ConnectionController::connected, this, &ConnectWindow::connected);
    connect(c, &ConnectionController::ratesChanged, this, [this](double received, double sent) {
        m_rateReceived = received;
        m_rateSent = sent;
        showRates();
    });
    connect(c, &ConnectionController::logLine, this, [this](const QString& text) {
        qDebug() << "ConnectWindow::onConnectionUpdateLog - " << text;
        m_log->onUpdateLog(text);
    });
    connect(c, &ConnectionController::logCleared, m_log.get(), &ShowLog::clear);
    connect(c, &ConnectionController::updateInstallAnswered, this, &ConnectWindow::updateInstallAnswered);
    connect(c, &ConnectionController::blockingChanged, this, &ConnectWindow::showBlocking);
    connect(ui.lbBlocked, &QLabel::linkActivated, this, &ConnectWindow::settings);
    NetworkManager* api = NetworkManager::instance();
    connect(c, &ConnectionController::timezoneWanted, api, &NetworkManager::ipTimezoneRequest);
    connect(api, &NetworkManager::gotIpTimezone, c, &ConnectionController::onTimezoneAnswer);
    connect(api, &NetworkManager::gotBuyLink, this, &ConnectWindow::goBuyLink);
    connect(api, &NetworkManager::buyLinkFailed, ui.btRenew, [this] { ui.btRenew->setEnabled(true); });

    m_subscriptionTimer.setInterval(SubscriptionIntervalMs);
    connect(&m_subscriptionTimer, &QTimer::timeout, this, &ConnectWindow::doUpdateSubscriptionInfo);
    ui.lbSubscribtionInfo->hide();
    ui.lbSubscribtionAdditionalInfo->hide();
    ui.btRenew->hide();
}

ConnectWindow::~ConnectWindow() = default;

void ConnectWindow::initUI()
{
    // The button is only its round picture.
    ui.btnConnect->setAttribute(Qt::WA_TranslucentBackground);
    ui.btnConnect->setAttribute(Qt::WA_NoSystemBackground);
    ui.btnConnect->setAttribute(Qt::WA_OpaquePaintEvent, false);
    ui.btnConnect->setFlat(true);
}

// ---- appearance

// The page's state numbers, for the screenshots: 0 connected, 1 and 5 idle, 2 connecting.
void ConnectWindow::setUiState(int state)
{
    switch (state) {
    case Connected:
        showLook(Look::Connected);
        break;
    case Idle:
    case Ending:
        showLook(Look::Idle);
        break;
    case Connecting:
        showLook(Look::Connecting);
        break;
    default:
        QCoreApplication::processEvents();
        break;
    }
}

void ConnectWindow::showLook(Look look)
{
    switch (look) {
    case Look::Connected:
        ui.btnConnect->setIcon(QIcon(QStringLiteral(":/resources/connect-red.svg")));
        ui.lbLocation->setStyleSheet(QStringLiteral("QLabel{font: 16px \"Arial\"; color: #7ed321;}"));
        ui.lbShield->setStyleSheet(QStringLiteral("image: url(:/resources/shield-green.svg);"));
        ui.lbRotatorGreen->show();
        ui.lbRotatorAnimation->hide();
        m_spinner.reset();
        ui.lbRates->show();
        m_host->setTrayStatusConnected(true);
        break;
    case Look::Idle:
    case Look::Failed:
        ui.btnConnect->setIcon(QIcon(QStringLiteral(":/resources/connect-green.svg")));
        ui.btnSelectLocation->setIcon(QIcon(QStringLiteral(":/resources/location-blue.svg")));
        ui.btnSelectLocation->setIconSize(LocationIconSize);
        ui.btnSelectLocation->setStyleSheet(QStringLiteral(
            "QPushButton{border: 0px;font: 16px \"Arial\";color: #33a5db;background-color:transparent;}"));
        ui.lbLocation->setStyleSheet(QStringLiteral("QLabel{font: 16px \"Arial\"; color: #4a4a4a;}"));
        ui.btnSettings->setEnabled(true);
        ui.btnSettings->setGraphicsEffect(nullptr);
        ui.btnSettings->setToolTip(tr("Settings"));
        ui.lbShield->setStyleSheet(QStringLiteral("image: url(:/resources/shield-grey.svg);"));
        ui.lbRotatorGreen->hide();
        ui.lbRotatorAnimation->setStyleSheet(
            QStringLiteral("QLabel{background-color:transparent; image: url(:/resources/rotator-orange.png);}"));
        ui.lbRotatorAnimation->show();
        m_spinner.reset();
        ui.lbRates->hide();
        m_host->setTrayStatusDisconnected(true);
        // A failed attempt is being retried or given up: the tray waits for which.
        if (look == Look::Failed)
            m_host->setTrayStatusConnecting();
        break;
    case Look::Connecting:
    case Look::Reestablishing:
        ui.btnConnect->setIcon(QIcon(QStringLiteral(":/resources/connect-orange.svg")));
        ui.btnSelectLocation->setIcon(QIcon(QStringLiteral(":/resources/location-info.svg")));
        ui.btnSelectLocation->setIconSize(LocationIconSize);
        ui.btnSelectLocation->setStyleSheet(QStringLiteral(
            "QPushButton{border: 0px;font: 16px \"Arial\";color: #9b9b9b;background-color:transparent;}"));
        ui.lbLocation->setStyleSheet(QStringLiteral("QLabel{font: 16px \"Arial\"; color: #ff9600;}"));
        ui.btnSettings->setEnabled(false);
        // A flat icon looks the same disabled: dim it, and say why it does not open.
        ui.btnSettings->setGraphicsEffect(new QGraphicsOpacityEffect(ui.btnSettings));
        static_cast<QGraphicsOpacityEffect*>(ui.btnSettings->graphicsEffect())->setOpacity(0.35);
        ui.btnSettings->setToolTip(tr("Disconnect first to change the settings"));
        ui.lbRotatorGreen->hide();
        ui.lbRotatorAnimation->show();
        ui.lbRotatorAnimation->clear();
        ui.lbRotatorAnimation->setStyleSheet(QStringLiteral("QLabel{background-color:transparent; image: none;}"));
        m_spinner
            = std::make_unique<RotateWidget>(QStringLiteral(":/resources/rotator-orange.png"), ui.lbRotatorAnimation);
        m_spinner->show();
        m_spinner->start();
        ui.lbRates->hide();
        if (look == Look::Reestablishing)
            m_host->setTrayStatusReestablishing();
        else
            m_host->setTrayStatusConnecting();
        break;
    }
    m_look = look;
    applyStateTexts();
    QCoreApplication::processEvents();
}

void ConnectWindow::loadSettings()
{
    m_controller.loadSettings();
    // With the kill switch on, the program's own requests never wait for a name lookup its rules may drop.
    ServiceAddresses::setBypassingLookups(LocalSettings::instance()->value(Keys::KillConnect).toBool());
}

// While the kill switch's rules for no connection are in force, nothing but the program's own requests
// gets out: the page and the tray say so.
void ConnectWindow::showBlocking(bool blocking)
{
    CustomMessageBox::setInternetBlocked(blocking);
    ui.lbBlocked->setVisible(blocking);
    m_host->setTrayBlocked(blocking);
}

// The texts that follow the appearance, set again after a language change.
void ConnectWindow::applyStateTexts()
{
    ui.lbBlocked->setText(
        QStringLiteral("%1 <a href=\"settings\">%2</a>")
            .arg(tr("The kill switch blocks the Internet while you are not connected."), tr("Change")));
    if (m_look == Look::Connected) {
        // The connected look keeps the button of the connecting one.
        ui.btnSelectLocation->setText(tr("Show connection"));
        ui.lbStatus->setText(tr("Connected"));
        showRates();
    } else if (m_look == Look::Connecting) {
        ui.btnSelectLocation->setText(tr("Show connection"));
        ui.lbStatus->setText(tr("Connecting..."));
    } else if (m_look == Look::Reestablishing) {
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

void ConnectWindow::showNotice(ConnectionController::Notice notice)
{
    using Notice = ConnectionController::Notice;
    switch (notice) {
    case Notice::NoConfig:
        CustomMessageBox::critical(this, ProductTitle, tr("Error of loading of the config."));
        break;
    case Notice::NoCertificate:
        CustomMessageBox::critical(this, ProductTitle, tr("Error of loading of the certificate."));
        break;
    case Notice::NoKey:
        CustomMessageBox::critical(this, ProductTitle, tr("Error of loading of the key."));
        break;
    case Notice::FirewallUnsupported:
        CustomMessageBox::information(this, ProductTitle, tr("Firewall does not support on your system."));
        break;
    case Notice::TimezoneUnsupported:
        CustomMessageBox::information(this, ProductTitle, tr("Timezone changes does not support on your system."));
        break;
    case Notice::TimezoneUnknown:
        CustomMessageBox::information(this, ProductTitle, tr("Timezone is not changed because of no data."));
        break;
    case Notice::UpdatePathEmpty:
        CustomMessageBox::information(this, ProductTitle, tr("Name of update file is empty."));
        break;
    }
}

void ConnectWindow::showFailure(const QString& message)
{
    if (message.isEmpty())
        return;
    m_host->onShow();
    CustomMessageBox::information(this, ProductTitle, message);
}

void ConnectWindow::onSelectLocation()
{
    const int shown = state();
    if (shown == Idle || shown > Ending)
        emit serverList(curentFilterId());
    else if (shown != Ending)
        onShowLog();
}

void ConnectWindow::onShowLog()
{
    m_log->show();
    m_log->raise();
}

void ConnectWindow::showLocation(const ServerInfo& server)
{
    ui.lbLocation->setText(server.name);
    if (server.name.isEmpty()) {
        ui.lbFlag->clear();
        return;
    }
    ui.lbFlag->setPixmap(FlagPicture::pixmap(server.flag));
    QString name = server.name;
    m_host->setTrayActiveServer(name);
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

// ---- subscription and renewal

void ConnectWindow::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    m_subscriptionTimer.start();
    doUpdateSubscriptionInfo();
}

void ConnectWindow::hideEvent(QHideEvent* event)
{
    m_subscriptionTimer.stop();
    QWidget::hideEvent(event);
}

void ConnectWindow::doUpdateSubscriptionInfo()
{
    if (!isVisible())
        return;
    const Subscription subscription
        = NetworkManager::instance()->subscription(LocalSettings::instance()->value(Keys::VpnLogin).toString());
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
    NetworkManager::instance()->getBuyLinkRequest(LocalSettings::instance()->value(Keys::VpnLogin).toString());
    ui.btRenew->setEnabled(false);
}

void ConnectWindow::goBuyLink(QString url)
{
    if (isVisible())
        CustomMessageBox::openLink(this, url);
    ui.btRenew->setEnabled(true);
}

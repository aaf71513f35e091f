#include "AccountWindow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

#include "Clock.h"
#include "CustomMessageBox.h"
#include "LocalSettings.h"
#include "NetworkManager.h"
#include "WidgetStyle.h"

AccountWindow::AccountWindow(QWidget* parent)
    : QWidget(parent)
    , m_pbBack(new QPushButton(this))
    , m_lbAccount(new QLabel(this))
    , m_pbLogOut(new QPushButton(this))
    , m_lbLoginTitle(new QLabel(this))
    , m_lbLogin(new QLabel(this))
    , m_btAccountChange(new QPushButton(this))
    , m_lbExpiresDate(new QLabel(this))
    , m_btRenew(new QPushButton(this))
    , m_btBuy(new QPushButton(this))
    , m_lbPayments(new QLabel(this))
{
    WidgetStyle::setUpPage(this, QStringLiteral("AccountWindow"));

    WidgetStyle::setUpBackButton(m_pbBack);
    m_pbLogOut->setObjectName(QStringLiteral("pbLogOut"));
    m_lbLoginTitle->setProperty("note", true);
    m_lbLogin->setObjectName(QStringLiteral("lbLogin"));
    m_lbLogin->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_btAccountChange->setObjectName(QStringLiteral("btAccountChange"));
    m_lbExpiresDate->setObjectName(QStringLiteral("lbExpiresDate"));
    m_lbExpiresDate->setWordWrap(true);
    m_btRenew->setObjectName(QStringLiteral("btRenew"));
    m_btBuy->setObjectName(QStringLiteral("btBuy"));
    m_btBuy->setProperty("secondary", true);
    m_lbPayments->setProperty("note", true);
    m_lbPayments->setWordWrap(true);
    m_lbPayments->setAlignment(Qt::AlignCenter);
    for (QPushButton* button : {m_pbLogOut, m_btAccountChange, m_btRenew, m_btBuy})
        button->setCursor(Qt::PointingHandCursor);

    QHBoxLayout* top = WidgetStyle::topRow(m_pbBack, m_lbAccount, m_pbLogOut);

    auto* card = new QWidget(this);
    card->setObjectName(QStringLiteral("accountCard"));
    card->setAttribute(Qt::WA_StyledBackground);
    auto* loginRow = new QHBoxLayout;
    loginRow->addWidget(m_lbLogin, 1);
    loginRow->addWidget(m_btAccountChange);
    auto* cardLayout = new QVBoxLayout(card);
    cardLayout->setContentsMargins(16, 14, 16, 14);
    cardLayout->setSpacing(6);
    cardLayout->addWidget(m_lbLoginTitle);
    cardLayout->addLayout(loginRow);
    cardLayout->addSpacing(6);
    cardLayout->addWidget(m_lbExpiresDate);

    auto* body = new QVBoxLayout;
    body->setContentsMargins(24, 16, 24, 24);
    body->setSpacing(12);
    body->addWidget(card);
    body->addSpacing(12);
    body->addWidget(m_btRenew);
    body->addWidget(m_btBuy);
    body->addStretch(1);
    body->addWidget(m_lbPayments);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(top);
    layout->addLayout(body, 1);

    connect(m_pbBack, &QPushButton::clicked, this, &AccountWindow::back);
    connect(m_pbLogOut, &QPushButton::clicked, this, &AccountWindow::returnToSignUp);
    connect(m_btAccountChange, &QPushButton::clicked, this, &AccountWindow::accountChanged);
    connect(m_btRenew, &QPushButton::clicked, this, &AccountWindow::onRenewButtonClicked);
    connect(m_btBuy, &QPushButton::clicked, this, &AccountWindow::onBuyButtonClicked);
    connect(NetworkManager::instance(), &NetworkManager::gotBuyLink, this, &AccountWindow::goBuyLink);
    connect(NetworkManager::instance(), &NetworkManager::buyLinkFailed, this, &AccountWindow::onBuyLinkFailed);
    retranslate();
}

void AccountWindow::retranslate()
{
    m_lbAccount->setText(tr("Account"));
    m_pbLogOut->setText(tr("Log out"));
    m_lbLoginTitle->setText(tr("Login VPN:"));
    m_btAccountChange->setText(tr("Change"));
    m_btRenew->setText(tr("Renew on site"));
    m_btBuy->setText(tr("Buy VPN subscription on the site"));
    m_lbPayments->setText(tr("On the site we accept payments through various payment systems, including Bitcoin, "
                             "PayPal, Yandex Money and others."));
    showExpiry();
}

void AccountWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void AccountWindow::showEvent(QShowEvent* event)
{
    const QString vpnLogin = LocalSettings::instance()->value(Keys::VpnLogin).toString();
    const Subscription subscription = NetworkManager::instance()->subscription(vpnLogin);
    m_lbLogin->setText(subscription.login().trimmed());
    m_lbExpiresDate->setProperty("expiry", subscription.expiresTime());
    showExpiry();
    m_btAccountChange->setVisible(NetworkManager::instance()->cacheUsers().size() > 1);
    QWidget::showEvent(event);
}

void AccountWindow::showExpiry()
{
    const QDateTime expires = m_lbExpiresDate->property("expiry").toDateTime();
    m_lbExpiresDate->setText(tr("VPN subscription expires: %1").arg(expires.toString(QStringLiteral("dd.MM.yyyy"))));
    // A subscription that has run out is shown in the warning colour.
    const bool expired = expires.isValid() && expires < Clock::currentDateTime();
    if (m_lbExpiresDate->property("expired").toBool() != expired) {
        m_lbExpiresDate->setProperty("expired", expired);
        m_lbExpiresDate->style()->unpolish(m_lbExpiresDate);
        m_lbExpiresDate->style()->polish(m_lbExpiresDate);
    }
}

void AccountWindow::onRenewButtonClicked()
{
    NetworkManager::instance()->getBuyLinkRequest(m_lbLogin->text());
    m_btRenew->setEnabled(false);
}

void AccountWindow::onBuyButtonClicked()
{
    NetworkManager::instance()->getBuyLinkRequest(QString());
    m_btBuy->setEnabled(false);
}

void AccountWindow::goBuyLink(QString url)
{
    if (isVisible())
        CustomMessageBox::openLink(this, url);
    m_btRenew->setEnabled(true);
    m_btBuy->setEnabled(true);
}

void AccountWindow::onBuyLinkFailed(NetworkManager::ApiError error)
{
    m_btRenew->setEnabled(true);
    m_btBuy->setEnabled(true);
    if (isVisible() && error == NetworkManager::UnverifiedService)
        CustomMessageBox::critical(this, QStringLiteral("Tavrin"), CustomMessageBox::unverifiedServiceText());
}

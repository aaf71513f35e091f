#include "SubscriptionPurchaseWindow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariant>

#include "CustomMessageBox.h"
#include "NetworkManager.h"
#include "WidgetStyle.h"

SubscriptionPurchaseWindow::SubscriptionPurchaseWindow(QWidget* parent)
    : QWidget(parent)
    , m_lbAccount(new QLabel(this))
    , m_pbLogOut(new QPushButton(this))
    , m_lbIcon(new QLabel(this))
    , m_lbNoSubscription(new QLabel(this))
    , m_btBuy(new QPushButton(this))
    , m_lbPayments(new QLabel(this))
{
    WidgetStyle::setUpPage(this, QStringLiteral("SubscriptionPurchaseWindow"));

    m_pbLogOut->setObjectName(QStringLiteral("pbLogOut"));
    m_lbIcon->setPixmap(QIcon(QStringLiteral(":/resources/shield-grey.svg")).pixmap(72, 72));
    m_lbIcon->setAlignment(Qt::AlignCenter);
    m_lbNoSubscription->setObjectName(QStringLiteral("lbNoSubscription"));
    m_lbNoSubscription->setAlignment(Qt::AlignCenter);
    m_lbNoSubscription->setWordWrap(true);
    m_btBuy->setObjectName(QStringLiteral("btBuy"));
    m_lbPayments->setProperty("note", true);
    m_lbPayments->setWordWrap(true);
    m_lbPayments->setAlignment(Qt::AlignCenter);
    m_btBuy->setCursor(Qt::PointingHandCursor);
    m_pbLogOut->setCursor(Qt::PointingHandCursor);

    QHBoxLayout* top = WidgetStyle::topRow(nullptr, m_lbAccount, m_pbLogOut);

    auto* body = new QVBoxLayout;
    body->setContentsMargins(24, 16, 24, 24);
    body->setSpacing(14);
    body->addStretch(1);
    body->addWidget(m_lbIcon);
    body->addWidget(m_lbNoSubscription);
    body->addSpacing(10);
    body->addWidget(m_btBuy);
    body->addStretch(2);
    body->addWidget(m_lbPayments);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(top);
    layout->addLayout(body, 1);

    connect(m_btBuy, &QPushButton::clicked, this, &SubscriptionPurchaseWindow::onBuyButtonClicked);
    connect(m_pbLogOut, &QPushButton::clicked, this, &SubscriptionPurchaseWindow::returnToSignUp);
    connect(NetworkManager::instance(), &NetworkManager::gotBuyLink, this, &SubscriptionPurchaseWindow::goBuyLink);
    connect(
        NetworkManager::instance(), &NetworkManager::buyLinkFailed, this, &SubscriptionPurchaseWindow::onBuyLinkFailed);
    retranslate();
}

void SubscriptionPurchaseWindow::retranslate()
{
    m_lbAccount->setText(tr("Account"));
    m_pbLogOut->setText(tr("Log out"));
    m_lbNoSubscription->setText(tr("Your account has no active VPN subscription."));
    m_btBuy->setText(tr("Buy VPN subscription on the site"));
    m_lbPayments->setText(tr("On the site we accept payments through various payment systems, including Bitcoin, "
                             "PayPal, Yandex Money and others."));
}

void SubscriptionPurchaseWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::LanguageChange)
        retranslate();
    QWidget::changeEvent(event);
}

void SubscriptionPurchaseWindow::onBuyButtonClicked()
{
    NetworkManager::instance()->getBuyLinkRequest(QString());
    m_btBuy->setEnabled(false);
}

void SubscriptionPurchaseWindow::goBuyLink(QString url)
{
    if (isVisible()) {
        CustomMessageBox::openLink(this, url);
        emit buyLinkActivated();
    }
    m_btBuy->setEnabled(true);
}

void SubscriptionPurchaseWindow::onBuyLinkFailed(NetworkManager::ApiError error)
{
    m_btBuy->setEnabled(true);
    if (isVisible() && error == NetworkManager::UnverifiedService)
        CustomMessageBox::critical(this, QStringLiteral("Tavrin"), CustomMessageBox::unverifiedServiceText());
}

#pragma once

#include <QWidget>

#include "NetworkManager.h"

class QLabel;
class QPushButton;

// Shown when the account has no subscription: offers the purchase on the web site and log-out.
class SubscriptionPurchaseWindow : public QWidget
{
    Q_OBJECT

public:
    explicit SubscriptionPurchaseWindow(QWidget* parent = nullptr);

    QPushButton* buyButton() const { return m_btBuy; }
    QPushButton* logOutButton() const { return m_pbLogOut; }

signals:
    void returnToSignUp();
    void buyLinkActivated();

public slots:
    void onBuyButtonClicked();
    void goBuyLink(QString url);
    void onBuyLinkFailed(NetworkManager::ApiError error);

protected:
    void changeEvent(QEvent* event) override;

private:
    void retranslate();

    QLabel* m_lbAccount;
    QPushButton* m_pbLogOut;
    QLabel* m_lbIcon;
    QLabel* m_lbNoSubscription;
    QPushButton* m_btBuy;
    QLabel* m_lbPayments;
};

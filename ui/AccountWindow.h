#pragma once

#include <QWidget>

#include "NetworkManager.h"

class QLabel;
class QPushButton;

// The account page: the selected VPN login and its expiry, log-out, a change of VPN login,
// renewal and purchase on the web site.
class AccountWindow : public QWidget
{
    Q_OBJECT

public:
    explicit AccountWindow(QWidget* parent = nullptr);

    QLabel* loginLabel() const { return m_lbLogin; }
    QLabel* expiresLabel() const { return m_lbExpiresDate; }
    QPushButton* changeButton() const { return m_btAccountChange; }
    QPushButton* renewButton() const { return m_btRenew; }
    QPushButton* buyButton() const { return m_btBuy; }
    QPushButton* logOutButton() const { return m_pbLogOut; }
    QPushButton* backButton() const { return m_pbBack; }

signals:
    void back();
    void returnToSignUp();
    void accountChanged();

public slots:
    void onBuyButtonClicked();
    void onRenewButtonClicked();
    void goBuyLink(QString url);
    void onBuyLinkFailed(NetworkManager::ApiError error);

protected:
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void retranslate();
    void showExpiry();

    QPushButton* m_pbBack;
    QLabel* m_lbAccount;
    QPushButton* m_pbLogOut;
    QLabel* m_lbLoginTitle;
    QLabel* m_lbLogin;
    QPushButton* m_btAccountChange;
    QLabel* m_lbExpiresDate;
    QPushButton* m_btRenew;
    QPushButton* m_btBuy;
    QLabel* m_lbPayments;
};

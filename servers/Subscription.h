#pragma once

#include <QDateTime>
#include <QString>

// One VPN login of the service account.
class Subscription
{
public:
    Subscription() = default;
    Subscription(const QString& login, const QString& password, const QDateTime& expires);

    QString login() const { return m_login; }
    QString password() const { return m_password; }
    QDateTime expiresTime() const { return m_expires; }

private:
    QString m_login;
    QString m_password;
    QDateTime m_expires;
};

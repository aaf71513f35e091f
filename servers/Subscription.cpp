#include "Subscription.h"

Subscription::Subscription(const QString& login, const QString& password, const QDateTime& expires)
    : m_login(login)
    , m_password(password)
    , m_expires(expires)
{ }

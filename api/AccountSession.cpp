#include "AccountSession.h"

#include <QDebug>

#include <utility>

#include "LocalSettings.h"

int AccountSession::serverListRetryMs = 8000;
int AccountSession::updateCheckDelayMs = 5000;

namespace {
QVariant setting(const QString& key)
{
    return LocalSettings::instance()->value(key);
}

void setSetting(const QString& key, const QVariant& value)
{
    LocalSettings::instance()->setValue(key, value);
}
} // namespace

AccountSession::AccountSession(std::function<bool()> tunnelUp, QObject* parent)
    : QObject(parent)
    , m_tunnelUp(std::move(tunnelUp))
{
    m_serverListRetry.setSingleShot(true);
    m_updateCheck.setSingleShot(true);
    connect(&m_serverListRetry, &QTimer::timeout, this, &AccountSession::requestServerList);
    connect(&m_updateCheck, &QTimer::timeout, this, &AccountSession::updateCheckDue);
    NetworkManager* network = NetworkManager::instance();
    connect(network, &NetworkManager::serverUpdated, this, &AccountSession::onServerListAnswered);
    connect(network, &NetworkManager::auth, this, &AccountSession::onSignInAnswered);
    connect(network, &NetworkManager::latenciesMeasured, this, [this] {
        if (!m_signedOut && !m_tunnelUp())
            emit latenciesArrived(NetworkManager::instance()->servers());
    });
}

bool AccountSession::resume()
{
    if (!setting(Keys::RememberUser).toBool())
        return false;
    const QString login = setting(Keys::Login).toString();
    const QString password = setting(Keys::Passwd).toString();
    if (login.isEmpty() || password.isEmpty())
        return false;
    m_resuming = true;
    m_signedOut = false;
    emit resumedFromCache(NetworkManager::instance()->servers());
    signIn(login, password);
    return true;
}

void AccountSession::signInByHand(const QString& login, const QString& password)
{
    LocalSettings::instance()->createDefaultSettings();
    signIn(login, password);
}

void AccountSession::signIn(const QString& login, const QString& password)
{
    setSetting(Keys::Login, login);
    setSetting(Keys::Passwd, password);
    m_liteAccount = LocalSettings::instance()->isLiteVersion();
    emit signingIn();
    NetworkManager::instance()->authRequest(login, password);
}

void AccountSession::signInAgain()
{
    NetworkManager::instance()->authRequest(setting(Keys::Login).toString(), setting(Keys::Passwd).toString());
}

void AccountSession::onSignInAnswered(NetworkManager::ApiError error, const QString& message)
{
    qDebug() << "Auth Request finished [code:" << error << "error: " << message << "]";
    const bool accepted = error == NetworkManager::Success || error == NetworkManager::LiteAccount;
    emit signInAnswered(accepted);
    switch (error) {
    case NetworkManager::Success:
    case NetworkManager::LiteAccount:
        acceptAccount(error == NetworkManager::LiteAccount);
        break;
    case NetworkManager::BadVersion:
        emit versionRejected();
        break;
    case NetworkManager::WrongLogin:
        emit signInRefused();
        break;
    case NetworkManager::NoSubscription:
        m_signedOut = false;
        emit subscriptionMissing();
        break;
    default:
        m_liteAccount = LocalSettings::instance()->isLiteVersion();
        if (m_resuming) {
            // Offline start: no message, the cached account stays in use.
            scheduleUpdateCheck();
            m_resuming = false;
            emit continuingOffline(NetworkManager::instance()->servers());
        } else {
            m_signedOut = true;
            emit signInFailed(error);
        }
        break;
    }
}

void AccountSession::acceptAccount(bool lite)
{
    m_liteAccount = lite;
    LocalSettings::instance()->setIsLiteVersion(lite);
    if (lite)
        setSetting(Keys::KillConnect, false);

    const bool fromSignInPage = m_signedOut;
    m_signedOut = false;
    const bool remember = setting(Keys::RememberUser).toBool();
    const QStringList users = NetworkManager::instance()->cacheUsers();
    if (users.size() >= 2 && !remember) {
        // Asked only from the sign-in page; elsewhere the page that is up stays.
        if (fromSignInPage)
            emit vpnLoginChoiceNeeded(users);
        return;
    }
    if (users.size() == 1 && !remember) {
        setSetting(Keys::VpnLogin, users.first());
    } else {
        const QString vpnLogin = setting(Keys::VpnLogin).toString();
        if (vpnLogin.isEmpty() || !users.contains(vpnLogin, Qt::CaseSensitive))
            setSetting(Keys::VpnLogin, users.isEmpty() ? QString() : users.first());
    }
    succeed();
}

void AccountSession::chooseVpnLogin(const QString& vpnLogin)
{
    setSetting(Keys::VpnLogin, vpnLogin);
    succeed();
}

void AccountSession::succeed()
{
    setSetting(Keys::RememberUser, true);
    emit signedIn(NetworkManager::instance()->servers());
    scheduleUpdateCheck();
}

void AccountSession::onServerListAnswered(NetworkManager::ApiError error, const QString& message)
{
    qDebug() << "onServerUpdateFinished success=" << error << "error=" << message;
    if (m_signedOut || m_tunnelUp())
        return;
    if (error == NetworkManager::Success)
        emit serverListArrived(NetworkManager::instance()->servers());
    else if (error == NetworkManager::BadVersion)
        emit versionRejected();
    else
        m_serverListRetry.start(serverListRetryMs);
}

void AccountSession::requestServerList()
{
    NetworkManager::instance()->serverListRequest();
    NetworkManager::instance()->pingDoubleServerRequest();
}

void AccountSession::signOut()
{
    LocalSettings::instance()->createDefaultSettings();
    m_serverListRetry.stop();
    m_resuming = false;
    m_liteAccount = true;
    m_signedOut = true;
    emit signedOut();
    NetworkManager::instance()->clearCache();
}

void AccountSession::scheduleUpdateCheck()
{
    m_updateRetryMs = updateCheckDelayMs;
    m_updateCheck.start(updateCheckDelayMs);
}

void AccountSession::retryUpdateCheck()
{
    if (m_updateRetryMs <= 0)
        m_updateRetryMs = updateCheckDelayMs;
    m_updateCheck.start(m_updateRetryMs);
    m_updateRetryMs = qMin(m_updateRetryMs, UpdateRetryMaxMs / 2) * 2;
}

#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QVector>

#include <functional>

#include "NetworkManager.h"
#include "ServerInfo.h"

// The account behind the main window: signs in (by hand, as the remembered user, or again), reads the service's
// answers to the sign-in and to server-list refreshes, retries a failed refresh, schedules the update check and signs
// out. It decides what comes next and announces it; the window turns each announcement into a page or a message.
class AccountSession : public QObject
{
    Q_OBJECT

public:
    // `tunnelUp` tells whether the VPN is connected: a server list that arrives meanwhile is left alone.
    explicit AccountSession(std::function<bool()> tunnelUp, QObject* parent = nullptr);

    // Pause before a failed server list is asked for again, and before the update check that follows a sign-in or
    // an offline start, or that first retries a failed check. Tests shorten them.
    static int serverListRetryMs;
    static int updateCheckDelayMs;
    // Each further failed check doubles the pause before the next one, up to this.
    static constexpr int UpdateRetryMaxMs = 3600 * 1000;

    // With a remembered user, goes on from the cached account while signing in in the background; false, with
    // nothing sent, when no user is remembered.
    bool resume();
    // A sign-in typed by hand starts from the default settings, whoever used the program before.
    void signInByHand(const QString& login, const QString& password);
    // Sends the stored credentials again, e.g. when a subscription may have been bought meanwhile.
    void signInAgain();
    // The VPN login picked after vpnLoginChoiceNeeded(), or to change to another one.
    void chooseVpnLogin(const QString& vpnLogin);
    void requestServerList();
    // Forgets the user: default settings, no cached account, no pending refresh.
    void signOut();
    // The check after a sign-in or an offline start; also resets the retry pause.
    void scheduleUpdateCheck();
    // The check got no answer: asked again after a pause that grows with each failure. An answer without an offer
    // schedules nothing, so checking ends until the next sign-in.
    void retryUpdateCheck();

    bool isLiteAccount() const { return m_liteAccount; }
    bool isUpdateCheckPending() const { return m_updateCheck.isActive(); }
    int updateCheckDelay() const { return m_updateCheck.interval(); }

signals:
    void resumedFromCache(const QVector<ServerInfo>& servers);
    // A sign-in request is about to go out.
    void signingIn();
    // Any answer to a sign-in, before what follows from it; accepted for a full or lite account.
    void signInAnswered(bool accepted);
    // Signed in from the sign-in page to an account with several VPN logins and none remembered.
    void vpnLoginChoiceNeeded(const QStringList& vpnLogins);
    void signedIn(const QVector<ServerInfo>& servers);
    // The remembered user's sign-in failed: the cached account stays in use.
    void continuingOffline(const QVector<ServerInfo>& servers);
    void signInRefused();
    void subscriptionMissing();
    // Back to the sign-in page: the service or the network failed, or the service did not verify.
    void signInFailed(NetworkManager::ApiError error);
    // The service no longer accepts this version; the program is to end.
    void versionRejected();
    void serverListArrived(const QVector<ServerInfo>& servers);
    // The servers again, with the latencies of a finished pass.
    void latenciesArrived(const QVector<ServerInfo>& servers);
    void signedOut();
    void updateCheckDue();

private:
    void signIn(const QString& login, const QString& password);
    void onSignInAnswered(NetworkManager::ApiError error, const QString& message);
    void onServerListAnswered(NetworkManager::ApiError error, const QString& message);
    void acceptAccount(bool lite);
    void succeed();

    std::function<bool()> m_tunnelUp;
    QTimer m_serverListRetry;
    QTimer m_updateCheck;
    int m_updateRetryMs = 0;
    // The sign-in page is up: from the start until an account is accepted, and again after a failure or sign-out.
    bool m_signedOut = true;
    // A remembered user's start whose sign-in has not failed yet: a failure then goes on offline.
    bool m_resuming = false;
    bool m_liteAccount = true;
};

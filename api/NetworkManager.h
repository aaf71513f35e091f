#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QMutex>
#include <QObject>
#include <QPair>
#include <QScopedPointer>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVector>

#include <memory>

#include "AccountAnswer.h"
#include "ServerInfo.h"
#include "Subscription.h"

class GetManager;
class PingManager;
class QUrl;

// The process-wide client of the Velmora service: signs in, refreshes the server list, asks for updates, the
// exit's time zone and purchase links, and keeps the account data, with an offline copy in the settings store.
class NetworkManager : public QObject
{
    Q_OBJECT

public:
    enum ApiError {
        Success = 0,
        WrongLogin = 1,
        BadVersion = 2,
        LiteAccount = 3,
        NoSubscription = 4,
        NetworkFailure = 5,
        // The service's certificate did not verify, so nothing was sent; the message names the TLS errors.
        UnverifiedService = 6,
    };
    Q_ENUM(ApiError)

    static NetworkManager* instance();
    // Destroys the client (saving its cache) so that the next instance() starts as a new run would. For tests.
    static void resetInstance();

    static QString apiLink();
    static QString siteApiLink();
    bool checkInternet();

    // Readers for the pages and the background configuration task; the account tables are guarded by one mutex.
    QVector<ServerInfo> servers();
    QList<Subscription> subscriptions();
    Subscription subscription(const QString& login);
    QStringList cacheUsers();
    QByteArray getCertifOvpnByUser(const QString& login);
    QByteArray getKeyOvpnByUser(const QString& login);
    QByteArray getConfigOVPNbyServer(QString server);

    void saveCachedData();
    void loadCachedData();
    void clearCache();
    static QByteArray cacheMapToArray(const QMap<QString, QByteArray>& map);
    static QMap<QString, QByteArray> cacheArrayToMap(const QByteArray& array);

signals:
    void auth(NetworkManager::ApiError error, QString message);
    void serverUpdated(NetworkManager::ApiError error, QString message);
    // A latency pass over every server has ended and its results are in servers().
    void latenciesMeasured();
    void programUpdate(QString version, QString link, bool success);
    void gotIpTimezone(QString timezone, bool success);
    void gotBuyLink(QString link);
    // NetworkFailure or UnverifiedService, with the request's error text.
    void buyLinkFailed(NetworkManager::ApiError error, QString message);

public slots:
    void authRequest(QString user, QString password);
    void serverListRequest();
    void programUpdateRequest();
    void ipTimezoneRequest();
    void pingDoubleServerRequest();
    void getBuyLinkRequest(QString login);
    void slotAuthFinished();
    void slotServerListFinished();
    void slotProgramUpdateFinished();
    void slotIpTimezoneFinished();
    void onPingServersFinished();
    void onRequestPingDoubleServerFinished(int);
    void onRequestGetBuyLinkFinished();

private:
    NetworkManager();
    ~NetworkManager() override;

    QUrl serviceUrl(const QList<QPair<QString, QString>>& items) const;
    // Reads the answers of the account channel's next request as they arrive.
    void readAnswerOfKind(AccountAnswer::Kind kind);
    void onAccountAttempt();
    void onAccountPiece(const QByteArray& piece);
    // The account channel's answer, read as it arrived where it is the one that finished, else read now.
    std::unique_ptr<AccountAnswer> takeAnswer(AccountAnswer::Kind kind);
    // Applies the sign-in answer; false when an element stopped it, after emitting auth() for it.
    bool applySignInAnswer(bool* lite);
    void applyServerListAnswer();
    void startPing();
    // Files the ping manager's results with the servers. The cache does not change with them: its lines carry no
    // latency.
    void takeLatencies();

    static NetworkManager* _self;

    AccountData m_account;
    // The answer of the account channel being read.
    std::unique_ptr<AccountAnswer> m_incoming;
    AccountAnswer::Kind m_incomingKind = AccountAnswer::SignIn;
    QMutex m_mutex;
    QString m_login;
    QString m_password;
    QMap<QString, int> m_doubleServerPings;

    PingManager* m_pingManager = nullptr;
    QSharedPointer<GetManager> authGet;
    QSharedPointer<GetManager> updateGet;
    QSharedPointer<GetManager> timezoneGet;
    QSharedPointer<GetManager> doubleServerGet;
    QScopedPointer<GetManager> buyLinkGet;
};

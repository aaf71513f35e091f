#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVector>

#include <memory>

#include "ServerInfo.h"
#include "Subscription.h"

// The account data that sign-in and the list refresh bring and the offline cache keeps.
struct AccountData
{
    QVector<ServerInfo> servers;
    QMap<QString, Subscription> subscriptions;
    QByteArray config;
    QMap<QString, QByteArray> certificates;
    QMap<QString, QByteArray> keys;
};

// Reads one answer of the service into the account data, element by element in document order: the elements before
// one that stops the reading stay applied. The first `vpn` element replaces the server list; answers without one
// keep it.
//
// The answer may be read as it arrives (addData() for each piece, finish() at its end): the pieces are parsed and
// decoded at once, and the account is changed only by finish(), so an answer that breaks off changes nothing.
class AccountAnswer
{
public:
    enum Outcome {
        Complete,
        BadVersion, // `ver` is not "true"
        WrongLogin, // `auth` is not "true"
        Refused, // an `error` element; errorText() holds its text
    };
    enum Kind {
        // Version, credentials, refusal and the account elements. Its update offer is not read: the update check
        // asks for its own.
        SignIn,
        // Only the account elements; version, credentials and subscription were settled at sign-in.
        ServerList,
    };

    explicit AccountAnswer(Kind kind = ServerList);
    ~AccountAnswer();
    AccountAnswer(const AccountAnswer&) = delete;
    AccountAnswer& operator=(const AccountAnswer&) = delete;

    void addData(const QByteArray& piece);
    // The answer is complete: reads what is left and applies what was read to the account.
    Outcome finish(AccountData* account);

    // Whole answers at once.
    Outcome readSignIn(const QByteArray& body, AccountData* account);
    void readServerList(const QByteArray& body, AccountData* account);

    Kind kind() const { return m_kind; }
    bool isLite() const { return m_lite; }
    const QString& errorText() const { return m_errorText; }

    // The offer of the update check's answer: version and link of the first `upgrade` element that has both,
    // or two empty texts.
    static QPair<QString, QString> updateOffer(const QByteArray& body);
    // The decoded text of the first child of that name (the time zone, the purchase link); false when there is none.
    static bool firstText(const QByteArray& body, QLatin1String name, QString* text);
    // The double-hop latencies by server name.
    static QMap<QString, int> doubleHopPings(const QByteArray& body);

private:
    class Reading;

    void readAvailable();

    Kind m_kind;
    std::unique_ptr<Reading> m_reading;
    Outcome m_outcome = Complete;
    bool m_lite = true;
    QString m_errorText;
};

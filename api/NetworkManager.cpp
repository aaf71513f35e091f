#include "NetworkManager.h"

#include <QDataStream>
#include <QDebug>
#include <QHash>
#include <QMutexLocker>
#include <QTimer>
#include <QUrl>
#include <QUrlQuery>

#include <malloc.h>

#include "AccountAnswer.h"
#include "Constants.h"
#include "GetManager.h"
#include "LocalSettings.h"
#include "PingManager.h"
#include "ServerLines.h"
#include "ServiceUrls.h"

NetworkManager* NetworkManager::_self = nullptr;

namespace {
const int channelTimeoutMs = 10000;
const QString userLineSeparator = QStringLiteral("||");
} // namespace

NetworkManager* NetworkManager::instance()
{
    if (!_self)
        _self = new NetworkManager();
    return _self;
}

void NetworkManager::resetInstance()
{
    delete _self;
    _self = nullptr;
}

NetworkManager::NetworkManager()
{
    qRegisterMetaType<NetworkManager::ApiError>("NetworkManager::ApiError");
    m_pingManager = new PingManager(this);
    connect(m_pingManager, &PingManager::pingServersFinished, this, &NetworkManager::onPingServersFinished);
    connect(m_pingManager, &PingManager::passMeasured, this, [this] {
        takeLatencies();
        emit latenciesMeasured();
        ::malloc_trim(0); // and what the pass's threads freed in their arenas
    });
    loadCachedData();
    // Channels have no parent: the pointers below own them.
    authGet.reset(new GetManager(channelTimeoutMs, nullptr));
    updateGet.reset(new GetManager(channelTimeoutMs, nullptr));
    timezoneGet.reset(new GetManager(channelTimeoutMs, nullptr));
    doubleServerGet.reset(new GetManager(channelTimeoutMs, nullptr));
    buyLinkGet.reset(new GetManager(channelTimeoutMs, nullptr));
}

NetworkManager::~NetworkManager()
{
    saveCachedData();
    // A long server list leaves many queued jobs; the pool would otherwise run them all before it dies.
    m_pingManager->stopPing();
}

QString NetworkManager::apiLink()
{
    return ServiceUrls::api();
}

QString NetworkManager::siteApiLink()
{
    return ServiceUrls::site();
}

bool NetworkManager::checkInternet()
{
    return authGet->checkInternetBlock();
}

QUrl NetworkManager::serviceUrl(const QList<QPair<QString, QString>>& items) const
{
    QUrl url(QStringLiteral("%1/connect").arg(apiLink()));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("ver"), Constants::ClientVersion);
    query.addQueryItem(QStringLiteral("login"), m_login);
    query.addQueryItem(QStringLiteral("pass"), m_password);
    for (const auto& item : items)
        query.addQueryItem(item.first, item.second);
    url.setQuery(query);
    return url;
}

// ---- requests

void NetworkManager::authRequest(QString user, QString password)
{
    qDebug() << "NetworkManager::authRequest";
    m_login = user;
    m_password = password;
    readAnswerOfKind(AccountAnswer::SignIn);
    connect(authGet.data(), &GetManager::finished, this, &NetworkManager::slotAuthFinished);
    authGet->getAsync(serviceUrl({{QStringLiteral("act"), QStringLiteral("wizardsetup")}}), 0);
}

void NetworkManager::serverListRequest()
{
    qDebug() << "NetworkManager::serverListRequest";
    readAnswerOfKind(AccountAnswer::ServerList);
    connect(authGet.data(), &GetManager::finished, this, &NetworkManager::slotServerListFinished);
    authGet->getAsync(serviceUrl({{QStringLiteral("act"), QStringLiteral("wizardsetup")}}), 1);
}

void NetworkManager::programUpdateRequest()
{
    qDebug() << "NetworkManager::programUpdateRequest";
    connect(updateGet.data(), &GetManager::finished, this, &NetworkManager::slotProgramUpdateFinished);
    updateGet->getAsync(serviceUrl({{QStringLiteral("act"), QStringLiteral("wizardsetup")},
                                    {QStringLiteral("os"), QStringLiteral("linux-debian")}}),
                        2);
}

void NetworkManager::ipTimezoneRequest()
{
    qDebug() << "NetworkManager::ipTimezoneRequest";
    connect(timezoneGet.data(), &GetManager::finished, this, &NetworkManager::slotIpTimezoneFinished);
    timezoneGet->getAsync(serviceUrl({{QStringLiteral("act"), QStringLiteral("time")}}), 3);
}

void NetworkManager::pingDoubleServerRequest()
{
    qDebug() << "NetworkManager::pingDoubleServerRequest";
    connect(doubleServerGet.data(), &GetManager::finished, this, &NetworkManager::onRequestPingDoubleServerFinished);
    doubleServerGet->getAsync(QUrl(QStringLiteral("%1/upd/double.xml").arg(apiLink())), 4);
}

void NetworkManager::getBuyLinkRequest(QString login)
{
    qDebug() << "NetworkManager::getBuyLinkRequest";
    connect(buyLinkGet.data(), &GetManager::finished, this, &NetworkManager::onRequestGetBuyLinkFinished);
    buyLinkGet->getAsync(serviceUrl({{QStringLiteral("loginvpn"), login},
                                     {QStringLiteral("act"), QStringLiteral("buy")},
                                     {QStringLiteral("os"), QStringLiteral("linux-debian")}}),
                         5);
}

// ---- answers

void NetworkManager::startPing()
{
    m_pingManager->pingServers(m_account.servers);
}

void NetworkManager::readAnswerOfKind(AccountAnswer::Kind kind)
{
    // The answer is parsed and decoded while it arrives, and applied to the account once it is whole.
    m_incomingKind = kind;
    connect(authGet.data(), &GetManager::attemptStarted, this, &NetworkManager::onAccountAttempt, Qt::UniqueConnection);
    connect(authGet.data(), &GetManager::received, this, &NetworkManager::onAccountPiece, Qt::UniqueConnection);
}

void NetworkManager::onAccountAttempt()
{
    m_incoming = std::make_unique<AccountAnswer>(m_incomingKind);
}

void NetworkManager::onAccountPiece(const QByteArray& piece)
{
    if (m_incoming)
        m_incoming->addData(piece);
}

std::unique_ptr<AccountAnswer> NetworkManager::takeAnswer(AccountAnswer::Kind kind)
{
    std::unique_ptr<AccountAnswer> answer = std::move(m_incoming);
    if (!authGet->streamed || !answer || answer->kind() != kind) {
        // Requests that overlapped: read the body that finished.
        answer = std::make_unique<AccountAnswer>(kind);
        answer->addData(authGet->data);
    }
    return answer;
}

bool NetworkManager::applySignInAnswer(bool* lite)
{
    const std::unique_ptr<AccountAnswer> answer = takeAnswer(AccountAnswer::SignIn);
    AccountAnswer::Outcome outcome;
    {
        QMutexLocker lock(&m_mutex);
        outcome = answer->finish(&m_account);
    }
    switch (outcome) {
    case AccountAnswer::Complete:
        *lite = answer->isLite();
        return true;
    case AccountAnswer::BadVersion:
        emit auth(BadVersion, QString());
        break;
    case AccountAnswer::WrongLogin:
        emit auth(WrongLogin, QString());
        break;
    case AccountAnswer::Refused:
        emit auth(answer->errorText() == QLatin1String("nosub") ? NoSubscription : NetworkFailure, answer->errorText());
        break;
    }
    return false;
}

void NetworkManager::applyServerListAnswer()
{
    const std::unique_ptr<AccountAnswer> answer = takeAnswer(AccountAnswer::ServerList);
    QMutexLocker lock(&m_mutex);
    answer->finish(&m_account);
}

void NetworkManager::slotAuthFinished()
{
    qDebug() << "NetworkManager::slotAuthFinished";
    authGet->disconnect(this);
    if (!authGet->success) {
        m_incoming.reset();
        emit auth(authGet->unverified ? UnverifiedService : NetworkFailure, authGet->errorString);
        return;
    }
    bool lite = true;
    if (!applySignInAnswer(&lite))
        return;
    startPing();
    emit auth(lite ? LiteAccount : Success, QString());
    // The pages show the account first, and the cache is written as soon as they have. Reading the answer and filling
    // the pages leave much freed memory behind in the heap: give it back.
    QTimer::singleShot(0, this, [this] {
        saveCachedData();
        ::malloc_trim(0);
    });
}

void NetworkManager::slotServerListFinished()
{
    qDebug() << "NetworkManager::slotServerListFinished";
    authGet->disconnect(this);
    if (!authGet->success) {
        qDebug() << "Server List Finished Error:" << authGet->errorString;
        m_incoming.reset();
        saveCachedData();
    } else {
        applyServerListAnswer();
        saveCachedData();
        startPing();
    }
    emit serverUpdated(Success, QString());
}

void NetworkManager::slotProgramUpdateFinished()
{
    qDebug() << "NetworkManager::slotProgramUpdateFinished";
    updateGet->disconnect(this);
    if (!updateGet->success) {
        qDebug() << "Check programm update. Finished with Error:" << updateGet->errorString;
        emit programUpdate(QString(), QString(), false);
        return;
    }
    const QPair<QString, QString> offer = AccountAnswer::updateOffer(updateGet->data);
    // Answered, with or without an offer: only a failed request is worth asking again.
    emit programUpdate(offer.first, offer.second, true);
}

void NetworkManager::slotIpTimezoneFinished()
{
    qDebug() << "NetworkManager::slotIpTimezoneFinished";
    timezoneGet->disconnect(this);
    if (!timezoneGet->success) {
        qDebug() << "Get IP timezone. Finished with Error:" << timezoneGet->errorString;
        emit gotIpTimezone(QString(), false);
        return;
    }
    QString name;
    if (!AccountAnswer::firstText(timezoneGet->data, QLatin1String("timezone"), &name)) {
        emit gotIpTimezone(QString(), false);
        return;
    }
    if (name == QLatin1String("N/A"))
        emit gotIpTimezone(QString(), false);
    else
        emit gotIpTimezone(name, true);
}

void NetworkManager::onPingServersFinished()
{
    takeLatencies();
    saveCachedData();
    emit serverUpdated(Success, QString());
}

void NetworkManager::takeLatencies()
{
    // One pass over the results instead of a scan per server: with several results of one name the last wins.
    QHash<QString, int> pings;
    for (const ServerInfo& result : m_pingManager->servers())
        pings.insert(result.name, result.ping);
    {
        QMutexLocker lock(&m_mutex);
        for (ServerInfo& server : m_account.servers) {
            const auto found = pings.constFind(server.name);
            if (found == pings.constEnd())
                continue;
            server.ping = found.value();
            // The second hop's latency adds to a measured first hop; an unmeasured one stays unmeasured (0).
            if (server.type == ServerInfo::Double && server.ping > 0)
                server.ping += m_doubleServerPings[server.name];
        }
    }
}

void NetworkManager::onRequestPingDoubleServerFinished(int)
{
    doubleServerGet->disconnect(this);
    if (!doubleServerGet->success) {
        qDebug() << "Get ping double servers. Finished with Error:" << doubleServerGet->errorString;
        return;
    }
    const QMap<QString, int> pings = AccountAnswer::doubleHopPings(doubleServerGet->data);
    for (auto it = pings.cbegin(); it != pings.cend(); ++it)
        m_doubleServerPings.insert(it.key(), it.value());
}

void NetworkManager::onRequestGetBuyLinkFinished()
{
    buyLinkGet->disconnect(this);
    if (!buyLinkGet->success) {
        qDebug() << "Get buy link. Finished with Error:" << buyLinkGet->errorString;
        emit buyLinkFailed(buyLinkGet->unverified ? UnverifiedService : NetworkFailure, buyLinkGet->errorString);
        return;
    }
    QString link;
    if (AccountAnswer::firstText(buyLinkGet->data, QLatin1String("link"), &link))
        emit gotBuyLink(link);
    else
        emit buyLinkFailed(NetworkFailure, QStringLiteral("no link in the answer"));
}

// ---- readers

QVector<ServerInfo> NetworkManager::servers()
{
    QMutexLocker lock(&m_mutex);
    const QString vpnLogin = LocalSettings::instance()->value(Keys::VpnLogin).toString();
    QVector<ServerInfo> chosen;
    if (vpnLogin.isEmpty())
        return chosen;
    for (const ServerInfo& server : qAsConst(m_account.servers)) {
        if (server.user == vpnLogin)
            chosen.append(server);
    }
    return chosen;
}

QList<Subscription> NetworkManager::subscriptions()
{
    QMutexLocker lock(&m_mutex);
    return m_account.subscriptions.values();
}

Subscription NetworkManager::subscription(const QString& login)
{
    QMutexLocker lock(&m_mutex);
    return m_account.subscriptions.value(login);
}

QStringList NetworkManager::cacheUsers()
{
    QMutexLocker lock(&m_mutex);
    return m_account.subscriptions.keys();
}

QByteArray NetworkManager::getCertifOvpnByUser(const QString& login)
{
    QMutexLocker lock(&m_mutex);
    return m_account.certificates[login];
}

QByteArray NetworkManager::getKeyOvpnByUser(const QString& login)
{
    QMutexLocker lock(&m_mutex);
    return m_account.keys[login];
}

QByteArray NetworkManager::getConfigOVPNbyServer(QString server)
{
    Q_UNUSED(server)
    QMutexLocker lock(&m_mutex);
    return m_account.config;
}

// ---- offline cache

QByteArray NetworkManager::cacheMapToArray(const QMap<QString, QByteArray>& map)
{
    QByteArray array;
    QDataStream stream(&array, QIODevice::WriteOnly);
    stream << map;
    return array;
}

QMap<QString, QByteArray> NetworkManager::cacheArrayToMap(const QByteArray& array)
{
    // Read by hand rather than with the map operator, which throws away everything on a damaged entry.
    QMap<QString, QByteArray> map;
    QDataStream stream(array);
    quint32 count = 0;
    stream >> count;
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        QString key;
        QByteArray value;
        stream >> key >> value;
        if (stream.status() != QDataStream::Ok)
            break;
        map.insert(key, value);
    }
    return map;
}

void NetworkManager::saveCachedData()
{
    auto store = LocalSettings::instance();
    store->setValue(Keys::CachedKeys, cacheMapToArray(m_account.keys));
    QStringList users;
    for (auto it = m_account.subscriptions.cbegin(); it != m_account.subscriptions.cend(); ++it) {
        users.append(QStringLiteral("%1||%2||%3")
                         .arg(it.key(), it.value().password(), it.value().expiresTime().toString(Qt::ISODate)));
    }
    store->setValue(Keys::CachedUsers, users);
    QStringList lines;
    lines.reserve(m_account.servers.size());
    for (const ServerInfo& server : qAsConst(m_account.servers))
        lines.append(server);
    store->setValue(Keys::CachedServers, lines);
    store->setValue(Keys::CachedConfig, m_account.config);
    store->setValue(Keys::CachedCertif, cacheMapToArray(m_account.certificates));
}

void NetworkManager::loadCachedData()
{
    auto store = LocalSettings::instance();
    m_account.config = store->value(Keys::CachedConfig).toByteArray();
    m_account.certificates = cacheArrayToMap(store->value(Keys::CachedCertif).toByteArray());
    m_account.keys = cacheArrayToMap(store->value(Keys::CachedKeys).toByteArray());
    m_account.subscriptions.clear();
    for (const QString& line : store->value(Keys::CachedUsers).toStringList()) {
        const QStringList parts = line.split(userLineSeparator, Qt::KeepEmptyParts);
        if (parts.size() != 3)
            continue;
        m_account.subscriptions.insert(parts[0],
                                       Subscription(parts[0], parts[1], QDateTime::fromString(parts[2], Qt::ISODate)));
    }
    m_account.servers.clear();
    // The reset text reads back as one empty line, and so as one default record until the next answer.
    const QStringList lines = store->value(Keys::CachedServers).toStringList();
    m_account.servers.reserve(lines.size());
    ServerLines reader;
    for (const QString& line : lines)
        m_account.servers.append(reader.server(line));
    // Once the event loop runs: starting a thousand jobs is no reason to show the window later.
    QTimer::singleShot(0, this, &NetworkManager::startPing);
}

void NetworkManager::clearCache()
{
    QMutexLocker lock(&m_mutex);
    m_account.config.clear();
    m_account.certificates.clear();
    m_account.keys.clear();
    m_account.servers.clear();
    m_account.subscriptions.clear();
    auto store = LocalSettings::instance();
    store->setValue(Keys::CachedConfig, QByteArray());
    store->setValue(Keys::CachedCertif, QByteArray());
    store->setValue(Keys::CachedKeys, QByteArray());
    store->setValue(Keys::CachedUsers, QStringList());
    store->setValue(Keys::CachedServers, QStringList());
}

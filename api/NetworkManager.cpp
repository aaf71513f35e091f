#include "NetworkManager.h"

#include <QDataStream>
#include <QDebug>
#include <QDomDocument>
#include <QHash>
#include <QMutexLocker>
#include <QStringView>
#include <QUrl>
#include <QUrlQuery>

#include "AnswerReader.h"
#include "Constants.h"
#include "GetManager.h"
#include "LocalSettings.h"
#include "PingManager.h"
#include "ServerLines.h"
#include "ServiceUrls.h"
#include "SharedValues.h"

NetworkManager* NetworkManager::_self = nullptr;

namespace {
const int channelTimeoutMs = 10000;
const QString trueText = QStringLiteral("true");
const QString userLineSeparator = QStringLiteral("||");

QByteArray decodeBytes(QStringView base64)
{
    return QByteArray::fromBase64(base64.toLatin1());
}

QString decodeText(QStringView base64)
{
    return QString::fromUtf8(decodeBytes(base64));
}

// A port list whose first item is "0" means "none". Empty parts are kept, so an absent attribute gives [""].
QStringList decodePorts(QStringView base64)
{
    QStringList ports = decodeText(base64).split(QLatin1Char(','), Qt::KeepEmptyParts);
    if (ports.first() == QLatin1String("0"))
        ports.clear();
    return ports;
}

// Later parts of the same name overwrite earlier ones; anything but `ver` and `link` is ignored.
void takeUpdatePart(QPair<QString, QString>* update, const QString& name, const QString& text)
{
    if (name == QLatin1String("ver"))
        update->first = decodeText(text);
    else if (name == QLatin1String("link"))
        update->second = decodeText(text);
}

QDomElement documentElement(const QByteArray& body)
{
    QDomDocument doc(QStringLiteral("request"));
    // A body that is not XML leaves an empty document: the walk then finds nothing.
    doc.setContent(body);
    return doc.documentElement();
}
} // namespace

// Turns the attributes of one `vpn` element into a server record. The values that repeat from server to server are
// decoded once and then shared, which makes a list of thousands of servers a fraction of the work and memory.
class NetworkManager::ServerDecoder
{
public:
    // `attribute` gives the raw value of an attribute by name, empty when missing.
    template <typename Attribute>
    ServerInfo server(Attribute attribute, QMap<QString, Subscription>& subscriptions)
    {
        ServerInfo server;
        server.name = decodeText(attribute(QLatin1String("name")));
        server.title = server.name;
        server.ip = decodeText(attribute(QLatin1String("ip")));
        server.tcpPorts = m_ports.value(attribute(QLatin1String("tcp")), decodePorts);
        server.udpPorts = m_ports.value(attribute(QLatin1String("udp")), decodePorts);
        server.sslPort = m_numbers.value(attribute(QLatin1String("ssl")), decodeNumber);
        server.flag = m_texts.value(attribute(QLatin1String("flag")), decodeText);
        server.user = m_texts.value(attribute(QLatin1String("user")), decodeText);
        // `dns` is sent but not used.
        const bool twoHops = m_numbers.value(attribute(QLatin1String("group")), decodeNumber) == 2;
        server.type = twoHops ? ServerInfo::Double : ServerInfo::Standart;
        server.sni = m_texts.value(attribute(QLatin1String("sni")), decodeText);
        // Inserting lookup: a login whose `file` has not come yet gets an empty entry and an empty password.
        server.password = subscriptions[server.user].password();
        server.ping = 0;
        server.favorite = false;
        server.protocol = OpenVpnUdp;
        return server;
    }

private:
    static int decodeNumber(QStringView base64) { return decodeText(base64).toInt(); }

    SharedValues<QString> m_texts;
    SharedValues<QStringList> m_ports;
    SharedValues<int> m_numbers;
};

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
    connect(authGet.data(), &GetManager::finished, this, &NetworkManager::slotAuthFinished);
    authGet->getAsync(serviceUrl({{QStringLiteral("act"), QStringLiteral("wizardsetup")}}), 0);
}

void NetworkManager::serverListRequest()
{
    qDebug() << "NetworkManager::serverListRequest";
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

ServerInfo NetworkManager::parseServer(QDomNode* node)
{
    const QDomElement e = node->toElement();
    ServerDecoder decoder;
    return decoder.server([&e](QLatin1String name) { return e.attribute(name); }, m_subscriptions);
}

QPair<QString, QString> NetworkManager::parseUpdate(QDomNode* first)
{
    QPair<QString, QString> update;
    for (QDomNode node = *first; !node.isNull(); node = node.nextSibling()) {
        const QDomElement e = node.toElement();
        takeUpdatePart(&update, e.tagName(), e.text());
    }
    return update;
}

bool NetworkManager::applyAccountElement(const AnswerReader& answer, ServerDecoder* decoder, bool* firstServer)
{
    const QString& tag = answer.name();
    auto attribute = [&answer](QLatin1String name) {
        return answer.attribute(name);
    };
    QMutexLocker lock(&m_mutex);
    if (tag == QLatin1String("vpn")) {
        if (*firstServer) {
            m_servers.clear();
            *firstServer = false;
        }
        m_servers.append(decoder->server(attribute, m_subscriptions));
    } else if (tag == QLatin1String("cert")) {
        m_certificates[decodeText(attribute(QLatin1String("user")))] = decodeBytes(answer.text());
    } else if (tag == QLatin1String("key")) {
        m_keys[decodeText(attribute(QLatin1String("user")))] = decodeBytes(answer.text());
    } else if (tag == QLatin1String("config")) {
        m_config = decodeBytes(answer.text());
    } else if (tag == QLatin1String("file")) {
        // Of several `file` elements before the first `vpn`, only the last survives; later ones accumulate.
        if (*firstServer)
            m_subscriptions.clear();
        const QString user = decodeText(attribute(QLatin1String("user")));
        const QString pass = decodeText(attribute(QLatin1String("pass")));
        // A 32-bit count, as the service has always sent it: no number, or one past 2038, gives 1970.
        const quint32 expiry = quint32(decodeText(attribute(QLatin1String("exp"))).toInt());
        m_subscriptions[user] = Subscription(user, pass, QDateTime::fromSecsSinceEpoch(qint64(expiry)));
    } else {
        return false;
    }
    return true;
}

void NetworkManager::startPing()
{
    m_pingManager->pingServers(m_servers);
}

bool NetworkManager::applySignInAnswer(const QByteArray& body, bool* lite)
{
    AnswerReader answer(body);
    ServerDecoder decoder;
    bool firstServer = true;
    while (answer.next()) {
        const QString& tag = answer.name();
        if (tag == QLatin1String("ver")) {
            if (decodeText(answer.text()) != trueText) {
                emit auth(BadVersion, QString());
                return false;
            }
            *lite = answer.attribute(QLatin1String("type")) == QLatin1String("lite");
        } else if (tag == QLatin1String("auth")) {
            if (decodeText(answer.text()) != trueText) {
                emit auth(WrongLogin, QString());
                return false;
            }
        } else if (tag == QLatin1String("upgrade")) {
            QPair<QString, QString> update;
            for (const AnswerReader::Part& part : answer.parts())
                takeUpdatePart(&update, part.name, part.text);
            m_updateVersion = update.first;
            m_updateLink = update.second;
        } else if (tag == QLatin1String("error")) {
            const QString text = decodeText(answer.text());
            emit auth(text == QLatin1String("nosub") ? NoSubscription : NetworkFailure, text);
            return false;
        } else {
            applyAccountElement(answer, &decoder, &firstServer);
        }
    }
    return true;
}

void NetworkManager::applyServerListAnswer(const QByteArray& body)
{
    // Version, credentials and subscription were settled at sign-in; a refresh only takes the account data.
    AnswerReader answer(body);
    ServerDecoder decoder;
    bool firstServer = true;
    while (answer.next())
        applyAccountElement(answer, &decoder, &firstServer);
}

void NetworkManager::slotAuthFinished()
{
    qDebug() << "NetworkManager::slotAuthFinished";
    authGet->disconnect(this);
    if (!authGet->success) {
        emit auth(authGet->unverified ? UnverifiedService : NetworkFailure, authGet->errorString);
        return;
    }
    // The cache is saved before the pings start: a long list means thousands of ping processes, and building the
    // cache text while they start is slower.
    bool lite = true;
    if (!applySignInAnswer(authGet->data, &lite))
        return;
    saveCachedData();
    startPing();
    emit auth(lite ? LiteAccount : Success, QString());
}

void NetworkManager::slotServerListFinished()
{
    qDebug() << "NetworkManager::slotServerListFinished";
    authGet->disconnect(this);
    if (!authGet->success) {
        qDebug() << "Server List Finished Error:" << authGet->errorString;
        saveCachedData();
    } else {
        applyServerListAnswer(authGet->data);
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
    const QDomElement root = documentElement(updateGet->data);
    for (QDomNode node = root.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.toElement().tagName() != QLatin1String("upgrade"))
            continue;
        QDomNode first = node.firstChild();
        const QPair<QString, QString> update = parseUpdate(&first);
        m_updateVersion = update.first;
        m_updateLink = update.second;
        if (!m_updateVersion.isEmpty() && !m_updateLink.isEmpty()) {
            emit programUpdate(m_updateVersion, m_updateLink, true);
            return;
        }
    }
    emit programUpdate(QString(), QString(), false);
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
    const QDomElement zone = documentElement(timezoneGet->data).firstChildElement(QStringLiteral("timezone"));
    if (zone.isNull()) {
        emit gotIpTimezone(QString(), false);
        return;
    }
    const QString name = decodeText(zone.text());
    if (name == QLatin1String("N/A"))
        emit gotIpTimezone(QString(), false);
    else
        emit gotIpTimezone(name, true);
}

void NetworkManager::onPingServersFinished()
{
    // One pass over the results instead of a scan per server: with several results of one name the last wins.
    QHash<QString, int> pings;
    for (const ServerInfo& result : m_pingManager->servers())
        pings.insert(result.name, result.ping);
    {
        QMutexLocker lock(&m_mutex);
        for (ServerInfo& server : m_servers) {
            const auto found = pings.constFind(server.name);
            if (found == pings.constEnd())
                continue;
            server.ping = found.value();
            if (server.type == ServerInfo::Double)
                server.ping += m_doubleServerPings[server.name];
        }
    }
    saveCachedData();
    emit serverUpdated(Success, QString());
}

void NetworkManager::onRequestPingDoubleServerFinished(int)
{
    doubleServerGet->disconnect(this);
    if (!doubleServerGet->success) {
        qDebug() << "Get ping double servers. Finished with Error:" << doubleServerGet->errorString;
        return;
    }
    const QDomElement root = documentElement(doubleServerGet->data);
    for (QDomNode node = root.firstChild(); !node.isNull(); node = node.nextSibling()) {
        const QDomElement e = node.toElement();
        // Plain text and a plain number here, unlike the account document.
        if (e.tagName() == QLatin1String("p"))
            m_doubleServerPings.insert(e.text(), e.attribute(QStringLiteral("p")).toInt());
    }
}

void NetworkManager::onRequestGetBuyLinkFinished()
{
    buyLinkGet->disconnect(this);
    if (!buyLinkGet->success) {
        qDebug() << "Get buy link. Finished with Error:" << buyLinkGet->errorString;
        emit buyLinkFailed(buyLinkGet->unverified ? UnverifiedService : NetworkFailure, buyLinkGet->errorString);
        return;
    }
    const QDomElement link = documentElement(buyLinkGet->data).firstChildElement(QStringLiteral("link"));
    if (!link.isNull())
        emit gotBuyLink(decodeText(link.text()));
}

// ---- readers

QVector<ServerInfo> NetworkManager::servers()
{
    QMutexLocker lock(&m_mutex);
    const QString vpnLogin = LocalSettings::instance()->value(Keys::VpnLogin).toString();
    QVector<ServerInfo> chosen;
    if (vpnLogin.isEmpty())
        return chosen;
    for (const ServerInfo& server : qAsConst(m_servers)) {
        if (server.user == vpnLogin)
            chosen.append(server);
    }
    return chosen;
}

QList<Subscription> NetworkManager::subscriptions()
{
    QMutexLocker lock(&m_mutex);
    return m_subscriptions.values();
}

Subscription NetworkManager::subscription(const QString& login)
{
    QMutexLocker lock(&m_mutex);
    return m_subscriptions.value(login);
}

QStringList NetworkManager::cacheUsers()
{
    QMutexLocker lock(&m_mutex);
    return m_subscriptions.keys();
}

QByteArray NetworkManager::getCertifOvpnByUser(const QString& login)
{
    QMutexLocker lock(&m_mutex);
    return m_certificates[login];
}

QByteArray NetworkManager::getKeyOvpnByUser(const QString& login)
{
    QMutexLocker lock(&m_mutex);
    return m_keys[login];
}

QByteArray NetworkManager::getConfigOVPNbyServer(QString server)
{
    Q_UNUSED(server)
    QMutexLocker lock(&m_mutex);
    return m_config;
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
    store->setValue(Keys::CachedKeys, cacheMapToArray(m_keys));
    QStringList users;
    for (auto it = m_subscriptions.cbegin(); it != m_subscriptions.cend(); ++it) {
        users.append(QStringLiteral("%1||%2||%3")
                         .arg(it.key(), it.value().password(), it.value().expiresTime().toString(Qt::ISODate)));
    }
    store->setValue(Keys::CachedUsers, users);
    QStringList lines;
    lines.reserve(m_servers.size());
    for (const ServerInfo& server : qAsConst(m_servers))
        lines.append(server);
    store->setValue(Keys::CachedServers, lines);
    store->setValue(Keys::CachedConfig, m_config);
    store->setValue(Keys::CachedCertif, cacheMapToArray(m_certificates));
}

void NetworkManager::loadCachedData()
{
    auto store = LocalSettings::instance();
    m_config = store->value(Keys::CachedConfig).toByteArray();
    m_certificates = cacheArrayToMap(store->value(Keys::CachedCertif).toByteArray());
    m_keys = cacheArrayToMap(store->value(Keys::CachedKeys).toByteArray());
    m_subscriptions.clear();
    for (const QString& line : store->value(Keys::CachedUsers).toStringList()) {
        const QStringList parts = line.split(userLineSeparator, Qt::KeepEmptyParts);
        if (parts.size() != 3)
            continue;
        m_subscriptions.insert(parts[0],
                               Subscription(parts[0], parts[1], QDateTime::fromString(parts[2], Qt::ISODate)));
    }
    m_servers.clear();
    // The reset text reads back as one empty line, and so as one default record until the next answer.
    const QStringList lines = store->value(Keys::CachedServers).toStringList();
    m_servers.reserve(lines.size());
    ServerLines reader;
    for (const QString& line : lines)
        m_servers.append(reader.server(line));
    startPing();
}

void NetworkManager::clearCache()
{
    QMutexLocker lock(&m_mutex);
    m_config.clear();
    m_certificates.clear();
    m_keys.clear();
    m_servers.clear();
    m_subscriptions.clear();
    auto store = LocalSettings::instance();
    store->setValue(Keys::CachedConfig, QByteArray());
    store->setValue(Keys::CachedCertif, QByteArray());
    store->setValue(Keys::CachedKeys, QByteArray());
    store->setValue(Keys::CachedUsers, QStringList());
    store->setValue(Keys::CachedServers, QStringList());
}

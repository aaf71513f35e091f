#include "ServiceAddresses.h"

#include "ServiceTls.h"
#include "ServiceUrls.h"

#include <QHash>
#include <QHostAddress>
#include <QHostInfo>
#include <QMutex>
#include <QMutexLocker>

#include <atomic>

namespace {

std::atomic<bool> bypassing {false};

// Host name to the text of its first address (downloads ask from their own thread). Only pinned() looks a
// host up, once: a request must never wait for a lookup that the rules would drop.
QString addressOf(const QString& host, bool lookUp)
{
    static QMutex mutex;
    static QHash<QString, QString> found;
    QMutexLocker lock(&mutex);
    const auto known = found.constFind(host);
    if (known != found.constEnd() || !lookUp)
        return known != found.constEnd() ? known.value() : QString();
    const QHostAddress literal(host);
    const QList<QHostAddress> list
        = literal.isNull() ? QHostInfo::fromName(host).addresses() : QList<QHostAddress> {literal};
    const QString address = list.isEmpty() ? QString() : list.first().toString();
    found.insert(host, address);
    return address;
}

} // namespace

namespace ServiceAddresses {

QStringList pinned()
{
    QStringList list;
    for (const QString& base : {ServiceUrls::api(), ServiceUrls::site()}) {
        const QString host = QUrl(base).host();
        const QString address = host.isEmpty() ? QString() : addressOf(host, true);
        if (!address.isEmpty() && !list.contains(address))
            list.append(address);
    }
    return list;
}

void setBypassingLookups(bool on)
{
    bypassing = on;
}

bool bypassingLookups()
{
    return bypassing;
}

QNetworkRequest request(const QUrl& url)
{
    QNetworkRequest request(url);
    request.setSslConfiguration(ServiceTls::configuration());
    const QString host = url.host();
    const QString address = bypassing && !host.isEmpty() ? addressOf(host, false) : QString();
    if (address.isEmpty() || address == host)
        return request;
    QUrl direct = url;
    direct.setHost(address);
    request.setUrl(direct);
    const int port = url.port();
    request.setRawHeader("Host", (port < 0 ? host : QStringLiteral("%1:%2").arg(host).arg(port)).toUtf8());
    request.setPeerVerifyName(host);
    return request;
}

} // namespace ServiceAddresses

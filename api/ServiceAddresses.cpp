#include "ServiceAddresses.h"

#include "Keys.h"
#include "LocalSettings.h"
#include "ServiceTls.h"
#include "ServiceUrls.h"

#include <QCoreApplication>
#include <QHash>
#include <QHostAddress>
#include <QHostInfo>
#include <QMap>
#include <QMutex>
#include <QMutexLocker>
#include <QSslSocket>
#include <QTimer>

#include <atomic>

namespace {

constexpr int ProbeTimeoutMs = 20000;

std::atomic<bool> bypassing {false};

QMutex mutex;
// Host name to the text of its address for this run (downloads ask from their own thread).
QHash<QString, QString> found;

// An IPv4 address where there is one: the IPv6 leak protection drops IPv6, so an IPv6 address could not
// carry the program's requests while the rules are up.
QString preferredAddress(const QHostInfo& info)
{
    const QList<QHostAddress> addresses = info.addresses();
    for (const QHostAddress& address : addresses) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol)
            return address.toString();
    }
    return addresses.isEmpty() ? QString() : addresses.constFirst().toString();
}

QMap<QString, QString> remembered()
{
    QMap<QString, QString> map;
    const QStringList pairs = LocalSettings::instance()->value(Keys::ServiceAddresses).toString().split(';');
    for (const QString& pair : pairs) {
        const int equals = pair.indexOf(QLatin1Char('='));
        if (equals > 0 && !QHostAddress(pair.mid(equals + 1)).isNull())
            map.insert(pair.left(equals), pair.mid(equals + 1));
    }
    return map;
}

void remember(const QString& host, const QString& address)
{
    QMap<QString, QString> map = remembered();
    if (map.value(host) == address)
        return;
    map.insert(host, address);
    QStringList pairs;
    for (auto it = map.cbegin(); it != map.cend(); ++it)
        pairs << it.key() + QLatin1Char('=') + it.value();
    LocalSettings::instance()->setValue(Keys::ServiceAddresses, pairs.join(QLatin1Char(';')));
}

// The address for this run: a literal as it is; else the one kept, looked up again in the background for the
// next run; else a lookup now.
QString pin(const QString& host, quint16 port)
{
    if (!QHostAddress(host).isNull())
        return host;
    QString address = remembered().value(host);
    if (address.isEmpty()) {
        address = preferredAddress(QHostInfo::fromName(host));
        ServiceAddresses::keepIfVerified(host, port, address);
    } else {
        QHostInfo::lookupHost(host, qApp, [host, port](const QHostInfo& info) {
            ServiceAddresses::keepIfVerified(host, port, preferredAddress(info));
        });
    }
    return address;
}

} // namespace

namespace ServiceAddresses {

void keepIfVerified(const QString& host, quint16 port, const QString& address)
{
    if (address.isEmpty() || remembered().value(host) == address)
        return;
    auto* probe = new QSslSocket(qApp);
    probe->setSslConfiguration(ServiceTls::configuration());
    QObject::connect(probe, &QSslSocket::encrypted, probe, [probe, host, address]() {
        remember(host, address);
        probe->abort();
    });
    QObject::connect(probe, &QAbstractSocket::disconnected, probe, &QObject::deleteLater);
    QObject::connect(probe, &QAbstractSocket::errorOccurred, probe, &QObject::deleteLater);
    QTimer::singleShot(ProbeTimeoutMs, probe, &QObject::deleteLater);
    probe->connectToHostEncrypted(address, port, host);
}

QStringList pinned()
{
    QStringList list;
    for (const QString& base : {ServiceUrls::api(), ServiceUrls::site()}) {
        const QUrl url(base);
        const QString host = url.host();
        if (host.isEmpty())
            continue;
        QMutexLocker lock(&mutex);
        if (!found.contains(host))
            found.insert(host, pin(host, quint16(url.port(443))));
        const QString address = found.value(host);
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
    QString address;
    if (bypassing && !host.isEmpty()) {
        QMutexLocker lock(&mutex);
        address = found.value(host);
    }
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

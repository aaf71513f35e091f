#include "ServiceUrls.h"

#include <QUrl>

namespace {
QString fromEnvironment(const char* name, const QString& fallback)
{
    QString value = qEnvironmentVariable(name);
    if (value.isEmpty())
        return fallback;
    while (value.endsWith(QLatin1Char('/')))
        value.chop(1);
    return value;
}
} // namespace

namespace ServiceUrls {

QString api()
{
    return fromEnvironment("TAVRIN_API_URL", QStringLiteral("https://api.velmora.com"));
}

QString site()
{
    return fromEnvironment("TAVRIN_SITE_URL", QStringLiteral("https://velmora.com"));
}

QString siteHost()
{
    const QString host = QUrl(site()).host();
    return host.isEmpty() ? QStringLiteral("velmora.com") : host;
}

QString probe()
{
    // The probe fetches a page, so its trailing slash is kept.
    const QString value = qEnvironmentVariable("TAVRIN_PROBE_URL");
    return value.isEmpty() ? QStringLiteral("http://www.debian.org/") : value;
}

} // namespace ServiceUrls

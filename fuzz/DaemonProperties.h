#pragma once

// What must hold for every request the daemon's checks let through.
#include "FirewallRules.h"
#include "FuzzCheck.h"
#include "OpenVPNConnectorQt.h"
#include "OpenVpnArguments.h"
#include "TimezoneChanger.h"

#include <QDir>
#include <QRegularExpression>

// An accepted argument string names an absolute path without quotes or control characters and a
// port, and the string the client builds from them is accepted with the same two values: client
// and daemon agree on the format.
inline void checkArguments(const QString& text)
{
    OpenVpnArguments arguments;
    if (!arguments.parse(text))
        return;
    const QString path = arguments.configPath();
    static const QRegularExpression unsafe(QStringLiteral("[\"\\x00-\\x1f\\x7f]"));
    FUZZ_CHECK(path.startsWith(QLatin1Char('/')) && !unsafe.match(path).hasMatch(), path);
    OpenVpnArguments rebuilt;
    FUZZ_CHECK(rebuilt.parse(OpenVPNConnectorQt::openVpnArguments(path, arguments.managementPort())), rebuilt.error());
    FUZZ_CHECK(rebuilt.configPath() == path && rebuilt.managementPort() == arguments.managementPort(), text);
}

// An accepted zone stays inside the zone database: relative, and no step out of it.
inline void checkZone(const QString& zone)
{
    if (!TimezoneChanger::isValidZoneName(zone))
        return;
    FUZZ_CHECK(!zone.startsWith(QLatin1Char('/')) && QDir::cleanPath(zone) == zone, zone);
    FUZZ_CHECK(!QDir::cleanPath(QStringLiteral("/zoneinfo/") + zone).startsWith(QLatin1String("/zoneinfo/..")), zone);
}

// Accepted rules name no table but the daemon's own, quote only the interface names, and hold
// nothing in the allowed sets but addresses and prefixes: a request cannot add an nft statement.
inline void checkFirewall(const FirewallRequest& request)
{
    FirewallRules rules;
    if (!rules.build(request))
        return;
    const QString script = rules.script();
    FUZZ_CHECK(script.count(QLatin1String("table ")) == 3, script);
    const bool tunnel = request.killConnect && !request.idle;
    FUZZ_CHECK(script.count(QLatin1Char('"')) == (tunnel ? 8 : 4), script);
    if (tunnel)
        FUZZ_CHECK(FirewallRules::isValidInterfaceName(request.interfaceName), request.interfaceName);
    static const QRegularExpression sets(QStringLiteral("set allowed[46] \\{[^}]*elements = \\{ ([^}]*) \\}"));
    static const QRegularExpression element(QStringLiteral("^[0-9a-f.:]+/[0-9]{1,3}$"));
    for (auto match = sets.globalMatch(script); match.hasNext();) {
        for (const QString& item : match.next().captured(1).split(QStringLiteral(", ")))
            FUZZ_CHECK(element.match(item).hasMatch(), item);
    }
}

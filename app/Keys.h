#pragma once

#include <QString>

// Every key of the per-user settings file. The defaults that a reset writes
// are listed beside them in LocalSettings::createDefaultSettings().
namespace Keys {
const QString ConnectOnStart = QStringLiteral("autoConnectOnStart");
const QString LaunchOnStart = QStringLiteral("launchOnStart");
const QString Login = QStringLiteral("login");
const QString Passwd = QStringLiteral("password");
const QString OvpnProtocol = QStringLiteral("advProtocol");
const QString LastLocation = QStringLiteral("lastLocationId");
const QString RememberUser = QStringLiteral("rememberUser");
const QString CachedServers = QStringLiteral("cachedServers");
const QString CachedConfig = QStringLiteral("cachedConfig");
const QString CachedCertif = QStringLiteral("cachedCertif");
const QString CachedKeys = QStringLiteral("cachedKeys");
const QString CachedUsers = QStringLiteral("cachedUsers");
const QString FavoriteServersTcp = QStringLiteral("favoriteServersTcp");
const QString FavoriteServersUdp = QStringLiteral("favoriteServersUdp");
const QString FavoriteServersSsl = QStringLiteral("favoriteServersSsl");
const QString KillConnect = QStringLiteral("killConnect");
const QString Flag = QStringLiteral("flag");
const QString IPv6LeakProtect = QStringLiteral("iPv6LeakProtect");
const QString AllowLocalDevices = QStringLiteral("allowLocalDevices");
const QString ChangeTimezone = QStringLiteral("changeTimezone");
const QString Language = QStringLiteral("language");
const QString VpnLogin = QStringLiteral("vpnLogin");
// The service's host names with the address each had at its last lookup ("host=address;...").
const QString ServiceAddresses = QStringLiteral("serviceAddresses");
} // namespace Keys

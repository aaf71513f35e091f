#pragma once

#include <QString>

// Where the daemon reads and writes on the machine. Every path it changes sits under an optional
// root (TAVRIN_HELPERD_ROOT) so that tests work in a directory of their own.
class HelperPaths
{
public:
    static HelperPaths fromEnvironment();
    // Creates dir (and its parents) and makes it private to root: mode 0700. False on failure.
    static bool makePrivateDir(const QString& dir);

    QString root;
    QString stateDir; // remembered firewall rules and time zone, private copies of files
    QString localtime; // the /etc/localtime link
    QString timezoneFile; // /etc/timezone, the zone's name as text
    QString zoneinfoDir; // read only: the zoneinfo database
    QString resolverScript; // the script OpenVPN really runs for the fixed --up/--down name
    QString systemdRunDir; // exists while systemd is the init system
    QString dpkgRoot; // where dpkg installs updates; empty for the machine itself
    QString installedDaemon; // the daemon an update installs, which a restart runs (under dpkgRoot)
    QString debsigPolicies; // debsig-verify's policies, one directory per signing key
    QString debsigKeyrings; // debsig-verify's keyrings, named as the policies
};

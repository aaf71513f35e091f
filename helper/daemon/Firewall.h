#pragma once

#include "FirewallRules.h"

#include <QString>

// Applies firewall requests with nft and remembers the last one in the state directory, so that
// the daemon can put it back at its next start when asked to (firewallEnableOnStart). Not safe
// for concurrent use: the caller takes the requests in turn.
class Firewall
{
public:
    explicit Firewall(const QString& stateDir);

    bool on(const FirewallRequest& request);
    bool change(const FirewallRequest& request) { return on(request); }
    bool off();
    static bool supported();
    // Whether our table is in the kernel now (it is not after a reboot, unless re-applied).
    static bool installed();
    bool enableOnStart();
    // Called once at start: re-applies the remembered rules when enableOnStart was asked for.
    void restoreAtStart();

    QString error() const { return m_error; }

private:
    static bool listSucceeds(const QString& command);
    QString stateFile() const;
    bool save(const FirewallRequest& request, bool active, bool atStart);
    bool load(FirewallRequest& request, bool& active, bool& atStart) const;

    QString m_stateDir;
    QString m_error;
};

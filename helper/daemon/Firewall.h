#pragma once

#include "FirewallRules.h"

#include <QString>

// Applies firewall requests with nft and remembers the last one in the state directory, so that
// the daemon can put it back at its next start when asked to (firewallEnableOnStart).
class Firewall
{
public:
    explicit Firewall(const QString& stateDir);

    bool on(const FirewallRequest& request);
    bool change(const FirewallRequest& request) { return on(request); }
    bool off();
    bool supported();
    bool enableOnStart();
    // Called once at start: re-applies the remembered rules when enableOnStart was asked for.
    void restoreAtStart();

    QString error() const { return m_error; }

private:
    bool runNft(const QString& script);
    QString stateFile() const;
    bool save(const FirewallRequest& request, bool active, bool atStart);
    bool load(FirewallRequest& request, bool& active, bool& atStart) const;

    QString m_stateDir;
    QString m_error;
};

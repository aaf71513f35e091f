#pragma once

#include <QString>
#include <mutex>

// Who holds the machine's tunnel: the uid whose request started the running OpenVPN or switched
// the kill switch on. It owns them until its OpenVPN has ended and its firewall is off; meanwhile
// no other non-root uid may change or stop either, nor set the time zone. Root may always act. The owner is kept in the
// state directory, so a restarted daemon still knows whose rules are in force.
//
// A request that would change a holding first claims (claim()), which also reserves the tunnel
// for its uid while the work runs; the work reports what it holds (setHeld()) and the request
// ends its claim (endClaim()).
class TunnelOwner
{
public:
    enum Holding { OpenVpn = 1, Firewall = 2 };
    static constexpr qint64 Nobody = -1;

    explicit TunnelOwner(const QString& stateDir);

    // Whether uid may act now; false with the reason in why. On true, endClaim() must follow.
    bool claim(qint64 uid, QString& why);
    void setHeld(Holding holding, bool held) { update(holding, held, false); }
    // Nothing held and no claim pending frees the tunnel.
    void endClaim() { update(Holding(0), false, true); }
    qint64 owner() const;

    // Reads the owner kept by an earlier run. OpenVPN does not outlive the daemon, and rules that
    // are no longer in force (after a reboot) are no longer held.
    void load(bool firewallInForce);

private:
    void update(Holding holding, bool held, bool endsClaim);
    void save() const;

    QString m_file;
    mutable std::mutex m_mutex;
    qint64 m_owner = Nobody;
    int m_held = 0;
    int m_pending = 0;
};

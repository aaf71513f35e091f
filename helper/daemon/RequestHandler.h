#pragma once

#include "Firewall.h"
#include "HelperPaths.h"
#include "HelperRequest.h"
#include "OpenVpnLauncher.h"
#include "TimezoneChanger.h"
#include "TunnelOwner.h"
#include "UpdateInstaller.h"

#include <QByteArray>
#include <mutex>

// Carries out one complete request packet for a caller and says whether it succeeded. Every
// request and its result are written to the log with the caller's uid. Requests may come from
// several threads at once: each resource (firewall, OpenVPN, time zone, updates) takes its
// changes in order, and a request never waits for a resource it does not touch. What would
// change or stop the tunnel is refused to anyone but its owner and root.
class RequestHandler
{
public:
    explicit RequestHandler(const HelperPaths& paths);

    bool handle(const QByteArray& packet, qint64 callerUid);
    void restoreAtStart();
    // Stops the OpenVPN we started; called once when the daemon stops.
    void stopOpenVpn() { m_openvpn.stop(); }

private:
    bool firewall(const HelperRequest& request, QString& detail);
    bool timezone(const HelperRequest& request, QString& detail);

    TunnelOwner m_owner;
    std::mutex m_firewallMutex;
    Firewall m_firewall;
    std::mutex m_timezoneMutex;
    TimezoneChanger m_timezone;
    std::mutex m_updateMutex;
    UpdateInstaller m_update;
    OpenVpnLauncher m_openvpn;
};

#include "RequestHandler.h"

#include "ManagementGuard.h"
#include "Nft.h"
#include "WireText.h"

#include "HelperWire.h"

#include <QDebug>

RequestHandler::RequestHandler(const HelperPaths& paths)
    : m_owner(paths.stateDir)
    , m_firewall(paths.stateDir)
    , m_timezone(paths.localtime, paths.timezoneFile, paths.zoneinfoDir, paths.stateDir)
    , m_update(paths)
    , m_openvpn(paths.stateDir, paths.resolverScript, m_owner)
{ }

void RequestHandler::restoreAtStart()
{
    std::lock_guard<std::mutex> lock(m_firewallMutex);
    m_firewall.restoreAtStart();
    m_owner.load(Firewall::installed());
    // No OpenVPN of ours runs yet: one a crashed run left goes, and so does its reservation.
    m_openvpn.stopLeftover();
    QString error;
    Nft::run(ManagementGuard::removeScript(), error);
}

bool RequestHandler::firewall(const HelperRequest& request, QString& detail)
{
    const FirewallRequest& r = request.firewall;
    detail = QStringLiteral("addresses \"%1\" interface \"%2\" kill %3 ipv6 %4 local %5 timezone %6 idle %7")
                 .arg(r.addresses, r.interfaceName)
                 .arg(r.killConnect)
                 .arg(r.ipv6Block)
                 .arg(r.allowLocalIp)
                 .arg(r.changeTimezone)
                 .arg(r.idle);
    if (r.addresses.isNull() || r.interfaceName.isNull()) {
        detail += QStringLiteral(": malformed text field");
        return false;
    }
    std::lock_guard<std::mutex> lock(m_firewallMutex);
    const bool ok = request.command == HelperWire::FirewallOn ? m_firewall.on(r) : m_firewall.change(r);
    // Rules that block nothing protect nobody: they make no owner.
    if (ok)
        m_owner.setHeld(TunnelOwner::Firewall, r.killConnect || r.ipv6Block);
    else
        detail += QStringLiteral(": ") + m_firewall.error();
    return ok;
}

bool RequestHandler::timezone(const HelperRequest& request, QString& detail)
{
    const bool restore = request.restoreZone;
    const QString& zone = request.zone;
    detail = restore ? QStringLiteral("restore") : QStringLiteral("zone \"%1\"").arg(zone);
    std::lock_guard<std::mutex> lock(m_timezoneMutex);
    // The zone follows the tunnel: while someone owns it only they may change it, but a zone of
    // its own makes nobody the owner.
    const bool ok = restore ? m_timezone.restore() : (!zone.isNull() && m_timezone.change(zone));
    if (!ok)
        detail += QStringLiteral(": ") + m_timezone.error();
    return ok;
}

bool RequestHandler::handle(const QByteArray& packet, qint64 callerUid)
{
    HelperRequest request;
    if (!HelperRequest::read(packet, &request)) {
        qWarning() << "request from uid" << callerUid << "has" << packet.size() << "bytes: refused";
        return false;
    }
    const quint32 command = request.command;

    // Everything that changes or stops what the tunnel's owner holds.
    const bool changesTunnel = command == HelperWire::FirewallOn || command == HelperWire::FirewallChange
        || command == HelperWire::FirewallOff || command == HelperWire::FirewallEnableOnStart
        || command == HelperWire::TimezoneChange || command == HelperWire::RunOpenVpnWithConfig;
    QString refusal;
    const bool claimed = changesTunnel && m_owner.claim(callerUid, refusal);

    QString name;
    QString detail;
    bool ok = false;
    switch (command) {
    case HelperWire::FirewallOn:
    case HelperWire::FirewallChange:
        name = command == HelperWire::FirewallOn ? QStringLiteral("firewallOn") : QStringLiteral("firewallChange");
        ok = claimed && firewall(request, detail);
        break;
    case HelperWire::FirewallOff:
        name = QStringLiteral("firewallOff");
        if (claimed) {
            std::lock_guard<std::mutex> lock(m_firewallMutex);
            ok = m_firewall.off();
            if (ok)
                m_owner.setHeld(TunnelOwner::Firewall, false);
            detail = m_firewall.error();
        }
        break;
    case HelperWire::FirewallSupported: {
        name = QStringLiteral("firewallSupported");
        ok = Firewall::supported();
        break;
    }
    case HelperWire::FirewallEnableOnStart:
        name = QStringLiteral("firewallEnableOnStart");
        if (claimed) {
            std::lock_guard<std::mutex> lock(m_firewallMutex);
            ok = m_firewall.enableOnStart();
        }
        break;
    case HelperWire::TimezoneChangeSupported:
        name = QStringLiteral("timezonechangeSupported");
        ok = m_timezone.supported();
        break;
    case HelperWire::TimezoneChange:
        name = QStringLiteral("timezoneChange");
        ok = claimed && timezone(request, detail);
        break;
    case HelperWire::RunOpenVpnWithConfig: {
        name = QStringLiteral("runOpenVpnWithConfig");
        const QString& args = request.arguments;
        detail = QStringLiteral("arguments \"%1\"").arg(args);
        QString error;
        ok = claimed && !args.isNull() && m_openvpn.start(args, callerUid, error);
        if (claimed && !ok)
            detail += QStringLiteral(": ") + (args.isNull() ? QStringLiteral("malformed text field") : error);
        break;
    }
    case HelperWire::UpdateInstall: {
        name = QStringLiteral("updateInstall");
        const QString& path = request.packagePath;
        detail = QStringLiteral("package \"%1\"").arg(path);
        std::lock_guard<std::mutex> lock(m_updateMutex);
        ok = !path.isNull() && m_update.install(path, callerUid);
        if (!ok)
            detail += QStringLiteral(": ") + m_update.error();
        break;
    }
    default:
        name = QStringLiteral("unknown command %1").arg(command);
        break;
    }
    if (claimed)
        m_owner.endClaim();
    if (changesTunnel && !claimed)
        detail += QStringLiteral(": ") + refusal;
    // The whole line is escaped: requested values and the errors quoting them stay on it.
    qInfo().noquote() << WireText::forLog(
        QStringLiteral("request from uid %1: %2 %3 -> %4")
            .arg(callerUid)
            .arg(name, detail, ok ? QStringLiteral("done") : QStringLiteral("refused")));
    return ok;
}

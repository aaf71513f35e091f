#include "VpnProtocols.h"

#include <iterator>

const VpnProtocol gVpnProtocol[] = {
    {OpenVpnTcp, QStringLiteral("tcp"), QStringLiteral("OpenVPN TCP (safer)")},
    {OpenVpnUdp, QStringLiteral("udp"), QStringLiteral("OpenVPN UDP (faster)")},
    {Stealth, QStringLiteral("stealth"), QStringLiteral("Imitation HTTPS")},
    {-1, QString(), QString()},
};

// The automatic UDP list ends in 9200 while the single choice is 9201; both are as the service expects.
const VpnPort gVpnAvailPorts[] = {
    {0, OpenVpnUdp, QStringLiteral("Automatic"), QStringLiteral("1194,118,123,443,9200")},
    {1, OpenVpnUdp, QStringLiteral("1194"), QStringLiteral("1194")},
    {2, OpenVpnUdp, QStringLiteral("118"), QStringLiteral("118")},
    {3, OpenVpnUdp, QStringLiteral("123"), QStringLiteral("123")},
    {4, OpenVpnUdp, QStringLiteral("443"), QStringLiteral("443")},
    {5, OpenVpnUdp, QStringLiteral("9201"), QStringLiteral("9201")},
    {6, OpenVpnTcp, QStringLiteral("Automatic"), QStringLiteral("80,88,8008")},
    {7, OpenVpnTcp, QStringLiteral("80"), QStringLiteral("80")},
    {8, OpenVpnTcp, QStringLiteral("88"), QStringLiteral("88")},
    {9, OpenVpnTcp, QStringLiteral("8008"), QStringLiteral("8008")},
    {-1, PPTP, QString(), QString()},
};

VpnProtocol getVpnProtocolByID(int id)
{
    for (const VpnProtocol* row = gVpnProtocol; row->id != -1; ++row) {
        if (row->id == id)
            return *row;
    }
    return gVpnProtocol[std::size(gVpnProtocol) - 1];
}

VpnProtocol getVpnProtocolByLabel(const QString& shortName)
{
    for (const VpnProtocol* row = gVpnProtocol; row->id != -1; ++row) {
        if (row->shortName == shortName)
            return *row;
    }
    return gVpnProtocol[std::size(gVpnProtocol) - 1];
}

VpnPort getVpnPortByLabel(const QString& ports)
{
    for (const VpnPort* row = gVpnAvailPorts; row->id != -1; ++row) {
        if (row->ports == ports)
            return *row;
    }
    return gVpnAvailPorts[std::size(gVpnAvailPorts) - 1];
}

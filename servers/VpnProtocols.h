#pragma once

#include <QString>

#include "ServerInfo.h"

// A tunnel protocol the user can choose.
struct VpnProtocol
{
    qint32 id;
    QString shortName;
    QString label;
};

// A port choice offered for a protocol; "ports" is one port or a comma-separated list.
struct VpnPort
{
    qint32 id;
    PROTOCOL_TYPE protocol;
    QString label;
    QString ports;
};

// Both tables end with a row whose id is -1.
extern const VpnProtocol gVpnProtocol[];
extern const VpnPort gVpnAvailPorts[];

VpnProtocol getVpnProtocolByID(int id);
// By short name ("tcp", "udp", "stealth"), case-sensitive.
VpnProtocol getVpnProtocolByLabel(const QString& shortName);
// By the ports text, exactly.
VpnPort getVpnPortByLabel(const QString& ports);

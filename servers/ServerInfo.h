#pragma once

#include <algorithm>

#include <QDataStream>
#include <QMetaType>
#include <QString>
#include <QStringList>

// Tunnel protocol of a server record. 2 and 3 are not used by this client.
enum PROTOCOL_TYPE : qint32 {
    PPTP = 0,
    L2TP = 1,
    Reserved2 = 2,
    Reserved3 = 3,
    OpenVpnUdp = 4,
    OpenVpnTcp = 5,
    Stealth = 6,
};

// One server location of one VPN login, as the service lists it.
struct ServerInfo
{
    enum ServerType : qint32 {
        Standart = 1,
        Double = 2,
    };

    ServerInfo() = default;
    // Builds a record from its one-line text form; a line of fewer than ten fields gives a default record.
    explicit ServerInfo(const QString& line);

    // The one-line text form used by the offline cache. Fields are not escaped. It holds the password:
    // log lines take description() instead.
    operator QString() const;
    // Name, address and VPN login, for log lines.
    QString description() const;

    QString name;
    QString flag;
    QString title;
    QString ip;
    QString user;
    QString password;
    QStringList tcpPorts;
    QStringList udpPorts;
    qint32 ping = 0;
    bool favorite = false;
    qint32 sslPort = 0;
    QString groupName;
    // 0 marks rows that are not servers (group rows, section headers).
    ServerType type = ServerType(0);
    PROTOCOL_TYPE protocol = PPTP;
    QString sni;
};

// Whether a location offers a protocol: OpenVPN TCP when it has TCP ports, UDP when it has UDP ports, stealth when
// its stealth port is 1 or more; no other protocol. (A port list read back from the cache as one empty port counts.)
bool offersProtocol(const ServerInfo& server, int protocol);
// The protocols that at least one of the locations offers, in the order TCP, UDP, stealth.
template <class Servers>
QList<PROTOCOL_TYPE> offeredProtocols(const Servers& servers)
{
    QList<PROTOCOL_TYPE> protocols;
    for (PROTOCOL_TYPE id : {OpenVpnTcp, OpenVpnUdp, Stealth}) {
        if (std::any_of(servers.begin(), servers.end(), [id](const ServerInfo& s) { return offersProtocol(s, id); }))
            protocols << id;
    }
    return protocols;
}

QDataStream& operator<<(QDataStream& stream, const ServerInfo& server);
QDataStream& operator>>(QDataStream& stream, ServerInfo& server);

Q_DECLARE_METATYPE(ServerInfo)

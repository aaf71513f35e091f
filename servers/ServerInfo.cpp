#include "ServerInfo.h"

#include "ServerLines.h"

namespace {
// Registers the record for queued signals before anything needs it.
const int serverInfoTypeId = qRegisterMetaType<ServerInfo>("ServerInfo");
} // namespace

ServerInfo::ServerInfo(const QString& line)
{
    *this = ServerLines().server(line);
}

ServerInfo::operator QString() const
{
    return ServerLines::lineOf(*this);
}

bool offersProtocol(const ServerInfo& server, int protocol)
{
    switch (protocol) {
    case OpenVpnUdp:
        return !server.udpPorts.isEmpty();
    case OpenVpnTcp:
        return !server.tcpPorts.isEmpty();
    case Stealth:
        return server.sslPort >= 1;
    default:
        return false;
    }
}

QString ServerInfo::description() const
{
    return QStringLiteral("%1 (%2, login %3)").arg(name, ip, user);
}

QDataStream& operator<<(QDataStream& stream, const ServerInfo& server)
{
    stream << server.name << server.flag << server.title << server.ip << server.favorite << server.user
           << server.password << server.tcpPorts << server.udpPorts << qint32(server.protocol);
    return stream;
}

QDataStream& operator>>(QDataStream& stream, ServerInfo& server)
{
    qint32 protocol = 0;
    stream >> server.name >> server.flag >> server.title >> server.ip >> server.favorite >> server.user
        >> server.password >> server.tcpPorts >> server.udpPorts >> protocol;
    server.protocol = PROTOCOL_TYPE(protocol);
    return stream;
}

#include "ServerInfo.h"

namespace {
const QString textFormPattern = QStringLiteral("%1;%2;%3;%4;%5;%6;%7;%8;%9;%10;%11;%12;%13");
const QChar fieldSeparator = QLatin1Char(';');
const QChar portSeparator = QLatin1Char('.');

// Registers the record for queued signals before anything needs it.
const int serverInfoTypeId = qRegisterMetaType<ServerInfo>("ServerInfo");
} // namespace

ServerInfo::ServerInfo(const QString& line)
{
    const QStringList parts = line.split(fieldSeparator, Qt::KeepEmptyParts);
    if (parts.size() < 10)
        return;
    name = parts[0];
    flag = parts[1];
    title = parts[2];
    ip = parts[3];
    favorite = parts[4].toInt() != 0;
    user = parts[5];
    password = parts[6];
    tcpPorts = parts[7].split(portSeparator, Qt::KeepEmptyParts);
    udpPorts = parts[8].split(portSeparator, Qt::KeepEmptyParts);
    protocol = PROTOCOL_TYPE(parts[9].toInt());
    if (parts.size() > 10)
        sslPort = parts[10].toInt();
    if (parts.size() > 11)
        type = ServerType(parts[11].toInt());
    if (parts.size() > 12)
        sni = parts[12];
}

ServerInfo::operator QString() const
{
    // Each arg() fills the lowest placeholder left, field by field.
    return textFormPattern.arg(name)
        .arg(flag)
        .arg(title)
        .arg(ip)
        .arg(int(favorite))
        .arg(user)
        .arg(password)
        .arg(tcpPorts.join(portSeparator))
        .arg(udpPorts.join(portSeparator))
        .arg(int(protocol))
        .arg(sslPort)
        .arg(int(type))
        .arg(sni);
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

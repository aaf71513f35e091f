#include "ServerInfo.h"

#include <algorithm>
#include <iterator>

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
    const QString tcp = tcpPorts.join(portSeparator);
    const QString udp = udpPorts.join(portSeparator);
    const QString favoriteText = QString::number(int(favorite));
    const QString protocolText = QString::number(int(protocol));
    const QString sslText = QString::number(sslPort);
    const QString typeText = QString::number(int(type));
    const QString* fields[] = {&name,
                               &flag,
                               &title,
                               &ip,
                               &favoriteText,
                               &user,
                               &password,
                               &tcp,
                               &udp,
                               &protocolText,
                               &sslText,
                               &typeText,
                               &sni};
    // Each arg() fills the lowest placeholder left, so a field holding a '%' may be changed by a later one: such a
    // record keeps that filling. Any other is joined directly, many times faster for the lines of a large cache.
    const bool placeholderInField = std::any_of(
        std::begin(fields), std::end(fields), [](const QString* f) { return f->contains(QLatin1Char('%')); });
    if (placeholderInField) {
        QString line = textFormPattern;
        for (const QString* field : fields)
            line = line.arg(*field);
        return line;
    }
    // Exactly the line's length: ten thousand lines with room to spare are a megabyte of memory to no purpose.
    int size = int(std::size(fields)) - 1;
    for (const QString* field : fields)
        size += field->size();
    QString line;
    line.reserve(size);
    for (const QString* field : fields) {
        if (field != fields[0])
            line.append(fieldSeparator);
        line.append(*field);
    }
    return line;
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

#include "ServerLines.h"

#include <algorithm>
#include <iterator>

namespace {
const QString textFormPattern = QStringLiteral("%1;%2;%3;%4;%5;%6;%7;%8;%9;%10;%11;%12;%13");
const QChar fieldSeparator = QLatin1Char(';');
const QChar portSeparator = QLatin1Char('.');
const int fieldCount = 13;

QString toText(QStringView text)
{
    return text.toString();
}

QStringList toPorts(QStringView text)
{
    return text.toString().split(portSeparator, Qt::KeepEmptyParts);
}
} // namespace

ServerInfo ServerLines::server(const QString& line)
{
    QStringRef fields[fieldCount];
    int count = 0;
    for (int start = 0;; ++count) {
        const int end = line.indexOf(fieldSeparator, start);
        if (count < fieldCount)
            fields[count] = end < 0 ? line.midRef(start) : line.midRef(start, end - start);
        if (end < 0)
            break;
        start = end + 1;
    }
    ++count;
    ServerInfo s;
    if (count < 10)
        return s;
    s.name = fields[0].toString();
    s.flag = m_texts.value(fields[1], toText);
    s.title = fields[2] == s.name ? s.name : fields[2].toString();
    s.ip = fields[3].toString();
    s.favorite = fields[4].toInt() != 0;
    s.user = m_texts.value(fields[5], toText);
    s.password = m_texts.value(fields[6], toText);
    s.tcpPorts = m_ports.value(fields[7], toPorts);
    s.udpPorts = m_ports.value(fields[8], toPorts);
    s.protocol = PROTOCOL_TYPE(fields[9].toInt());
    if (count > 10)
        s.sslPort = fields[10].toInt();
    if (count > 11)
        s.type = ServerInfo::ServerType(fields[11].toInt());
    if (count > 12)
        s.sni = m_texts.value(fields[12], toText);
    return s;
}

QString ServerLines::lineOf(const ServerInfo& server)
{
    const QString tcp = server.tcpPorts.join(portSeparator);
    const QString udp = server.udpPorts.join(portSeparator);
    const QString favoriteText = QString::number(int(server.favorite));
    const QString protocolText = QString::number(int(server.protocol));
    const QString sslText = QString::number(server.sslPort);
    const QString typeText = QString::number(int(server.type));
    const QString* fields[] = {&server.name,
                               &server.flag,
                               &server.title,
                               &server.ip,
                               &favoriteText,
                               &server.user,
                               &server.password,
                               &tcp,
                               &udp,
                               &protocolText,
                               &sslText,
                               &typeText,
                               &server.sni};
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

#include "ServerLines.h"

namespace {
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

#include "ServerLines.h"

namespace {
const QChar fieldSeparator = QLatin1Char(';');
const QChar portSeparator = QLatin1Char('.');
const int fieldCount = 13;

// Length of the decimal text of n, sign included.
int decimalLength(int n)
{
    int length = n < 0 ? 2 : 1;
    for (qint64 rest = qAbs(qint64(n)); rest >= 10; rest /= 10)
        ++length;
    return length;
}

void appendPorts(QString* line, const QStringList& ports)
{
    for (int i = 0; i < ports.size(); ++i) {
        if (i > 0)
            line->append(portSeparator);
        line->append(ports.at(i));
    }
}

QString toText(QStringView text)
{
    return text.toString();
}

QStringList toPorts(QStringView text)
{
    return text.toString().split(portSeparator, Qt::KeepEmptyParts);
}
} // namespace

QString ServerLines::line(const ServerInfo& s)
{
    // Exactly the line's length: ten thousand lines with room to spare are a megabyte of memory to no purpose.
    int size = fieldCount - 1 + decimalLength(int(s.favorite)) + decimalLength(int(s.protocol))
        + decimalLength(s.sslPort) + decimalLength(int(s.type));
    // The record fills its placeholders one after the other, so a field holding a '%' may be changed by a later
    // one: such a record is left to the record's own conversion.
    for (const QString* text : {&s.name, &s.flag, &s.title, &s.ip, &s.user, &s.password, &s.sni}) {
        if (text->contains(QLatin1Char('%')))
            return s;
        size += text->size();
    }
    for (const QStringList* ports : {&s.tcpPorts, &s.udpPorts}) {
        for (const QString& port : *ports) {
            if (port.contains(QLatin1Char('%')))
                return s;
            size += port.size() + 1;
        }
        size -= ports->isEmpty() ? 0 : 1;
    }
    QString line;
    line.reserve(size);
    line.append(s.name).append(fieldSeparator).append(s.flag).append(fieldSeparator);
    line.append(s.title).append(fieldSeparator).append(s.ip).append(fieldSeparator);
    line.append(QString::number(int(s.favorite))).append(fieldSeparator);
    line.append(s.user).append(fieldSeparator).append(s.password).append(fieldSeparator);
    appendPorts(&line, s.tcpPorts);
    line.append(fieldSeparator);
    appendPorts(&line, s.udpPorts);
    line.append(fieldSeparator).append(QString::number(int(s.protocol)));
    line.append(fieldSeparator).append(QString::number(s.sslPort));
    line.append(fieldSeparator).append(QString::number(int(s.type)));
    line.append(fieldSeparator).append(s.sni);
    Q_ASSERT(line.size() == size);
    return line;
}

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

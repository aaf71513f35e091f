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

// QString::toInt goes through the locale's number parser; a field of a few plain digits, which is what the lines
// hold, is read here with the same result.
int toInt(QStringView field)
{
    if (field.isEmpty() || field.size() > 9)
        return field.toString().toInt();
    int value = 0;
    for (const QChar c : field) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return field.toString().toInt();
        value = value * 10 + (c.unicode() - '0');
    }
    return value;
}
} // namespace

ServerInfo ServerLines::server(const QString& line)
{
    // The fields as views into the line, found in one pass over its characters.
    QStringView fields[fieldCount];
    int count = 0;
    const QChar* start = line.constData();
    const QChar* const end = start + line.size();
    for (const QChar* at = start;; ++at) {
        if (at == end || *at == fieldSeparator) {
            if (count < fieldCount)
                fields[count] = QStringView(start, at - start);
            ++count;
            if (at == end)
                break;
            start = at + 1;
        }
    }
    ServerInfo s;
    if (count < 10)
        return s;
    s.name = fields[0].toString();
    s.flag = m_texts.value(fields[1], toText);
    s.title = fields[2] == QStringView(s.name) ? s.name : fields[2].toString();
    s.ip = fields[3].toString();
    s.favorite = toInt(fields[4]) != 0;
    s.user = m_texts.value(fields[5], toText);
    s.password = m_texts.value(fields[6], toText);
    s.tcpPorts = m_ports.value(fields[7], toPorts);
    s.udpPorts = m_ports.value(fields[8], toPorts);
    s.protocol = PROTOCOL_TYPE(toInt(fields[9]));
    if (count > 10)
        s.sslPort = toInt(fields[10]);
    if (count > 11)
        s.type = ServerInfo::ServerType(toInt(fields[11]));
    if (count > 12)
        s.sni = m_texts.value(fields[12], toText);
    return s;
}

namespace {
// The length of QString::number(n).
int numberLength(int n)
{
    int length = n < 0 ? 2 : 1;
    for (unsigned rest = n < 0 ? 0u - unsigned(n) : unsigned(n); rest >= 10; rest /= 10)
        ++length;
    return length;
}

void appendNumber(QString& line, int n)
{
    if (n >= 0 && n < 10)
        line.append(QLatin1Char(char('0' + n)));
    else
        line.append(QString::number(n));
}

int portsLength(const QStringList& ports)
{
    int length = std::max(0, int(ports.size()) - 1);
    for (const QString& port : ports)
        length += port.size();
    return length;
}

void appendPorts(QString& line, const QStringList& ports)
{
    for (int i = 0; i < ports.size(); ++i) {
        if (i > 0)
            line.append(portSeparator);
        line.append(ports.at(i));
    }
}

bool holdsPlaceholder(const QString& text)
{
    return text.contains(QLatin1Char('%'));
}

// The pattern filled field by field: each arg() fills the lowest placeholder left, so a field holding a '%' may be
// changed by a later one, and such a record keeps that filling.
QString filledPattern(const ServerInfo& server)
{
    const QString fields[] = {server.name,
                              server.flag,
                              server.title,
                              server.ip,
                              QString::number(int(server.favorite)),
                              server.user,
                              server.password,
                              server.tcpPorts.join(portSeparator),
                              server.udpPorts.join(portSeparator),
                              QString::number(int(server.protocol)),
                              QString::number(server.sslPort),
                              QString::number(int(server.type)),
                              server.sni};
    QString line = textFormPattern;
    for (const QString& field : fields)
        line = line.arg(field);
    return line;
}
} // namespace

QString ServerLines::lineOf(const ServerInfo& server)
{
    const QString* texts[]
        = {&server.name, &server.flag, &server.title, &server.ip, &server.user, &server.password, &server.sni};
    if (std::any_of(std::begin(texts), std::end(texts), [](const QString* text) { return holdsPlaceholder(*text); })
        || std::any_of(server.tcpPorts.cbegin(), server.tcpPorts.cend(), holdsPlaceholder)
        || std::any_of(server.udpPorts.cbegin(), server.udpPorts.cend(), holdsPlaceholder))
        return filledPattern(server);

    // Any other record is written straight into a line of exactly its length: many times faster than the pattern,
    // and ten thousand lines with room to spare would be a megabyte of memory to no purpose.
    const int favorite = int(server.favorite);
    const int protocol = int(server.protocol);
    const int type = int(server.type);
    int size = fieldCount - 1 + portsLength(server.tcpPorts) + portsLength(server.udpPorts) + numberLength(favorite)
        + numberLength(protocol) + numberLength(server.sslPort) + numberLength(type);
    for (const QString* text : texts)
        size += text->size();
    QString line;
    line.reserve(size);
    const auto text = [&line](const QString& field) {
        line.append(field);
        line.append(fieldSeparator);
    };
    const auto number = [&line](int field) {
        appendNumber(line, field);
        line.append(fieldSeparator);
    };
    text(server.name);
    text(server.flag);
    text(server.title);
    text(server.ip);
    number(favorite);
    text(server.user);
    text(server.password);
    appendPorts(line, server.tcpPorts);
    line.append(fieldSeparator);
    appendPorts(line, server.udpPorts);
    line.append(fieldSeparator);
    number(protocol);
    number(server.sslPort);
    number(type);
    line.append(server.sni);
    return line;
}

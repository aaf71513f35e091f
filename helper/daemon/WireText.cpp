#include "WireText.h"

#include <QVector>

#include <cstdint>
#include <cstring>

namespace WireText {

QString readUcs4(const QByteArray& packet, std::size_t offset, std::size_t size)
{
    if (offset + size > std::size_t(packet.size()))
        return QString();
    QVector<uint> codes;
    for (std::size_t at = offset; at + 4 <= offset + size; at += 4) {
        std::uint32_t code;
        std::memcpy(&code, packet.constData() + at, sizeof code); // the field may be unaligned
        if (code == 0)
            return codes.isEmpty() ? QString(QLatin1String("")) : QString::fromUcs4(codes.constData(), codes.size());
        if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            return QString();
        codes.append(code);
    }
    return QString(); // no terminating zero
}

QString readUtf8(const QByteArray& packet, std::size_t offset, std::size_t size)
{
    if (offset + size > std::size_t(packet.size()))
        return QString();
    const QByteArray field = packet.mid(int(offset), int(size));
    const int end = field.indexOf('\0');
    if (end < 0)
        return QString();
    const QByteArray text = field.left(end);
    const QString decoded = QString::fromUtf8(text);
    if (decoded.toUtf8() != text)
        return QString(); // not valid UTF-8
    return decoded.isNull() ? QString(QLatin1String("")) : decoded;
}

QString forLog(const QString& text)
{
    QString out;
    out.reserve(text.size());
    for (const QChar c : text) {
        const ushort u = c.unicode();
        if (u < 0x20 || (u >= 0x7F && u <= 0x9F))
            out += QStringLiteral("\\x%1").arg(u, 2, 16, QLatin1Char('0'));
        else if (u == 0x2028 || u == 0x2029)
            out += QStringLiteral("\\u%1").arg(u, 4, 16, QLatin1Char('0'));
        else
            out += c;
    }
    return out;
}

} // namespace WireText

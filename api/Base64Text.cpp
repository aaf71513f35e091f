#include "Base64Text.h"

#include <QByteArray>

namespace {
const signed char skipped = -1;

constexpr signed char digitOf(char16_t c)
{
    if (c >= 'A' && c <= 'Z')
        return static_cast<signed char>(c - 'A');
    if (c >= 'a' && c <= 'z')
        return static_cast<signed char>(c - 'a' + 26);
    if (c >= '0' && c <= '9')
        return static_cast<signed char>(c - '0' + 52);
    if (c == '+')
        return 62;
    if (c == '/')
        return 63;
    return skipped;
}

struct Digits
{
    signed char of[128];
    constexpr Digits()
        : of()
    {
        for (char16_t c = 0; c < 128; ++c)
            of[c] = digitOf(c);
    }
};
constexpr Digits digits;
} // namespace

QString base64Text(QStringView base64)
{
    // Names and addresses are ASCII: their bytes go straight into the text, without a Latin-1 copy of the value and
    // an array of its bytes on the way. The first byte beyond ASCII leaves the value to the UTF-8 decoder.
    QString text(int(base64.size() * 3 / 4), Qt::Uninitialized);
    QChar* out = text.data();
    int length = 0;
    uint buffer = 0;
    int bits = 0;
    for (const QChar c : base64) {
        const int digit = c.unicode() < 128 ? digits.of[c.unicode()] : skipped;
        if (digit == skipped)
            continue;
        buffer = (buffer << 6) | uint(digit);
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            const uint byte = buffer >> bits;
            buffer &= (1u << bits) - 1;
            if (byte >= 0x80)
                return QString::fromUtf8(QByteArray::fromBase64(base64.toLatin1()));
            if (byte == 0)
                break; // as QString::fromUtf8(QByteArray), the text ends at a NUL byte
            out[length++] = QChar(ushort(byte));
        }
    }
    if (length == 0) // null or empty as the decoders would make it
        return QString::fromUtf8(QByteArray::fromBase64(base64.toLatin1()));
    text.truncate(length);
    return text;
}

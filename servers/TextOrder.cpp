#include "TextOrder.h"

#include <algorithm>

namespace {
// Characters of a text held in its key, one byte each.
const int keyChars = 16;
const ushort firstNonAscii = 0x80;
const quint8 nonAsciiByte = 0xff;

struct SortKey
{
    int cls;
    quint64 high;
    quint64 low;
    int position;
};

// The key bytes are the first characters while they are ASCII, a byte above every ASCII character for the first one
// that is not, and zeros from there and past the end. Where two keys differ, they differ as the texts compare;
// where they are equal, the texts are compared themselves.
SortKey keyOf(const QString& text, int cls, int position)
{
    SortKey key {cls, 0, 0, position};
    const ushort* chars = text.utf16();
    const int length = std::min<int>(text.size(), keyChars);
    bool ascii = true;
    for (int i = 0; i < keyChars; ++i) {
        quint8 byte = 0;
        if (ascii && i < length) {
            ascii = chars[i] < firstNonAscii;
            byte = ascii ? quint8(chars[i]) : nonAsciiByte;
        }
        quint64& half = i < keyChars / 2 ? key.high : key.low;
        half = (half << 8) | byte;
    }
    return key;
}
} // namespace

QString lowerCased(const QString& text)
{
    const ushort* chars = text.utf16();
    const int length = text.size();
    int firstUpper = -1;
    for (int i = 0; i < length; ++i) {
        if (chars[i] >= firstNonAscii)
            return text.toLower();
        if (firstUpper < 0 && chars[i] >= 'A' && chars[i] <= 'Z')
            firstUpper = i;
    }
    if (firstUpper < 0)
        return text;
    QString lower(text.constData(), length);
    ushort* out = reinterpret_cast<ushort*>(lower.data());
    for (int i = firstUpper; i < length; ++i) {
        if (out[i] >= 'A' && out[i] <= 'Z')
            out[i] += 'a' - 'A';
    }
    return lower;
}

QVector<int> orderByText(const QVector<QString>& texts, const QVector<int>& classes)
{
    const int count = texts.size();
    std::vector<SortKey> keys;
    keys.reserve(count);
    for (int i = 0; i < count; ++i)
        keys.push_back(keyOf(texts[i], classes.isEmpty() ? 0 : classes[i], i));
    const QString* text = texts.constData();
    std::sort(keys.begin(), keys.end(), [text](const SortKey& left, const SortKey& right) {
        if (left.cls != right.cls)
            return left.cls < right.cls;
        if (left.high != right.high)
            return left.high < right.high;
        if (left.low != right.low)
            return left.low < right.low;
        const int order = text[left.position].compare(text[right.position]);
        return order != 0 ? order < 0 : left.position < right.position;
    });
    QVector<int> order(count);
    for (int i = 0; i < count; ++i)
        order[i] = keys[i].position;
    return order;
}

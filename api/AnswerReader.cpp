#include "AnswerReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {
// A tag or a declaration longer than this, still open, is left to QXmlStreamReader, which reads it incrementally.
const int longestTag = 64 * 1024;
const int maxAttributes = 32;
const char cdataStart[] = "<![CDATA[";
const int cdataStartLength = int(sizeof(cdataStart)) - 1;

bool plainByte(unsigned char u)
{
    return (u >= 0x20 && u < 0x7f) || u == '\t' || u == '\n';
}

// Printable ASCII, tab and line feed: what the scan reads itself. A carriage return would need the line-end rules.
bool allPlain(const QByteArray& bytes)
{
    // Megabytes at a time: sixteen bytes a step.
    const char* at = bytes.constData();
    const char* const end = at + bytes.size();
#ifdef __SSE2__
    __m128i outside = _mm_setzero_si128();
    for (; end - at >= 16; at += 16) {
        const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        // Signed bytes: below 0x20 takes in everything from 0x80 up, too.
        const __m128i low = _mm_cmplt_epi8(v, _mm_set1_epi8(0x20));
        const __m128i blank
            = _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('\t')), _mm_cmpeq_epi8(v, _mm_set1_epi8('\n')));
        const __m128i del = _mm_cmpeq_epi8(v, _mm_set1_epi8(0x7f));
        outside = _mm_or_si128(outside, _mm_or_si128(_mm_andnot_si128(blank, low), del));
    }
    if (_mm_movemask_epi8(outside) != 0)
        return false;
#endif
    for (; at < end; ++at) {
        if (!plainByte(static_cast<unsigned char>(*at)))
            return false;
    }
    return true;
}

bool isSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n';
}

const char* skipSpace(const char* at, const char* end)
{
    while (at < end && isSpace(*at))
        ++at;
    return at;
}

bool nameStart(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

bool nameChar(char c)
{
    return nameStart(c) || (c >= '0' && c <= '9') || c == '.' || c == '-';
}

bool startsWith(const char* at, const char* end, const char* text)
{
    const int length = int(std::strlen(text));
    return end - at >= length && std::memcmp(at, text, size_t(length)) == 0;
}
} // namespace

AnswerReader::AnswerReader(const QByteArray& body)
    : m_body(body)
    , m_whole(true)
{
    // Names and attributes are taken as written, prefixes included.
    m_xml.setNamespaceProcessing(false);
    if (!allPlain(body))
        handOver();
}

AnswerReader::AnswerReader()
    : m_whole(false)
    , m_endOfData(false)
{
    m_xml.setNamespaceProcessing(false);
}

void AnswerReader::addData(const QByteArray& piece)
{
    if (m_endOfData || m_finished)
        return;
    m_body += piece;
    m_pieceEnds.append(m_body.size());
    if (m_scanning && !allPlain(piece))
        handOver();
}

void AnswerReader::endOfData()
{
    m_endOfData = true;
}

QStringRef AnswerReader::attribute(QLatin1String qualifiedName) const
{
    if (!m_scanning)
        return m_attributes.value(qualifiedName);
    // Nine lookups for each of thousands of servers: the names are compared here, without a call per character.
    const QChar* const tag = m_startTag.constData();
    for (const Attribute& attribute : m_scannedAttributes) {
        if (attribute.nameLength != qualifiedName.size())
            continue;
        int i = 0;
        while (i < attribute.nameLength && tag[attribute.name + i] == QLatin1Char(qualifiedName.data()[i]))
            ++i;
        if (i == attribute.nameLength)
            return QStringRef(&m_startTag, attribute.value, attribute.valueLength);
    }
    return QStringRef();
}

bool AnswerReader::next()
{
    if (m_scanning && nextScanned())
        return true;
    // The scan may have handed the body over just now.
    return !m_scanning && nextParsed();
}

bool AnswerReader::nextScanned()
{
    if (m_depth == 0)
        m_scannedAttributes.clear();
    while (!m_finished) {
        const Step step = m_inRoot ? scanToken() : scanProlog();
        switch (step) {
        case Step::Token:
            break;
        case Step::Child:
            ++m_handedOut;
            return true;
        case Step::More:
            // A tag that long is no answer of the service's; the parser reads it in pieces. (While text or CDATA is
            // still open, the search for its end is ahead of its start.)
            if (!m_endOfData && m_body.size() - m_pos > longestTag && m_searchFrom <= m_pos) {
                handOver();
                return false;
            }
            m_finished = m_endOfData;
            return false;
        case Step::Unsure:
            handOver();
            return false;
        case Step::End:
            m_finished = true;
            return false;
        }
    }
    return false;
}

AnswerReader::Step AnswerReader::scanProlog()
{
    const char* const begin = m_body.constData();
    const char* const end = begin + m_body.size();
    const char* at = begin + m_pos;
    if (m_pos == 0 && startsWith(at, end, "<?xml")) {
        // Only the plain declaration: version 1.0 and an encoding of which ASCII is a part.
        const int close = m_body.indexOf("?>");
        if (close < 0)
            return Step::More;
        const QByteArray declaration = m_body.left(close + 2).simplified();
        static const QByteArray plain[] = {"<?xml version=\"1.0\"?>",
                                           "<?xml version=\"1.0\" encoding=\"UTF-8\"?>",
                                           "<?xml version=\"1.0\" encoding=\"utf-8\"?>",
                                           "<?xml version='1.0'?>",
                                           "<?xml version='1.0' encoding='UTF-8'?>",
                                           "<?xml version='1.0' encoding='utf-8'?>"};
        if (std::find(std::begin(plain), std::end(plain), declaration) == std::end(plain) || !isSpace(m_body.at(5)))
            return Step::Unsure;
        m_pos = close + 2;
        return Step::Token;
    }
    at = skipSpace(at, end);
    m_pos = int(at - begin);
    if (at == end)
        return Step::More;
    if (*at != '<' || end - at < 2)
        return *at == '<' ? Step::More : Step::Unsure;
    if (!nameStart(at[1]))
        return Step::Unsure;
    const int start = m_pos;
    int nameLength = 0;
    bool empty = false;
    const Step step = scanStartTag(&nameLength, nullptr, &empty);
    if (step != Step::Token)
        return step;
    if (empty)
        return Step::End;
    m_open.append(m_body.mid(start + 1, nameLength));
    m_inRoot = true;
    return Step::Token;
}

AnswerReader::Step AnswerReader::scanToken()
{
    const char* const begin = m_body.constData();
    const char* const end = begin + m_body.size();
    const char* const at = begin + m_pos;
    if (at == end)
        return Step::More;
    if (*at != '<') {
        // Text runs to the next tag; it is read once it is whole.
        const char* const from = begin + std::max(m_pos, m_searchFrom);
        const char* const lt = static_cast<const char*>(std::memchr(from, '<', size_t(end - from)));
        if (!lt) {
            m_searchFrom = m_body.size();
            return Step::More;
        }
        const int to = int(lt - begin);
        const QByteArray::const_iterator first = m_body.cbegin() + m_pos;
        const QByteArray::const_iterator last = m_body.cbegin() + to;
        static const char cdataEnd[] = "]]>";
        if (std::find(first, last, '&') != last || std::search(first, last, cdataEnd, cdataEnd + 3) != last)
            return Step::Unsure;
        // Whitespace alone between markup is no text for the document parser either (and Base64 skips it).
        if (m_depth > 0 && !std::all_of(first, last, isSpace))
            appendText(m_pos, to);
        m_pos = m_searchFrom = to;
        return Step::Token;
    }
    if (startsWith(at, end, cdataStart)) {
        const int from = std::max(m_pos + cdataStartLength, m_searchFrom);
        const int close = m_body.indexOf("]]>", from);
        if (close < 0) {
            m_searchFrom = std::max(m_pos + cdataStartLength, m_body.size() - 2);
            return Step::More;
        }
        if (m_depth > 0)
            appendText(m_pos + cdataStartLength, close);
        m_pos = m_searchFrom = close + 3;
        return Step::Token;
    }
    if (end - at < cdataStartLength && std::memcmp(at, cdataStart, size_t(end - at)) == 0)
        return Step::More;
    if (end - at < 2)
        return Step::More;
    if (at[1] == '/')
        return scanEndTag();
    if (!nameStart(at[1]))
        return Step::Unsure;

    const int start = m_pos;
    int nameLength = 0;
    bool empty = false;
    const Step step = scanStartTag(&nameLength, m_depth == 0 ? &m_scannedAttributes : nullptr, &empty);
    if (step != Step::Token)
        return step;
    const QLatin1String name(m_body.constData() + start + 1, nameLength);
    if (m_depth == 0) {
        m_depth = 1;
        // Thousands of children share a few names.
        if (m_name != name)
            m_name = name;
        m_startTag = QString::fromLatin1(m_body.constData() + start, m_pos - start);
        m_text.clear();
        m_parts.clear();
    } else if (++m_depth == 2) {
        m_parts.append({name, QString()});
    }
    if (!empty) {
        m_open.append(m_body.mid(start + 1, nameLength));
        return Step::Token;
    }
    return --m_depth == 0 ? Step::Child : Step::Token;
}

AnswerReader::Step AnswerReader::scanStartTag(int* nameLength, QVector<Attribute>* attributes, bool* empty)
{
    const char* const begin = m_body.constData();
    const char* const end = begin + m_body.size();
    const char* const tag = begin + m_pos;
    const char* at = tag + 1;
    while (at < end && nameChar(*at))
        ++at;
    if (at == end)
        return Step::More;
    *nameLength = int(at - tag - 1);
    // Attribute names so far, to find a repeated one; a tag with more is left to the parser.
    std::array<QLatin1String, maxAttributes> seen;
    int count = 0;
    if (attributes)
        attributes->clear();
    for (;;) {
        // Each attribute follows whitespace; the tag ends with ">" or "/>" after the name or an attribute.
        const char* const afterValue = at;
        at = skipSpace(at, end);
        if (at == end)
            return Step::More;
        if (*at == '>' || *at == '/') {
            if (*at == '/' && (at + 1 == end || at[1] != '>'))
                return at + 1 == end ? Step::More : Step::Unsure;
            *empty = *at == '/';
            m_pos = int(at - begin) + (*empty ? 2 : 1);
            return Step::Token;
        }
        // Names with "xml" in front are the parser's (namespace declarations among them).
        if (at == afterValue || !nameStart(*at) || startsWith(at, end, "xml") || count == maxAttributes)
            return Step::Unsure;
        const char* const attributeName = at;
        while (at < end && nameChar(*at))
            ++at;
        const QLatin1String key(attributeName, int(at - attributeName));
        at = skipSpace(at, end);
        if (at == end)
            return Step::More;
        if (*at != '=')
            return Step::Unsure;
        ++at;
        at = skipSpace(at, end);
        if (at == end)
            return Step::More;
        const char quote = *at;
        if (quote != '"' && quote != '\'')
            return Step::Unsure;
        const char* const value = ++at;
        while (at < end && *at != quote && *at != '<' && *at != '&' && *at != '\t' && *at != '\n')
            ++at;
        if (at == end)
            return Step::More;
        // Entities, a "<", and the whitespace that attribute values have normalised: the parser's part.
        if (*at != quote || std::find(seen.begin(), seen.begin() + count, key) != seen.begin() + count)
            return Step::Unsure;
        seen[size_t(count++)] = key;
        if (attributes)
            attributes->append({int(attributeName - tag), key.size(), int(value - tag), int(at - value)});
        ++at;
    }
}

AnswerReader::Step AnswerReader::scanEndTag()
{
    const char* const begin = m_body.constData();
    const char* const end = begin + m_body.size();
    const char* const name = begin + m_pos + 2;
    const char* nameEnd = name;
    while (nameEnd < end && nameChar(*nameEnd))
        ++nameEnd;
    const char* const at = skipSpace(nameEnd, end);
    if (at == end)
        return Step::More;
    if (*at != '>' || m_open.isEmpty() || QByteArray::fromRawData(name, int(nameEnd - name)) != m_open.constLast())
        return Step::Unsure;
    m_open.removeLast();
    m_pos = int(at - begin) + 1;
    if (m_open.isEmpty())
        return Step::End;
    if (m_depth == 0)
        return Step::Unsure;
    return --m_depth == 0 ? Step::Child : Step::Token;
}

void AnswerReader::appendText(int from, int to)
{
    const QString text = QString::fromLatin1(m_body.constData() + from, to - from);
    m_text += text;
    if (m_depth >= 2)
        m_parts.last().text += text;
}

void AnswerReader::handOver()
{
    // The parser reads the body from its start and passes over the children the scan handed out.
    m_scanning = false;
    m_skip = m_handedOut;
    m_inRoot = false;
    m_depth = 0;
    m_scannedAttributes.clear();
    m_open.clear();
    if (m_whole) {
        // As the body was always read whole: through a device, which the parser decodes a block at a time.
        m_device.setBuffer(&m_body);
        m_device.open(QIODevice::ReadOnly);
        m_xml.setDevice(&m_device);
        // Set anew: a new device starts the parser over, defaults and all.
        m_xml.setNamespaceProcessing(false);
    }
}

bool AnswerReader::nextParsed()
{
    // Let go of the last child's attributes first: while they are shared, the reader copies its own on every element.
    if (m_depth == 0)
        m_attributes = QXmlStreamAttributes();
    while (!m_finished) {
        const QXmlStreamReader::TokenType token = m_xml.readNext();
        if (token == QXmlStreamReader::Invalid) {
            // The end of what the parser has: the next piece goes on from here, if it has come.
            if (m_xml.error() == QXmlStreamReader::PrematureEndOfDocumentError && !m_whole) {
                if (m_piecesGiven < m_pieceEnds.size()) {
                    const int from = m_piecesGiven == 0 ? 0 : m_pieceEnds.at(m_piecesGiven - 1);
                    m_xml.addData(m_body.mid(from, m_pieceEnds.at(m_piecesGiven) - from));
                    ++m_piecesGiven;
                    continue;
                }
                if (!m_endOfData)
                    return false;
            }
            m_finished = true;
            return false;
        }
        if (!m_inRoot) {
            m_inRoot = token == QXmlStreamReader::StartElement;
            m_finished = token == QXmlStreamReader::EndDocument;
            continue;
        }
        if (m_depth == 0) {
            if (token == QXmlStreamReader::StartElement)
                startChild();
            else if (token == QXmlStreamReader::EndElement)
                m_finished = true;
            continue;
        }
        switch (token) {
        case QXmlStreamReader::StartElement:
            if (++m_depth == 2)
                m_parts.append({m_xml.qualifiedName().toString(), QString()});
            break;
        case QXmlStreamReader::EndElement:
            if (--m_depth == 0) {
                if (m_skip == 0)
                    return true;
                --m_skip;
            }
            break;
        case QXmlStreamReader::Characters:
            // Whitespace alone between markup is no text for the document parser either (and Base64 skips it).
            if (m_xml.isWhitespace() && !m_xml.isCDATA())
                break;
            m_text += m_xml.text();
            if (m_depth >= 2)
                m_parts.last().text += m_xml.text();
            break;
        default:
            break;
        }
    }
    return false;
}

void AnswerReader::startChild()
{
    m_depth = 1;
    m_name = m_xml.qualifiedName().toString();
    m_attributes = m_xml.attributes();
    // Values that a DTD only declares as defaults were never part of the element as the service wrote it.
    for (int i = m_attributes.size() - 1; i >= 0; --i) {
        if (m_attributes.at(i).isDefault())
            m_attributes.remove(i);
    }
    m_text.clear();
    m_parts.clear();
}

#include "AnswerReader.h"

AnswerReader::AnswerReader(const QByteArray& body)
    : m_body(body)
    , m_device(&m_body)
{
    // Read through a device, the reader decodes the body a piece at a time instead of as one copy of the whole.
    m_device.open(QIODevice::ReadOnly);
    m_xml.setDevice(&m_device);
    // Names and attributes are taken as written, prefixes included.
    m_xml.setNamespaceProcessing(false);
}

AnswerReader::AnswerReader()
    : m_endOfData(false)
{
    m_xml.setNamespaceProcessing(false);
}

void AnswerReader::addData(const QByteArray& piece)
{
    if (!m_endOfData)
        m_xml.addData(piece);
}

void AnswerReader::endOfData()
{
    m_endOfData = true;
}

QStringRef AnswerReader::attribute(QLatin1String qualifiedName) const
{
    return m_attributes.value(qualifiedName);
}

bool AnswerReader::next()
{
    // Let go of the last child's attributes first: while they are shared, the reader copies its own on every element.
    if (m_depth == 0)
        m_attributes = QXmlStreamAttributes();
    while (!m_finished) {
        const QXmlStreamReader::TokenType token = m_xml.readNext();
        if (token == QXmlStreamReader::Invalid) {
            // The end of what has come so far: the next piece goes on from here.
            if (m_xml.error() == QXmlStreamReader::PrematureEndOfDocumentError && !m_endOfData)
                return false;
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
            if (--m_depth == 0)
                return true;
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

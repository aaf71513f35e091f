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

QStringRef AnswerReader::attribute(QLatin1String qualifiedName) const
{
    return m_attributes.value(qualifiedName);
}

bool AnswerReader::next()
{
    // Let go of the last child's attributes first: while they are shared, the reader copies its own on every element.
    m_attributes = QXmlStreamAttributes();
    if (m_finished)
        return false;
    if (!m_inRoot && !enterRoot()) {
        m_finished = true;
        return false;
    }
    while (!m_xml.atEnd()) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (readChild())
                return true;
            m_finished = true;
            return false;
        case QXmlStreamReader::EndElement:
        case QXmlStreamReader::Invalid:
            m_finished = true;
            return false;
        default:
            break;
        }
    }
    m_finished = true;
    return false;
}

bool AnswerReader::enterRoot()
{
    while (!m_xml.atEnd()) {
        if (m_xml.readNext() == QXmlStreamReader::StartElement) {
            m_inRoot = true;
            return true;
        }
    }
    return false;
}

bool AnswerReader::readChild()
{
    m_name = m_xml.qualifiedName().toString();
    m_attributes = m_xml.attributes();
    // Values that a DTD only declares as defaults were never part of the element as the service wrote it.
    for (int i = m_attributes.size() - 1; i >= 0; --i) {
        if (m_attributes.at(i).isDefault())
            m_attributes.remove(i);
    }
    m_text.clear();
    m_parts.clear();
    int depth = 1;
    while (!m_xml.atEnd()) {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++depth == 2)
                m_parts.append({m_xml.qualifiedName().toString(), QString()});
            break;
        case QXmlStreamReader::EndElement:
            if (--depth == 0)
                return true;
            break;
        case QXmlStreamReader::Characters:
            // Whitespace alone between markup is no text for the document parser either (and Base64 skips it).
            if (m_xml.isWhitespace() && !m_xml.isCDATA())
                break;
            m_text += m_xml.text();
            if (depth >= 2)
                m_parts.last().text += m_xml.text();
            break;
        case QXmlStreamReader::Invalid:
            return false;
        default:
            break;
        }
    }
    return false;
}

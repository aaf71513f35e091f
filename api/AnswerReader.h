#pragma once

#include <QBuffer>
#include <QByteArray>
#include <QString>
#include <QStringRef>
#include <QVector>
#include <QXmlStreamAttributes>
#include <QXmlStreamReader>

// Reads the children of a service answer's document element one at a time, straight from the bytes, so that an
// account of thousands of servers never becomes a document tree. It sees what a walk over the parsed document
// (QDomDocument) sees: the root's element children in document order whatever the root is called, everything else
// (text, comments, processing instructions) skipped, an element's text made of all the text and CDATA inside it at
// any depth, and nothing at all for a body that is not XML.
//
// A child is handed out only once its end tag has been read. Where the body breaks off or stops being XML, the
// children before that point have been handed out and the child it cuts short is dropped, with everything after
// it: half a certificate, or an update offer without its link, is worth nothing. The reader is strict where the
// document parser was lenient (control characters, a repeated attribute, an undeclared entity): such a fault ends
// the walk like any other.
class AnswerReader
{
public:
    // A child's own child element, for the small structured payloads (the update offer).
    struct Part
    {
        QString name;
        QString text;
    };

    explicit AnswerReader(const QByteArray& body);
    AnswerReader(const AnswerReader&) = delete;
    AnswerReader& operator=(const AnswerReader&) = delete;

    // Moves to the next complete child; false at the root's end, at the end of the body or at the first error.
    bool next();

    // The current child's qualified name, as written (no namespace processing).
    const QString& name() const { return m_name; }
    // The value of the attribute of that qualified name; empty when it is missing.
    QStringRef attribute(QLatin1String qualifiedName) const;
    const QString& text() const { return m_text; }
    const QVector<Part>& parts() const { return m_parts; }

private:
    bool enterRoot();
    bool readChild();

    QByteArray m_body;
    QBuffer m_device;
    QXmlStreamReader m_xml;
    bool m_inRoot = false;
    bool m_finished = false;
    QString m_name;
    QXmlStreamAttributes m_attributes;
    QString m_text;
    QVector<Part> m_parts;
};

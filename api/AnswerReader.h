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
//
// The body may be given whole, or in pieces as it arrives: then next() hands out the children that the pieces so far
// complete, and endOfData() says that no more will come. A well-formed body gives the same children however it is
// cut; in a faulty one, some faults (bytes not valid in the encoding, a "]]>" cut in two) are found where the piece
// holding them is decoded or scanned, so the walk ends near the fault but not always after the same child.
//
// QXmlStreamReader is the parser. The service writes plain ASCII XML (elements, attributes, Base64 text, CDATA), and
// that much is scanned here directly, several times faster; anything else (a byte outside printable ASCII, an
// entity, a comment, a DOCTYPE, a carriage return, a tag that is not plainly well-formed) hands the body to
// QXmlStreamReader from its start, in the pieces it came in, and the parser passes over the children already handed
// out: what it finds in a faulty body depends on where the pieces end, so it is given the same ones.
class AnswerReader
{
public:
    // A child's own child element, for the small structured payloads (the update offer).
    struct Part
    {
        QString name;
        QString text;
    };

    // A whole body.
    explicit AnswerReader(const QByteArray& body);
    // A body that comes in pieces: addData() for each, then endOfData().
    AnswerReader();
    AnswerReader(const AnswerReader&) = delete;
    AnswerReader& operator=(const AnswerReader&) = delete;

    void addData(const QByteArray& piece);
    void endOfData();

    // Moves to the next complete child; false at the root's end, at the end of the body, at the first error, and
    // (until endOfData()) when the pieces so far complete no further child.
    bool next();
    // No child will follow: the walk has ended.
    bool atEnd() const { return m_finished; }

    // The current child's qualified name, as written (no namespace processing).
    const QString& name() const { return m_name; }
    // The value of the attribute of that qualified name; empty when it is missing.
    QStringRef attribute(QLatin1String qualifiedName) const;
    const QString& text() const { return m_text; }
    const QVector<Part>& parts() const { return m_parts; }

private:
    // Where an attribute's name and value sit in the start tag's text.
    struct Attribute
    {
        int name;
        int nameLength;
        int value;
        int valueLength;
    };
    // What one step of the scan found.
    enum class Step {
        Token, // a token was read; the scan goes on
        Child, // a child's end tag was read
        More, // the body so far ends inside a token
        Unsure, // something the scan leaves to QXmlStreamReader
        End, // the root's end tag: the walk is over
    };

    bool nextScanned();
    Step scanProlog();
    Step scanToken();
    // A start tag at m_pos, its name right after the "<"; with `attributes`, where its attributes sit in it.
    Step scanStartTag(int* nameLength, QVector<Attribute>* attributes, bool* empty);
    Step scanEndTag();
    void appendText(int from, int to);
    void handOver();
    bool nextParsed();
    void startChild();

    // The body so far, where each piece of it ended, and where the scan stands in it.
    QByteArray m_body;
    QVector<int> m_pieceEnds;
    int m_pos = 0;
    // Where the search for the end of the text or CDATA that starts at m_pos goes on.
    int m_searchFrom = 0;
    QVector<QByteArray> m_open;
    // The current child's start tag, and its attributes.
    QString m_startTag;
    QVector<Attribute> m_scannedAttributes;
    bool m_scanning = true;
    int m_handedOut = 0;

    // QXmlStreamReader, once the body is handed to it: a whole body through a device, pieces one at a time as the
    // parser asks for more.
    QXmlStreamReader m_xml;
    QBuffer m_device;
    int m_piecesGiven = 0;
    int m_skip = 0;
    QXmlStreamAttributes m_attributes;

    const bool m_whole;
    bool m_endOfData = true;
    bool m_inRoot = false;
    bool m_finished = false;
    // Depth inside the current child: 0 between children.
    int m_depth = 0;
    QString m_name;
    QString m_text;
    QVector<Part> m_parts;
};

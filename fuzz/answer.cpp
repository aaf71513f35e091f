// The service's sign-in and list answers: the account reader, read whole and in pieces as from the
// network, and the stream reader under it checked against a walk over the parsed document. Where the document parser
// takes the whole body, the stream reader agrees with it up to the point where it stops (it is stricter); on a body the
// document parser refuses, what each keeps of it differs and nothing is compared.
#include "AccountAnswer.h"
#include "AnswerReader.h"
#include "Base64Text.h"
#include "FuzzCheck.h"

#include <QBuffer>
#include <QDomDocument>
#include <QStringList>
#include <QXmlStreamReader>

#include <functional>

namespace {

// A child as the account reader takes it: its name, and its user and text as the Base64 they
// carry (the two parsers break lines differently, which decoding does not see).
QString describe(const QString& name, const QString& user, const QString& text)
{
    const auto decoded = [](const QString& base64) {
        return QString::fromLatin1(QByteArray::fromBase64(base64.toLatin1()).toHex());
    };
    return name + QLatin1Char('|') + decoded(user) + QLatin1Char('|') + decoded(text);
}

QString describe(const AccountData& account)
{
    QStringList lines;
    for (const ServerInfo& server : account.servers)
        lines << server << server.password;
    for (const Subscription& s : account.subscriptions)
        lines << s.login() + QLatin1Char('|') + s.password() + QLatin1Char('|') + s.expiresTime().toString(Qt::ISODate);
    for (const auto* map : {&account.certificates, &account.keys}) {
        for (auto it = map->cbegin(); it != map->cend(); ++it)
            lines << it.key() + QLatin1Char('=') + QString::fromLatin1(it.value().toHex());
    }
    lines << QString::fromLatin1(account.config.toHex());
    return lines.join(QLatin1Char('\n'));
}

bool streamParsesWhole(const QByteArray& body)
{
    QXmlStreamReader xml(body);
    xml.setNamespaceProcessing(false);
    while (!xml.atEnd())
        xml.readNext();
    return !xml.hasError();
}

bool treeWalk(const QByteArray& body, QStringList& children)
{
    QDomDocument doc(QStringLiteral("request"));
    if (!doc.setContent(body))
        return false;
    for (QDomNode node = doc.documentElement().firstChild(); !node.isNull(); node = node.nextSibling()) {
        const QDomElement e = node.toElement();
        if (!e.isNull())
            children << describe(e.tagName(), e.attribute(QStringLiteral("user")), e.text());
    }
    return true;
}

QStringList streamWalk(const QByteArray& body)
{
    AnswerReader answer(body);
    QStringList children;
    while (answer.next())
        children << describe(answer.name(), answer.attribute(QLatin1String("user")).toString(), answer.text());
    return children;
}

// Every attribute the account reader asks for.
const char* const attributeNames[]
    = {"name", "ip", "tcp", "udp", "ssl", "flag", "user", "group", "sni", "pass", "exp", "type", "p"};

// A child exactly as the walk hands it out: name, the attributes above, text and parts.
QString exactly(const QString& name,
                const std::function<QString(const char*)>& attribute,
                const QString& text,
                const QVector<AnswerReader::Part>& parts)
{
    QStringList fields {name, text};
    for (const char* attributeName : attributeNames)
        fields << attribute(attributeName);
    for (const AnswerReader::Part& part : parts)
        fields << part.name + QLatin1Char('=') + part.text;
    return fields.join(QLatin1Char('|'));
}

// The walk done by QXmlStreamReader alone: what the reader's own scan must agree with. With a step, the body is
// given in pieces of that size with the walk going on after each, as from the network.
QStringList parserWalk(const QByteArray& body, int step = 0)
{
    QByteArray copy = body;
    QBuffer device(&copy);
    QXmlStreamReader xml;
    if (step == 0) {
        device.open(QIODevice::ReadOnly);
        xml.setDevice(&device);
    }
    xml.setNamespaceProcessing(false);
    int given = 0;
    QStringList children;
    bool inRoot = false;
    int depth = 0;
    QString name;
    QXmlStreamAttributes attributes;
    QString text;
    QVector<AnswerReader::Part> parts;
    for (;;) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::Invalid) {
            if (step == 0 || xml.error() != QXmlStreamReader::PrematureEndOfDocumentError || given >= body.size())
                break;
            xml.addData(body.mid(given, step));
            given += step;
            continue;
        }
        if (token == QXmlStreamReader::EndDocument)
            break;
        if (!inRoot) {
            inRoot = token == QXmlStreamReader::StartElement;
            continue;
        }
        if (depth == 0) {
            if (token == QXmlStreamReader::EndElement)
                break;
            if (token == QXmlStreamReader::StartElement) {
                depth = 1;
                name = xml.qualifiedName().toString();
                attributes = xml.attributes();
                text.clear();
                parts.clear();
            }
            continue;
        }
        if (token == QXmlStreamReader::StartElement && ++depth == 2)
            parts.append({xml.qualifiedName().toString(), QString()});
        if (token == QXmlStreamReader::EndElement && --depth == 0) {
            children << exactly(
                name,
                [&](const char* key) {
                    for (const QXmlStreamAttribute& a : attributes) {
                        if (a.qualifiedName() == QLatin1String(key) && !a.isDefault())
                            return a.value().toString();
                    }
                    return QString();
                },
                text,
                parts);
        }
        if (token == QXmlStreamReader::Characters && !(xml.isWhitespace() && !xml.isCDATA())) {
            text += xml.text();
            if (depth >= 2)
                parts.last().text += xml.text();
        }
    }
    return children;
}

QStringList readerWalk(AnswerReader& answer)
{
    QStringList children;
    while (answer.next()) {
        children << exactly(
            answer.name(),
            [&](const char* key) { return answer.attribute(QLatin1String(key)).toString(); },
            answer.text(),
            answer.parts());
    }
    return children;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body = bytes(data, size);

    // The answer's base64 texts are decoded without Qt's decoder where they are ASCII: the same text either way, for
    // the input read as Latin-1 and as UTF-8.
    for (const QString& text : {QString::fromLatin1(body), QString::fromUtf8(body)}) {
        const QString decoded = base64Text(text);
        const QString expected = QString::fromUtf8(QByteArray::fromBase64(text.toLatin1()));
        FUZZ_CHECK(decoded == expected && decoded.isNull() == expected.isNull(), text);
    }

    // The reader scans plain bodies itself and leaves the rest to QXmlStreamReader: either way it hands out what the
    // parser alone would.
    const QStringList parsed = parserWalk(body);
    AnswerReader whole(body);
    const QStringList scanned = readerWalk(whole);
    FUZZ_CHECK(scanned == parsed,
               scanned.join(QLatin1Char('\n')) + QStringLiteral("\nagainst\n") + parsed.join(QLatin1Char('\n')));

    // In pieces of a size the input chooses, as the parser alone reads them with the walk going on after each piece.
    // A well-formed answer reads the same as whole. In a faulty one the parser finds some faults where the piece
    // holding them is decoded or scanned (bytes not valid in the encoding, a "]]>" cut in two, a NUL byte), so there
    // the two readings end near the fault but not always at the same child.
    const int step = size == 0 ? 1 : 1 + data[size - 1] % 61;
    const QStringList parsedInPieces = parserWalk(body, step);
    AnswerReader inPieces;
    QStringList children;
    for (int at = 0; at < body.size(); at += step) {
        inPieces.addData(body.mid(at, step));
        children += readerWalk(inPieces);
    }
    inPieces.endOfData();
    children += readerWalk(inPieces);
    FUZZ_CHECK(children == parsedInPieces,
               children.join(QLatin1Char('\n')) + QStringLiteral("\nagainst\n")
                   + parsedInPieces.join(QLatin1Char('\n')));

    AccountData account;
    const AccountAnswer::Outcome outcome = AccountAnswer().readSignIn(body, &account);
    if (parsedInPieces == parsed && streamParsesWhole(body)) {
        AccountData pieces;
        AccountAnswer answer(AccountAnswer::SignIn);
        for (int at = 0; at < body.size(); at += step)
            answer.addData(body.mid(at, step));
        FUZZ_CHECK(answer.finish(&pieces) == outcome, QStringLiteral("outcome %1").arg(outcome));
        FUZZ_CHECK(describe(pieces) == describe(account),
                   describe(pieces) + QStringLiteral(" against ") + describe(account));
    }
    AccountAnswer().readServerList(body, &account);

    QStringList tree;
    if (!treeWalk(body, tree))
        return 0;
    const QStringList stream = streamWalk(body);
    FUZZ_CHECK(stream.size() <= tree.size(),
               QStringLiteral("%1 children, the tree has %2").arg(stream.size()).arg(tree.size()));
    for (int i = 0; i < stream.size(); ++i)
        FUZZ_CHECK(stream.at(i) == tree.at(i), stream.at(i) + QStringLiteral(" against ") + tree.at(i));
    return 0;
}

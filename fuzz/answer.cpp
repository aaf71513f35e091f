// The service's sign-in and list answers: the account reader, read whole and in pieces as from the
// network, and the stream reader under it checked against a walk over the parsed document. Where the document parser
// takes the whole body, the stream reader agrees with it up to the point where it stops (it is stricter); on a body the
// document parser refuses, what each keeps of it differs and nothing is compared.
#include "AccountAnswer.h"
#include "AnswerReader.h"
#include "FuzzCheck.h"

#include <QDomDocument>
#include <QStringList>
#include <QXmlStreamReader>

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

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body = bytes(data, size);

    AccountData account;
    const AccountAnswer::Outcome outcome = AccountAnswer().readSignIn(body, &account);
    // Cut in pieces of a size the input chooses, a well-formed answer reads the same. In a faulty one the stream
    // parser finds some faults where the piece holding them is decoded or scanned (bytes not valid in the encoding,
    // a "]]>" cut in two), so there the two readings end near the fault but not always at the same child.
    if (streamParsesWhole(body)) {
        AccountData pieces;
        AccountAnswer answer(AccountAnswer::SignIn);
        const int step = size == 0 ? 1 : 1 + data[size - 1] % 61;
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

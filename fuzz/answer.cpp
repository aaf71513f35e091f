// The service's sign-in and list answers: the account reader, and the stream reader under it
// checked against a walk over the parsed document. Where the document parser takes the whole
// body, the stream reader agrees with it up to the point where it stops (it is stricter); on a
// body the document parser refuses, what each keeps of it differs and nothing is compared.
#include "AccountAnswer.h"
#include "AnswerReader.h"
#include "FuzzCheck.h"

#include <QDomDocument>
#include <QStringList>

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
    AccountAnswer().readSignIn(body, &account);
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

#include "FakeAnswers.h"

#include <QXmlStreamWriter>

#include <functional>

namespace {
void writeB64Element(QXmlStreamWriter& xml, const QString& name, const QString& payload)
{
    xml.writeTextElement(name, FakeAnswers::b64(payload));
}

void writeServer(QXmlStreamWriter& xml, const FakeServer& s)
{
    using FakeAnswers::b64;
    xml.writeEmptyElement(QStringLiteral("vpn"));
    xml.writeAttribute(QStringLiteral("name"), b64(s.name));
    xml.writeAttribute(QStringLiteral("ip"), b64(s.ip));
    xml.writeAttribute(QStringLiteral("tcp"), b64(s.tcp));
    xml.writeAttribute(QStringLiteral("udp"), b64(s.udp));
    xml.writeAttribute(QStringLiteral("ssl"), b64(s.ssl));
    xml.writeAttribute(QStringLiteral("flag"), b64(s.flag));
    xml.writeAttribute(QStringLiteral("user"), b64(s.user));
    xml.writeAttribute(QStringLiteral("dns"), b64(s.dns));
    xml.writeAttribute(QStringLiteral("group"), b64(s.group));
    xml.writeAttribute(QStringLiteral("sni"), b64(s.sni));
}

bool hasLogin(const FakeFixture& f, const QString& user)
{
    for (const FakeLogin& l : f.logins) {
        if (l.user == user)
            return true;
    }
    return false;
}

// A whole document: the declaration and the root element around what `body` writes.
QByteArray document(const QString& root, const std::function<void(QXmlStreamWriter&)>& body)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    xml.writeStartDocument();
    xml.writeStartElement(root);
    body(xml);
    xml.writeEndElement();
    xml.writeEndDocument();
    return out;
}

QString absolute(const QString& link, const QString& baseUrl)
{
    return link.startsWith(QLatin1Char('/')) ? baseUrl + link : link;
}
} // namespace

namespace FakeAnswers {

QString b64(const QString& text)
{
    return b64(text.toUtf8());
}

QString b64(const QByteArray& bytes)
{
    return QString::fromLatin1(bytes.toBase64());
}

QByteArray account(const FakeFixture& f, bool credentialsOk, bool withUpgrade, const QString& baseUrl)
{
    return document(QStringLiteral("response"), [&](QXmlStreamWriter& xml) {
        xml.writeStartElement(QStringLiteral("ver"));
        if (!f.accountType.isEmpty())
            xml.writeAttribute(QStringLiteral("type"), f.accountType);
        xml.writeCharacters(b64(QString::fromLatin1(f.versionAccepted ? "true" : "false")));
        xml.writeEndElement();
        writeB64Element(xml, QStringLiteral("auth"), QString::fromLatin1(credentialsOk ? "true" : "false"));
        if (credentialsOk && !f.error.isEmpty()) {
            writeB64Element(xml, QStringLiteral("error"), f.error);
        } else if (credentialsOk) {
            xml.writeTextElement(QStringLiteral("config"), b64(f.config));
            // Each login's `file` comes right before its servers: the client looks their password up in it, and it
            // keeps only the last of several `file` elements that come before the first `vpn`.
            for (const FakeLogin& l : f.logins) {
                xml.writeEmptyElement(QStringLiteral("file"));
                xml.writeAttribute(QStringLiteral("user"), b64(l.user));
                xml.writeAttribute(QStringLiteral("pass"), b64(l.pass));
                xml.writeAttribute(QStringLiteral("exp"), b64(QString::number(l.exp)));
                xml.writeStartElement(QStringLiteral("cert"));
                xml.writeAttribute(QStringLiteral("user"), b64(l.user));
                xml.writeCharacters(b64(l.cert));
                xml.writeEndElement();
                xml.writeStartElement(QStringLiteral("key"));
                xml.writeAttribute(QStringLiteral("user"), b64(l.user));
                xml.writeCharacters(b64(l.key));
                xml.writeEndElement();
                for (const FakeServer& s : f.servers) {
                    if (s.user == l.user)
                        writeServer(xml, s);
                }
            }
            for (const FakeServer& s : f.servers) {
                if (!hasLogin(f, s.user))
                    writeServer(xml, s);
            }
            if (withUpgrade && !f.upgradeVersion.isEmpty() && !f.upgradeLink.isEmpty()) {
                xml.writeStartElement(QStringLiteral("upgrade"));
                writeB64Element(xml, QStringLiteral("ver"), f.upgradeVersion);
                writeB64Element(xml, QStringLiteral("link"), absolute(f.upgradeLink, baseUrl));
                xml.writeEndElement();
            }
        }
    });
}

QByteArray vpnElement(const FakeServer& server)
{
    QByteArray out;
    QXmlStreamWriter xml(&out);
    writeServer(xml, server);
    return out;
}

QByteArray timezone(const FakeFixture& f)
{
    return document(QStringLiteral("response"), [&](QXmlStreamWriter& xml) {
        writeB64Element(xml, QStringLiteral("timezone"), f.timezone.isEmpty() ? QStringLiteral("N/A") : f.timezone);
    });
}

QByteArray buyLink(const FakeFixture& f)
{
    return document(QStringLiteral("response"), [&](QXmlStreamWriter& xml) {
        if (!f.buyLink.isEmpty())
            writeB64Element(xml, QStringLiteral("link"), f.buyLink);
    });
}

QByteArray doubleList(const FakeFixture& f)
{
    return document(QStringLiteral("double"), [&](QXmlStreamWriter& xml) {
        for (auto it = f.doublePings.begin(); it != f.doublePings.end(); ++it) {
            // Plain text here, unlike the account document.
            xml.writeStartElement(QStringLiteral("p"));
            xml.writeAttribute(QStringLiteral("p"), QString::number(it.value()));
            xml.writeCharacters(it.key());
            xml.writeEndElement();
        }
    });
}

QByteArray package(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = char((i * 131 + 7) & 0xff);
    return bytes;
}

} // namespace FakeAnswers

#pragma once

#include <QByteArray>
#include <QString>

// Small builders for hand-made service answers: Base64 payloads as the service sends them.
namespace AccountDocuments {

inline QByteArray b64(const QString& text)
{
    return text.toUtf8().toBase64();
}

inline QByteArray document(const QByteArray& children)
{
    return "<?xml version=\"1.0\"?><response>" + children + "</response>";
}

inline QByteArray element(const char* tag, const QString& text)
{
    return QByteArray("<") + tag + '>' + b64(text) + "</" + tag + '>';
}

inline QByteArray file(const QString& user, const QString& pass, const QString& exp)
{
    return "<file user=\"" + b64(user) + "\" pass=\"" + b64(pass) + "\" exp=\"" + b64(exp) + "\"/>";
}

inline QByteArray vpn(const QString& name, const QString& user, const QByteArray& extra = QByteArray())
{
    return "<vpn name=\"" + b64(name) + "\" ip=\"" + b64(QStringLiteral("192.0.2.1")) + "\" user=\"" + b64(user) + "\" "
        + extra + "/>";
}

} // namespace AccountDocuments

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Accepts an OpenVPN configuration only when every directive in it is one a client of the
// service needs, with arguments of the expected shape; OpenVPN runs as root, so nothing in the
// file may name a program, a library, another file or a management address. The text is read
// exactly as OpenVPN 2.6 reads it (line chunks, byte order mark, quotes, backslashes, comments,
// a leading "--", <tag> blocks), and anything OpenVPN could read differently is refused.
class OpenVpnConfigCheck
{
public:
    // True when the text may be handed to OpenVPN; otherwise error() says why.
    bool check(const QByteArray& config);
    QString error() const { return m_error; }

    // The words OpenVPN reads from one line (its terminating line feed included, if any).
    // On a line OpenVPN refuses, the result is empty and *error, if given, says why.
    static QStringList tokenize(const QByteArray& line, QString* error = nullptr);

    // Whether the directive of that name is allowed at all, as a line or (block) as a <name> block.
    static bool allows(const QString& name, bool block);

private:
    bool checkDirective(const QStringList& words, int lineNumber, bool block);

    QString m_error;
};

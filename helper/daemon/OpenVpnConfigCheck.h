#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Refuses an OpenVPN configuration that would make OpenVPN, running as root, start a program,
// load code, read another configuration, open a management port or write a file it names.
// Lines are read the way OpenVPN reads them (leading blanks, a leading "--", quotes and
// backslashes, comments, <tag> blocks), so a disguised directive is found as well.
class OpenVpnConfigCheck
{
public:
    // True when the text may be handed to OpenVPN; otherwise error() says why.
    bool check(const QByteArray& config);
    QString error() const { return m_error; }

    // OpenVPN's own tokenizer for one line; exposed for tests.
    static QStringList tokenize(const QByteArray& line);

private:
    bool checkDirective(const QStringList& words, int lineNumber);

    QString m_error;
};

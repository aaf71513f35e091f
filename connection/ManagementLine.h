#pragma once

#include <QByteArray>
#include <QString>

// What one line from OpenVPN's management interface means to the client. Lines are matched as
// OpenVPN writes them, case aside; a line the client has no use for is Other.
struct ManagementLine
{
    enum Kind {
        Other,
        NeedUsername, // the credential prompt
        NeedPassword, // the username was taken
        AuthFailed,
        NoTapAdapter,
        ProxyNeedsAuth,
        ByteCount, // bytesIn and bytesOut
        State, // state, and change
        Log, // text is the whole line; blockedWrite for a send the system refused
    };
    // What a state line says about the connection.
    enum Change { NoChange, Connected, ConnectFailed, Reconnecting };

    Kind kind = Other;
    QString text;
    QString state;
    Change change = NoChange;
    quint64 bytesIn = 0;
    quint64 bytesOut = 0;
    bool blockedWrite = false;

    static ManagementLine read(const QByteArray& rawLine);
};

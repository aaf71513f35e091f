#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// A dialogue for the fake OpenVPN management port: what OpenVPN sends, what it expects to read
// from the client, pauses, and the end of the connection.
//
// Text form, one step a line (the dialogues recorded from OpenVPN under management/):
//   S: <line>     OpenVPN sends the line, followed by "\r\n" as the real one does
//   C: <line>     OpenVPN reads one line from the client, which must equal <line> (line end removed)
//   pause <ms>    OpenVPN is quiet for a while
//   close         OpenVPN closes the connection
// Empty lines and lines starting with '#' are comments.
struct ManagementScript
{
    struct Step
    {
        enum Kind { Send, Expect, Pause, Close };
        Kind kind;
        QByteArray text;
        int pauseMs = 0;
    };

    QList<Step> steps;

    ManagementScript& send(const QByteArray& line) { return add(Step::Send, line); }
    ManagementScript& expect(const QByteArray& line) { return add(Step::Expect, line); }
    ManagementScript& close() { return add(Step::Close); }
    ManagementScript& add(Step::Kind kind, const QByteArray& text = {}, int pauseMs = 0)
    {
        steps.append({kind, text, pauseMs});
        return *this;
    }

    // Steps read from the text form; an unknown step makes the result empty and sets *error.
    static ManagementScript parse(const QByteArray& text, QString* error = nullptr);
    static ManagementScript fromFile(const QString& path, QString* error = nullptr);
};

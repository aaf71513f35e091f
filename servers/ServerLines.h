#pragma once

#include <QString>
#include <QStringList>

#include "ServerInfo.h"
#include "SharedValues.h"

// The one-line text form of a server record, as the offline cache keeps it: the one place where lines are read and
// written. Reading goes field by field without splitting each line into a list first, and shares the texts that repeat
// from line to line (logins, passwords, flags, port lists) among the records: ten thousand are read at every start.
class ServerLines
{
public:
    // A line of fewer than ten fields gives a default record.
    ServerInfo server(const QString& line);
    // Fields are not escaped.
    static QString lineOf(const ServerInfo& server);

private:
    SharedValues<QString> m_texts;
    SharedValues<QStringList> m_ports;
};

#pragma once

#include <QString>
#include <QStringList>

#include "ServerInfo.h"
#include "SharedValues.h"

// Reads the offline cache's server lines back into records, as the record's own constructor does, but field by
// field without splitting each line into a list first, and with the texts that repeat from line to line (logins,
// passwords, flags, port lists) shared among the records: ten thousand records are read at every start.
class ServerLines
{
public:
    ServerInfo server(const QString& line);

private:
    SharedValues<QString> m_texts;
    SharedValues<QStringList> m_ports;
};

#pragma once

#include <QString>
#include <QStringList>

#include "ServerInfo.h"
#include "SharedValues.h"

// The offline cache's servers, one line each in the record's text form. Ten thousand records built and split field
// by field through the record's own conversions cost tens of milliseconds at every save and start; these write and
// read the same lines directly, and the records read share the texts that repeat from line to line.
class ServerLines
{
public:
    static QString line(const ServerInfo& server);
    // Reads a line as the record's own constructor does.
    ServerInfo server(const QString& line);

private:
    SharedValues<QString> m_texts;
    SharedValues<QStringList> m_ports;
};

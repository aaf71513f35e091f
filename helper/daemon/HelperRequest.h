#pragma once

#include "FirewallRules.h"

#include <QByteArray>
#include <QString>

// One request packet read field by field, before anything acts on it. Only the fields of the
// packet's command are read; a text field that is malformed (see WireText) reads as a null text.
struct HelperRequest
{
    quint32 command = 0;
    FirewallRequest firewall; // commands 1 and 3
    bool restoreZone = false; // command 8
    QString zone;
    QString arguments; // command 9
    QString packagePath; // command 10

    // False when the packet does not have the size of a request.
    static bool read(const QByteArray& packet, HelperRequest* request);
};

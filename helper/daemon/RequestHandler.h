#pragma once

#include "Firewall.h"
#include "HelperPaths.h"
#include "OpenVpnLauncher.h"
#include "TimezoneChanger.h"
#include "UpdateInstaller.h"

#include <QByteArray>
#include <QObject>

// Carries out one complete request packet for a caller and says whether it succeeded. Every
// request and its result are written to the log with the caller's uid.
class RequestHandler : public QObject
{
    Q_OBJECT
public:
    explicit RequestHandler(const HelperPaths& paths, QObject* parent = nullptr);

    bool handle(const QByteArray& packet, qint64 callerUid);
    void restoreAtStart() { m_firewall.restoreAtStart(); }

private:
    bool firewall(quint32 command, const QByteArray& packet, QString& detail);

    Firewall m_firewall;
    TimezoneChanger m_timezone;
    UpdateInstaller m_update;
    OpenVpnLauncher* m_openvpn;
};

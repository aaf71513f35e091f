#pragma once

#include "HelperWire.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>

class ServiceConnectorPrivate;

// Client of the privileged helper daemon. Every call is one synchronous request that blocks the
// calling thread (at most the connect time-out plus 5 s of silence) and returns the daemon's answer.
class ServiceConnector : public QObject
{
    Q_OBJECT

public:
    explicit ServiceConnector(QObject* parent = nullptr);
    ~ServiceConnector() override;

    // Nothing to install on this platform.
    bool installHelper(const QString& path);
    bool firewallOn(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters);
    bool firewallChange(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters);
    bool firewallOff();
    bool firewallSupported();
    bool firewallEnableOnStart();
    bool timezonechangeSupported();
    bool timezoneChange(const bool& restore, const QString& zone);
    bool runOpenVpnWithConfig(const QString& arguments);
    bool updateInstall(const QString& path);

private:
    QSharedPointer<ServiceConnectorPrivate> d;
};

#include "ServiceConnector.h"

#include "ServiceConnectorPrivate.h"

ServiceConnector::ServiceConnector(QObject* parent)
    : QObject(parent)
    , d(new ServiceConnectorPrivate(this))
{ }

ServiceConnector::~ServiceConnector() = default;

bool ServiceConnector::installHelper(const QString& path)
{
    Q_UNUSED(path)
    return true;
}

bool ServiceConnector::firewallOn(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters)
{
    return d->firewallOn(ips, adapterName, parameters);
}

bool ServiceConnector::firewallChange(const QString& ips,
                                      const QString& adapterName,
                                      const FIREWALL_PARAMETERS& parameters)
{
    return d->firewallChange(ips, adapterName, parameters);
}

bool ServiceConnector::firewallOff()
{
    return d->firewallOff();
}

bool ServiceConnector::firewallSupported()
{
    return d->firewallSupported();
}

bool ServiceConnector::firewallEnableOnStart()
{
    return d->firewallEnableOnStart();
}

bool ServiceConnector::timezonechangeSupported()
{
    return d->timezonechangeSupported();
}

bool ServiceConnector::timezoneChange(const bool& restore, const QString& zone)
{
    return d->timezoneChange(restore, zone);
}

bool ServiceConnector::runOpenVpnWithConfig(const QString& arguments)
{
    return d->runOpenVpnWithConfig(arguments);
}

bool ServiceConnector::updateInstall(const QString& path)
{
    return d->updateInstall(path);
}

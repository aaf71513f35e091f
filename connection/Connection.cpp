#include "Connection.h"

#include "OpenVPNConnectorQt.h"
#include "ServiceConnector.h"

Connection::Connection(QObject* parent)
    : QObject(parent)
    , serviceConnector(new ServiceConnector())
    , connector(new OpenVPNConnectorQt(OpenVPNConnectorQt::Parameters {serviceConnector}))
{
    QObject::connect(connector, &OpenVPNConnectorQt::connected, this, &Connection::onOvpnConnected);
    QObject::connect(connector, &OpenVPNConnectorQt::reconnecting, this, &Connection::reconnecting);
    QObject::connect(connector, &OpenVPNConnectorQt::disconnected, this, &Connection::onOvpnDisconnected);
    QObject::connect(connector, &OpenVPNConnectorQt::error, this, &Connection::onOvpnError);
    QObject::connect(connector, &OpenVPNConnectorQt::statisticsUpdated, this, &Connection::onStatisticsUpdate);
    QObject::connect(connector, &OpenVPNConnectorQt::log, this, &Connection::onOvpnLogUpdate);
}

Connection::~Connection()
{
    connector->disconnect();
    delete connector;
    serviceConnector.reset();
}

void Connection::connect(ServerInfo server, QString login, QString password, QString configPath, ProxySetting proxy)
{
    Q_UNUSED(proxy)
    switch (server.protocol) {
    case PPTP:
        connectPPTP(server.ip, login, password);
        break;
    case L2TP:
        connectL2TP(server.ip, login, password, QString());
        break;
    case OpenVpnUdp:
    case OpenVpnTcp:
        connector->connect(configPath, login, password);
        break;
    default:
        break;
    }
}

void Connection::disconnect(bool)
{
    connector->disconnect();
}

bool Connection::installHelper()
{
    return serviceConnector->installHelper(QString());
}

bool Connection::firewallOn(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters)
{
    return serviceConnector->firewallOn(ips, adapterName, parameters);
}

bool Connection::firewallChange(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters)
{
    return serviceConnector->firewallChange(ips, adapterName, parameters);
}

bool Connection::firewallOff()
{
    return serviceConnector->firewallOff();
}

bool Connection::firewallSupported()
{
    return serviceConnector->firewallSupported();
}

void Connection::firewallEnableOnStart()
{
    serviceConnector->firewallEnableOnStart();
}

bool Connection::timezonechangeSupported()
{
    return serviceConnector->timezonechangeSupported();
}

bool Connection::timezoneChange(const bool& restore, const QString& zone)
{
    return serviceConnector->timezoneChange(restore, zone);
}

bool Connection::updateInstall(const QString& path)
{
    return serviceConnector->updateInstall(path);
}

QString Connection::errorText(int code)
{
    switch (code) {
    case 0:
        return QStringLiteral("Invalid username or password");
    case 1:
        return QStringLiteral("Not open openvpn socket");
    case 2:
        return QStringLiteral("Can not alocate TUN");
    case 3:
        return QStringLiteral("Can not connet to helper");
    case 4:
        return QStringLiteral("Can not write to helper");
    default:
        return QStringLiteral("Code error: %1").arg(code);
    }
}

void Connection::onOvpnConnected()
{
    emit connected();
    prevBytesIn = 0;
    prevBytesOut = 0;
    lastBytesIn = 0;
    lastBytesOut = 0;
}

void Connection::onOvpnDisconnected()
{
    emit disconnected(false);
}

void Connection::onOvpnError(int code)
{
    emit error(errorText(code));
}

void Connection::onStatisticsUpdate(quint64 bytesIn, quint64 bytesOut)
{
    prevBytesIn = lastBytesIn;
    prevBytesOut = lastBytesOut;
    lastBytesIn = bytesIn;
    lastBytesOut = bytesOut;
    // Signed differences: a total that went down (OpenVPN restarted) gives a negative figure.
    const qint64 receivedNow = qint64(bytesIn - prevBytesIn);
    const qint64 sentNow = qint64(bytesOut - prevBytesOut);
    emit statisticsChanged(double(receivedNow), double(sentNow), double(bytesIn), double(bytesOut));
}

void Connection::onOvpnLogUpdate(QString line)
{
    emit logUpdate(line);
}

void Connection::connectPPTP(const QString& host, const QString& login, const QString& password)
{
    Q_UNUSED(host)
    Q_UNUSED(login)
    Q_UNUSED(password)
}

void Connection::connectL2TP(const QString& host, const QString& login, const QString& password, const QString& secret)
{
    Q_UNUSED(host)
    Q_UNUSED(login)
    Q_UNUSED(password)
    Q_UNUSED(secret)
}

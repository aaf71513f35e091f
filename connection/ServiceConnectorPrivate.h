#pragma once

#include "HelperWire.h"

#include <QObject>
#include <QString>

class ServiceConnector;

// Builds the helper daemon's request packets and runs one request per TCP connection.
class ServiceConnectorPrivate : public QObject
{
    Q_OBJECT

public:
    explicit ServiceConnectorPrivate(ServiceConnector* owner);

    bool firewallOn(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters);
    bool firewallChange(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters);
    bool firewallOff();
    bool firewallSupported();
    bool firewallEnableOnStart();
    bool timezonechangeSupported();
    bool timezoneChange(const bool& restore, const QString& zone);
    bool runOpenVpnWithConfig(const QString& arguments);
    bool updateInstall(const QString& path);

    // Sends one request and returns the reply; any failure reads as a reply of nine zero bytes.
    ReplyPacket writeCmdToDaemon(const MessagePacket& packet);

    // The daemon's port: TAVRIN_HELPER_PORT when it holds a valid port, else 23589.
    static quint16 helperPort();

    // Send or receive exactly length bytes; -1 on failure, 0 for a length below 1.
    static qint32 socketSendAll(int socket, const char* buffer, qint32 length);
    static qint32 socketRecvAll(int socket, char* buffer, qint32 length);

private:
    bool firewallRequest(HelperWire::Command command,
                         const QString& ips,
                         const QString& adapterName,
                         const FIREWALL_PARAMETERS& parameters);
    bool simpleRequest(HelperWire::Command command);
    bool pathRequest(HelperWire::Command command, std::size_t offset, std::size_t size, const QString& text);
    bool send(const MessagePacket& packet);

    ServiceConnector* m_owner;
};

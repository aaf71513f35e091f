#pragma once

#include "HelperWire.h"
#include "ProxySetting.h"
#include "ServerInfo.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>

class OpenVPNConnectorQt;
class ServiceConnector;

// The one object through which the connect page drives the engine: connects by protocol, turns
// error numbers into messages and byte totals into rates, and forwards the daemon requests.
class Connection : public QObject
{
    Q_OBJECT

public:
    explicit Connection(QObject* parent = nullptr);
    ~Connection() override;

    void connect(ServerInfo server, QString login, QString password, QString configPath, ProxySetting proxy);
    void disconnect(bool);

    bool installHelper();
    bool firewallOn(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters);
    bool firewallChange(const QString& ips, const QString& adapterName, const FIREWALL_PARAMETERS& parameters);
    bool firewallOff();
    bool firewallSupported();
    void firewallEnableOnStart();
    bool timezonechangeSupported();
    bool timezoneChange(const bool& restore, const QString& zone);
    bool updateInstall(const QString& path);

    // The message shown for an error number of the management client.
    static QString errorText(int code);

signals:
    void connected();
    // OpenVPN lost the tunnel and is setting it up again; connected() follows once it is back.
    void reconnecting();
    void disconnected(bool);
    void error(QString);
    // Received and sent bytes in the last interval, then the totals.
    void statisticsChanged(double, double, double, double);
    void logUpdate(QString);

public slots:
    void onOvpnConnected();
    void onOvpnDisconnected();
    void onOvpnError(int code);
    void onStatisticsUpdate(quint64 bytesIn, quint64 bytesOut);
    void onOvpnLogUpdate(QString line);

private:
    // PPTP and L2TP have no implementation on this platform.
    void connectPPTP(const QString& host, const QString& login, const QString& password);
    void connectL2TP(const QString& host, const QString& login, const QString& password, const QString& secret);

    QSharedPointer<ServiceConnector> serviceConnector;
    OpenVPNConnectorQt* connector;
    quint64 prevBytesIn = 0;
    quint64 prevBytesOut = 0;
    quint64 lastBytesIn = 0;
    quint64 lastBytesOut = 0;
};

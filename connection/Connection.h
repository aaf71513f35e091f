#pragma once

#include "HelperWire.h"
#include "ProxySetting.h"
#include "ServerInfo.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QThreadPool>

#include <functional>

class OpenVPNConnectorQt;
class ServiceConnector;

// The one object through which the connection controller drives the engine: connects by protocol,
// turns error numbers into messages and byte totals into rates, and forwards the daemon requests.
//
// Daemon requests never block the caller: they run one after another, in the order they were made,
// on a thread of their own, and each answer comes back to the caller's thread through its callback
// (a daemon that does not answer reads as a refusal once the client's time-out has passed).
class Connection : public QObject
{
    Q_OBJECT

public:
    explicit Connection(QObject* parent = nullptr);
    ~Connection() override;

    void connect(ServerInfo server, QString login, QString password, QString configPath, ProxySetting proxy);
    void disconnect(bool);

    using Answer = std::function<void(bool)>;

    bool installHelper();
    void firewallOn(const QString& ips,
                    const QString& adapterName,
                    const FIREWALL_PARAMETERS& parameters,
                    Answer answer = {});
    void firewallChange(const QString& ips,
                        const QString& adapterName,
                        const FIREWALL_PARAMETERS& parameters,
                        Answer answer = {});
    // Asks whether the daemon supports the rules and, where it does, puts them in force: one request
    // in the daemon's order, so that every change of the rules asked for after it comes after it.
    void firewallOnWhereSupported(const QString& ips,
                                  const QString& adapterName,
                                  const FIREWALL_PARAMETERS& parameters,
                                  Answer answer);
    void firewallOff(Answer answer = {});
    void firewallSupported(Answer answer);
    void timezonechangeSupported(Answer answer);
    void timezoneChange(bool restore, const QString& zone, Answer answer = {});
    void updateInstall(const QString& path, Answer answer);
    // Blocks until every daemon request made so far has been answered (or has timed out); for the
    // program's end, when the last firewall request must be through before the process goes.
    void waitForDaemon();

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
    void ask(std::function<bool(ServiceConnector&)> request, Answer answer);

    QSharedPointer<ServiceConnector> serviceConnector;
    OpenVPNConnectorQt* connector;
    quint64 prevBytesIn = 0;
    quint64 prevBytesOut = 0;
    quint64 lastBytesIn = 0;
    quint64 lastBytesOut = 0;
    // The answers come back through this object's events, apart from the engine's reports.
    QObject daemonAnswers;
    // One thread, so that the daemon sees the requests in the order they were made. Declared last:
    // destroyed first, it waits for the requests still queued while the rest is alive.
    QThreadPool daemonRequests;
};

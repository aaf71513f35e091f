#include "Connection.h"

#include "OpenVPNConnectorQt.h"
#include "ServiceConnector.h"

#include <QCoreApplication>

#include <memory>

Connection::Connection(QObject* parent)
    : QObject(parent)
    , serviceConnector(new ServiceConnector())
    , connector(new OpenVPNConnectorQt(OpenVPNConnectorQt::Parameters {serviceConnector}))
{
    daemonRequests.setMaxThreadCount(1);
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
        // What the previous session reported and nobody has read yet is about an attempt that is
        // over: dropped, so that its late end is not taken for the end of this one.
        connector->endPreviousSession();
        QCoreApplication::removePostedEvents(this, QEvent::MetaCall);
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

void Connection::firewallOn(const QString& ips,
                            const QString& adapterName,
                            const FIREWALL_PARAMETERS& parameters,
                            Answer answer)
{
    ask([=](ServiceConnector& daemon) { return daemon.firewallOn(ips, adapterName, parameters); }, std::move(answer));
}

void Connection::firewallChange(const QString& ips,
                                const QString& adapterName,
                                const FIREWALL_PARAMETERS& parameters,
                                Answer answer)
{
    ask([=](ServiceConnector& daemon) { return daemon.firewallChange(ips, adapterName, parameters); },
        std::move(answer));
}

void Connection::firewallOnWhereSupported(const QString& ips,
                                          const QString& adapterName,
                                          const FIREWALL_PARAMETERS& parameters,
                                          Answer answer)
{
    ask(
        [=](ServiceConnector& daemon) {
            return daemon.firewallSupported() && daemon.firewallOn(ips, adapterName, parameters);
        },
        std::move(answer));
}

void Connection::firewallOff(Answer answer)
{
    ask([](ServiceConnector& daemon) { return daemon.firewallOff(); }, std::move(answer));
}

void Connection::firewallSupported(Answer answer)
{
    ask([](ServiceConnector& daemon) { return daemon.firewallSupported(); }, std::move(answer));
}

void Connection::timezonechangeSupported(Answer answer)
{
    ask([](ServiceConnector& daemon) { return daemon.timezonechangeSupported(); }, std::move(answer));
}

void Connection::timezoneChange(bool restore, const QString& zone, Answer answer)
{
    ask([=](ServiceConnector& daemon) { return daemon.timezoneChange(restore, zone); }, std::move(answer));
}

void Connection::updateInstall(const QString& path, Answer answer)
{
    ask([=](ServiceConnector& daemon) { return daemon.updateInstall(path); }, std::move(answer));
}

void Connection::waitForDaemon()
{
    daemonRequests.waitForDone();
}

void Connection::ask(std::function<bool(ServiceConnector&)> request, Answer answer)
{
    const QSharedPointer<ServiceConnector> daemon = serviceConnector;
    QObject* answers = &daemonAnswers;
    daemonRequests.start([answers, daemon, request = std::move(request), answer = std::move(answer)]() {
        const bool ok = request(*daemon);
        // Posted to a member: an answer still on its way when this object goes is dropped with it.
        if (answer)
            QMetaObject::invokeMethod(
                answers, [answer, ok]() { answer(ok); }, Qt::QueuedConnection);
    });
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

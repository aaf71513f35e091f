// Speaks to the helper daemon or to OpenVPN's management port as whoever runs it: the boundary
// test starts it under other local accounts. Exit code 0 yes, 1 no, 2 no reply from the daemon,
// 3 the management port refused or reset the connection; 64 bad usage.

#include "WireClient.h"

#include <QCoreApplication>
#include <QTcpServer>
#include <QThread>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

int say(const char* text, int code)
{
    std::printf("%s\n", text);
    std::fflush(stdout);
    return code;
}

int ask(quint16 port, const QByteArray& request, const QHostAddress& from = QHostAddress(), quint16 fromPort = 0)
{
    const int result = WireClient::result(port, request, from, fromPort);
    return result == 1 ? say("yes", 0) : result == 0 ? say("no", 1) : say("no reply", 2);
}

// Opens n connections and sends nothing on them; reports how many the daemon still keeps open.
int hold(quint16 port, int n, int seconds)
{
    std::vector<std::unique_ptr<QTcpSocket>> sockets;
    for (int i = 0; i < n; ++i) {
        sockets.push_back(std::make_unique<QTcpSocket>());
        sockets.back()->connectToHost(QStringLiteral("127.0.0.1"), port);
        sockets.back()->waitForConnected(1000);
    }
    QThread::msleep(500);
    int open = 0;
    for (const auto& socket : sockets) {
        socket->waitForReadyRead(10);
        open += socket->state() == QAbstractSocket::ConnectedState;
    }
    say(qPrintable(QStringLiteral("holding %1").arg(open)), 0);
    QThread::sleep(ulong(seconds));
    return 0;
}

// Greets and closes whatever connects, for the given time.
int listen(quint16 port, int seconds)
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost, port))
        return say("cannot listen", 1);
    say("listening", 0);
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < seconds * 1000) {
        server.waitForNewConnection(100);
        while (QTcpSocket* socket = server.nextPendingConnection()) {
            socket->write("not openvpn\n");
            socket->disconnectFromHost();
            socket->waitForDisconnected(100);
            delete socket;
        }
    }
    return 0;
}

// Takes the port without listening on it, for the given time.
int bind(quint16 port, int seconds)
{
    QTcpSocket socket;
    if (!socket.bind(QHostAddress::LocalHost, port))
        return say("cannot bind", 1);
    say("bound", 0);
    QThread::sleep(ulong(seconds));
    return 0;
}

// Talks to OpenVPN's management port as the client does: answers the credential query and waits
// for the tunnel; with an empty user it asks OpenVPN to end instead.
int management(quint16 port, const QByteArray& user, const QByteArray& password)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    if (!socket.waitForConnected(3000))
        return say("refused", 3);
    socket.write(user.isEmpty() ? "signal SIGTERM\n" : "state on all\n");
    QByteArray seen;
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < 30000) {
        if (!socket.waitForReadyRead(200) && socket.state() != QAbstractSocket::ConnectedState)
            return seen.isEmpty() ? say("reset", 3) : say("closed", 1);
        while (socket.canReadLine()) {
            const QByteArray line = socket.readLine();
            seen += line;
            if (line.contains(">PASSWORD:Need 'Auth' username/password"))
                socket.write("username \"Auth\" " + user + "\npassword \"Auth\" " + password + "\n");
            if (line.contains(user.isEmpty() ? "SUCCESS: signal" : "CONNECTED,SUCCESS"))
                return say("yes", 0);
        }
    }
    return say("no", 1);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList a = app.arguments().mid(1);
    const QString command = a.value(0);
    const quint16 port = a.value(1).toUShort();
    if (a.size() == 5 && (command == QLatin1String("firewall-on") || command == QLatin1String("firewall-change"))) {
        FIREWALL_PARAMETERS flags;
        bool* const bits[]
            = {&flags.killConnect, &flags.ipv6Block, &flags.allowLocalIp, &flags.changeTimezone, &flags.idle};
        for (int i = 0; i < 5; ++i)
            *bits[i] = a.at(4).mid(i, 1) == QLatin1String("1");
        const auto code = command == QLatin1String("firewall-on") ? HelperWire::FirewallOn : HelperWire::FirewallChange;
        return ask(port, WireClient::firewall(code, a.at(2), a.at(3), flags));
    }
    if (a.size() == 2 && command == QLatin1String("firewall-off"))
        return ask(port, WireClient::packet(HelperWire::FirewallOff));
    if (a.size() == 3 && command == QLatin1String("timezone"))
        return ask(port, WireClient::timezone(false, a.at(2).toUtf8()));
    if (a.size() == 2 && command == QLatin1String("timezone-restore"))
        return ask(port, WireClient::timezone(true, QByteArray()));
    if (a.size() == 4 && command == QLatin1String("openvpn"))
        return ask(port, WireClient::openVpn(WireClient::openVpnArguments(a.at(2), a.at(3).toInt())));
    if (a.size() == 3 && command == QLatin1String("update"))
        return ask(port, WireClient::update(a.at(2)));
    if (a.size() == 3 && command == QLatin1String("raw"))
        return ask(port, WireClient::packet(a.at(2).toUInt()));
    if (a.size() == 5 && command == QLatin1String("raw-from")) // from 127.0.0.2:SOURCE_PORT
        return ask(port, WireClient::packet(a.at(2).toUInt()), QHostAddress(a.at(3)), a.at(4).toUShort());
    if (a.size() == 3 && command == QLatin1String("bind"))
        return bind(port, a.at(2).toInt());
    if (a.size() == 4 && command == QLatin1String("hold"))
        return hold(port, a.at(2).toInt(), a.at(3).toInt());
    if (a.size() == 3 && command == QLatin1String("listen"))
        return listen(port, a.at(2).toInt());
    if (a.size() == 4 && command == QLatin1String("mgmt"))
        return management(port, a.at(2).toUtf8(), a.at(3).toUtf8());
    if (a.size() == 2 && command == QLatin1String("mgmt-stop"))
        return management(port, QByteArray(), QByteArray());
    std::fprintf(stderr,
                 "usage: %s firewall-on|firewall-change PORT ADDRS IFACE FLAGS5 | firewall-off PORT |\n"
                 "  timezone PORT ZONE | timezone-restore PORT | openvpn PORT CONFIG MGMT_PORT | update PORT PATH |\n"
                 "  raw PORT CMD | raw-from PORT CMD ADDRESS SOURCE_PORT | hold PORT N SECONDS |\n"
                 "  listen PORT SECONDS | bind PORT SECONDS | mgmt MGMT_PORT USER PASS |\n"
                 "  mgmt-stop MGMT_PORT\n",
                 argv[0]);
    return 64;
}

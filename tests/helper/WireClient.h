#pragma once

// Test side of the helper wire: builds request packets with the shared layout and sends them.

#include "HelperWire.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QString>
#include <QTcpServer>
#include <QTcpSocket>
#include <QVector>

#include <cstring>

namespace WireClient {

inline QByteArray packet(std::uint32_t command)
{
    QByteArray p(int(HelperWire::PacketSize), '\0');
    std::memcpy(p.data() + HelperWire::CommandOffset, &command, sizeof command);
    return p;
}

inline void putUcs4(QByteArray& p, std::size_t offset, const QString& text)
{
    const QVector<uint> codes = text.toUcs4();
    std::memcpy(p.data() + offset, codes.constData(), std::size_t(codes.size()) * 4);
}

inline QByteArray firewall(std::uint32_t command,
                           const QString& addresses,
                           const QString& interfaceName,
                           const FIREWALL_PARAMETERS& flags)
{
    QByteArray p = packet(command);
    putUcs4(p, HelperWire::FirewallAddressesOffset, addresses);
    putUcs4(p, HelperWire::FirewallInterfaceOffset, interfaceName);
    std::memcpy(p.data() + HelperWire::FirewallParametersOffset, &flags, sizeof flags);
    return p;
}

inline QByteArray timezone(bool restore, const QByteArray& zone)
{
    QByteArray p = packet(HelperWire::TimezoneChange);
    p[int(HelperWire::TimezoneRestoreOffset)] = restore ? 1 : 0;
    std::memcpy(p.data() + HelperWire::TimezoneNameOffset, zone.constData(), std::size_t(zone.size()));
    return p;
}

inline QByteArray openVpn(const QString& arguments)
{
    QByteArray p = packet(HelperWire::RunOpenVpnWithConfig);
    putUcs4(p, HelperWire::OpenVpnArgumentsOffset, arguments);
    return p;
}

inline QByteArray update(const QString& path)
{
    QByteArray p = packet(HelperWire::UpdateInstall);
    putUcs4(p, HelperWire::UpdatePathOffset, path);
    return p;
}

inline QString openVpnArguments(const QString& configPath, int managementPort)
{
    const QString script = QStringLiteral("/usr/share/tavrin/script/update-resolv-conf.sh");
    return QStringLiteral("--config \"%1\" --management 127.0.0.1 %2  --management-query-passwords  "
                          " --script-security 2  --up %3  --down %3 ")
        .arg(configPath)
        .arg(managementPort)
        .arg(script);
}

// Sends bytes and returns what came back before the daemon closed (or timeoutMs passed).
inline QByteArray exchange(quint16 port, const QByteArray& bytes, int timeoutMs = 15000)
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    if (!socket.waitForConnected(3000))
        return QByteArray("no connection");
    socket.write(bytes);
    QByteArray answer;
    QElapsedTimer clock;
    clock.start();
    while (socket.state() == QAbstractSocket::ConnectedState && clock.elapsed() < timeoutMs) {
        socket.waitForReadyRead(100);
        answer += socket.readAll();
    }
    answer += socket.readAll();
    return answer;
}

// The reply's result byte: 1 yes, 0 no, -1 when no 9-byte reply came.
inline int result(quint16 port, const QByteArray& bytes)
{
    const QByteArray reply = exchange(port, bytes);
    if (reply.size() != int(HelperWire::ReplySize))
        return -1;
    return reply.at(0) != 0 ? 1 : 0;
}

inline quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

} // namespace WireClient

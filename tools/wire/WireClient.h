#pragma once

// Test side of the helper wire: builds request packets with the shared layout and sends them.

#include "HelperWire.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTcpServer>
#include <QTcpSocket>
#include <QVector>

#include <cstring>

namespace WireClient {

const QFileDevice::Permissions Private = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
const QFileDevice::Permissions Program
    = Private | QFileDevice::ExeOwner | QFileDevice::ReadOther | QFileDevice::ExeOther;

inline bool writeFile(const QString& path, const QByteArray& data, QFileDevice::Permissions mode = Private)
{
    QFile f(path);
    return f.open(QIODevice::WriteOnly | QIODevice::Truncate) && f.write(data) == data.size() && f.setPermissions(mode);
}

inline QByteArray readFile(const QString& path)
{
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

inline void putUcs4(QByteArray& p, std::size_t offset, const QString& text)
{
    const QVector<uint> codes = text.toUcs4();
    if (!codes.isEmpty())
        std::memcpy(p.data() + offset, codes.constData(), std::size_t(codes.size()) * 4);
}

inline QByteArray packet(std::uint32_t command, std::size_t offset = 0, const QString& text = QString())
{
    QByteArray p(int(HelperWire::PacketSize), '\0');
    std::memcpy(p.data() + HelperWire::CommandOffset, &command, sizeof command);
    putUcs4(p, offset, text);
    return p;
}

inline QByteArray firewall(std::uint32_t command,
                           const QString& addresses,
                           const QString& interfaceName,
                           const FIREWALL_PARAMETERS& flags)
{
    QByteArray p = packet(command, HelperWire::FirewallAddressesOffset, addresses);
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
    return packet(HelperWire::RunOpenVpnWithConfig, HelperWire::OpenVpnArgumentsOffset, arguments);
}

inline QByteArray update(const QString& path)
{
    return packet(HelperWire::UpdateInstall, HelperWire::UpdatePathOffset, path);
}

inline QString openVpnArguments(const QString& configPath, int managementPort)
{
    return QStringLiteral("--config \"%1\" --management 127.0.0.1 %2  --management-query-passwords  "
                          " --script-security 2  --up %3  --down %3 ")
        .arg(configPath)
        .arg(managementPort)
        .arg(QStringLiteral("/usr/share/tavrin/script/update-resolv-conf.sh"));
}

// The reply's result byte: 1 yes, 0 no, -1 when no 9-byte reply came before the daemon closed.
// A source address and port of the caller's choosing may be given.
inline int
result(quint16 port, const QByteArray& bytes, const QHostAddress& from = QHostAddress(), quint16 fromPort = 0)
{
    QTcpSocket socket;
    if (!from.isNull())
        socket.bind(from, fromPort);
    socket.connectToHost(QStringLiteral("127.0.0.1"), port);
    if (!socket.waitForConnected(3000))
        return -1;
    socket.write(bytes);
    QByteArray answer;
    QElapsedTimer clock;
    clock.start();
    while (socket.state() == QAbstractSocket::ConnectedState && clock.elapsed() < 15000) {
        socket.waitForReadyRead(100);
        answer += socket.readAll();
    }
    answer += socket.readAll();
    return answer.size() != int(HelperWire::ReplySize) ? -1 : answer.at(0) != 0 ? 1 : 0;
}

inline quint16 freePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

} // namespace WireClient

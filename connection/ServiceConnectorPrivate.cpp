#include "ServiceConnectorPrivate.h"

#include "InterruptSafe.h"
#include "ServiceConnector.h"

#include <QDebug>
#include <QVector>

#include <arpa/inet.h>
#include <cstring>
#include <memory>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr int ReceiveTimeoutSeconds = 5;

// Closes the socket on every way out of a request.
class SocketGuard
{
public:
    explicit SocketGuard(int socket)
        : m_socket(socket)
    { }
    ~SocketGuard() { ::close(m_socket); }
    SocketGuard(const SocketGuard&) = delete;
    SocketGuard& operator=(const SocketGuard&) = delete;

private:
    int m_socket;
};

std::unique_ptr<MessagePacket> newPacket(HelperWire::Command command)
{
    std::unique_ptr<MessagePacket> packet(new MessagePacket());
    std::memset(packet.get(), 0, sizeof(MessagePacket));
    packet->command = command;
    return packet;
}

std::uint8_t* at(MessagePacket& packet, std::size_t offset)
{
    return reinterpret_cast<std::uint8_t*>(&packet) + offset;
}

// Copies text as UCS-4 into a zero-filled field. The text must leave at least one zero code point
// behind it; a longer one is refused rather than cut.
bool copyUcs4(MessagePacket& packet, std::size_t offset, std::size_t size, const QString& text, const char* what)
{
    const QVector<uint> codePoints = text.toUcs4();
    const std::size_t bytes = std::size_t(codePoints.size()) * sizeof(uint);
    if (bytes >= size) {
        qWarning() << "Helper request refused:" << what << "of" << codePoints.size()
                   << "characters does not fit its field of" << size / sizeof(uint) - 1;
        return false;
    }
    if (bytes > 0)
        std::memcpy(at(packet, offset), codePoints.constData(), bytes);
    return true;
}

} // namespace

ServiceConnectorPrivate::ServiceConnectorPrivate(ServiceConnector* owner)
    : m_owner(owner)
{ }

bool ServiceConnectorPrivate::firewallOn(const QString& ips,
                                         const QString& adapterName,
                                         const FIREWALL_PARAMETERS& parameters)
{
    return firewallRequest(HelperWire::FirewallOn, ips, adapterName, parameters);
}

bool ServiceConnectorPrivate::firewallChange(const QString& ips,
                                             const QString& adapterName,
                                             const FIREWALL_PARAMETERS& parameters)
{
    return firewallRequest(HelperWire::FirewallChange, ips, adapterName, parameters);
}

bool ServiceConnectorPrivate::firewallOff()
{
    return simpleRequest(HelperWire::FirewallOff);
}

bool ServiceConnectorPrivate::firewallSupported()
{
    return simpleRequest(HelperWire::FirewallSupported);
}

bool ServiceConnectorPrivate::firewallEnableOnStart()
{
    return simpleRequest(HelperWire::FirewallEnableOnStart);
}

bool ServiceConnectorPrivate::timezonechangeSupported()
{
    return simpleRequest(HelperWire::TimezoneChangeSupported);
}

bool ServiceConnectorPrivate::timezoneChange(const bool& restore, const QString& zone)
{
    const QByteArray name = zone.toUtf8();
    // The daemon reads a zero-terminated name: 511 bytes of text at most.
    if (std::size_t(name.size()) >= HelperWire::TimezoneNameSize) {
        qWarning() << "Helper request refused: time zone name of" << name.size() << "bytes is too long";
        return false;
    }
    auto packet = newPacket(HelperWire::TimezoneChange);
    *at(*packet, HelperWire::TimezoneRestoreOffset) = restore ? 1 : 0;
    if (!name.isEmpty())
        std::memcpy(at(*packet, HelperWire::TimezoneNameOffset), name.constData(), std::size_t(name.size()));
    return send(*packet);
}

bool ServiceConnectorPrivate::runOpenVpnWithConfig(const QString& arguments)
{
    return pathRequest(HelperWire::RunOpenVpnWithConfig,
                       HelperWire::OpenVpnArgumentsOffset,
                       HelperWire::OpenVpnArgumentsSize,
                       arguments);
}

bool ServiceConnectorPrivate::updateInstall(const QString& path)
{
    // The reserved byte at offset 4 stays zero; the path starts at the odd offset 5.
    return pathRequest(HelperWire::UpdateInstall, HelperWire::UpdatePathOffset, HelperWire::UpdatePathSize, path);
}

bool ServiceConnectorPrivate::firewallRequest(HelperWire::Command command,
                                              const QString& ips,
                                              const QString& adapterName,
                                              const FIREWALL_PARAMETERS& parameters)
{
    auto packet = newPacket(command);
    if (!copyUcs4(*packet, HelperWire::FirewallAddressesOffset, HelperWire::FirewallAddressesSize, ips, "address list")
        || !copyUcs4(*packet,
                     HelperWire::FirewallInterfaceOffset,
                     HelperWire::FirewallInterfaceSize,
                     adapterName,
                     "interface name"))
        return false;
    std::uint8_t* flags = at(*packet, HelperWire::FirewallParametersOffset);
    flags[0] = parameters.killConnect ? 1 : 0;
    flags[1] = parameters.ipv6Block ? 1 : 0;
    flags[2] = parameters.allowLocalIp ? 1 : 0;
    flags[3] = parameters.changeTimezone ? 1 : 0;
    flags[4] = parameters.idle ? 1 : 0;
    return send(*packet);
}

bool ServiceConnectorPrivate::simpleRequest(HelperWire::Command command)
{
    return send(*newPacket(command));
}

bool ServiceConnectorPrivate::pathRequest(HelperWire::Command command,
                                          std::size_t offset,
                                          std::size_t size,
                                          const QString& text)
{
    auto packet = newPacket(command);
    if (!copyUcs4(
            *packet, offset, size, text, command == HelperWire::UpdateInstall ? "package path" : "argument string"))
        return false;
    return send(*packet);
}

bool ServiceConnectorPrivate::send(const MessagePacket& packet)
{
    return writeCmdToDaemon(packet).result != 0;
}

quint16 ServiceConnectorPrivate::helperPort()
{
    bool ok = false;
    const int port = qEnvironmentVariableIntValue(HelperWire::PortEnvironmentVariable, &ok);
    if (ok && port > 0 && port <= 65535)
        return quint16(port);
    return HelperWire::DefaultPort;
}

ReplyPacket ServiceConnectorPrivate::writeCmdToDaemon(const MessagePacket& packet)
{
    ReplyPacket failed;
    std::memset(&failed, 0, sizeof(failed));

    const int fd = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    if (fd < 0)
        return failed;
    const SocketGuard guard(fd);

    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(helperPort());
    if (::inet_pton(AF_INET, HelperWire::Address, &address.sin_addr) != 1)
        return failed;
    if (InterruptSafe::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        return failed;

    if (socketSendAll(fd, reinterpret_cast<const char*>(&packet), qint32(sizeof(packet))) < 0)
        return failed;

    ReplyPacket reply;
    std::memset(&reply, 0, sizeof(reply));
    if (socketRecvAll(fd, reinterpret_cast<char*>(&reply), qint32(sizeof(reply))) < 0)
        return failed;
    return reply;
}

qint32 ServiceConnectorPrivate::socketSendAll(int socket, const char* buffer, qint32 length)
{
    if (length < 1)
        return 0;
    qint32 total = 0;
    while (total < length) {
        // MSG_NOSIGNAL: a daemon that hangs up early must fail the request, not kill the program.
        const ssize_t sent = InterruptSafe::send(socket, buffer + total, std::size_t(length - total), MSG_NOSIGNAL);
        if (sent == -1)
            return -1;
        total += qint32(sent);
    }
    return total;
}

qint32 ServiceConnectorPrivate::socketRecvAll(int socket, char* buffer, qint32 length)
{
    if (length == 0)
        return 0;
    qint32 total = 0;
    while (total < length) {
        timeval timeout {};
        timeout.tv_sec = ReceiveTimeoutSeconds;
        timeout.tv_usec = 0;
        ::setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
        const ssize_t received = InterruptSafe::recv(socket, buffer + total, std::size_t(length - total), 0);
        if (received < 1)
            return -1;
        total += qint32(received);
    }
    return total;
}

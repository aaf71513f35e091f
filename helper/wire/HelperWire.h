#pragma once

// Wire format between the client and the privileged helper daemon: one TCP
// connection per request on 127.0.0.1, a fixed 64005-byte request and a
// 9-byte reply. Integers are in host byte order. Both sides include this
// header; it holds layout only, no behaviour.

#include <cstddef>
#include <cstdint>

namespace HelperWire {

constexpr const char* Address = "127.0.0.1";
constexpr std::uint16_t DefaultPort = 23589;
// Moves the port for tests; unset, DefaultPort holds. Read by the client and the daemon.
constexpr const char* PortEnvironmentVariable = "TAVRIN_HELPER_PORT";

constexpr std::size_t PacketSize = 64005;
constexpr std::size_t ReplySize = 9;

enum Command : std::uint32_t {
    FirewallOn = 1,
    FirewallOff = 2,
    FirewallChange = 3,
    // 4 is kept free: never sent, refused by the daemon.
    FirewallSupported = 5,
    FirewallEnableOnStart = 6,
    TimezoneChangeSupported = 7,
    TimezoneChange = 8,
    RunOpenVpnWithConfig = 9,
    UpdateInstall = 10,
};

constexpr std::size_t CommandOffset = 0;
constexpr std::size_t PayloadOffset = 4;

// Commands 1 and 3. Texts are UCS-4 (one 32-bit code point per character), zero-filled.
constexpr std::size_t FirewallAddressesOffset = 4;
constexpr std::size_t FirewallAddressesSize = 40960; // 10240 code points, the last one must stay zero
constexpr std::size_t FirewallInterfaceOffset = 40964;
constexpr std::size_t FirewallInterfaceSize = 2048; // 512 code points
constexpr std::size_t FirewallParametersOffset = 43012;
constexpr std::size_t FirewallParametersSize = 5;

// Command 8. The name is UTF-8, zero-terminated: at most 511 bytes of text.
constexpr std::size_t TimezoneRestoreOffset = 4;
constexpr std::size_t TimezoneNameOffset = 5;
constexpr std::size_t TimezoneNameSize = 512;

// Command 9: the OpenVPN argument string, UCS-4.
constexpr std::size_t OpenVpnArgumentsOffset = 4;
constexpr std::size_t OpenVpnArgumentsSize = 64000;

// Command 10: a reserved zero byte, then the package path, UCS-4, at the odd offset 5.
constexpr std::size_t UpdateReservedOffset = 4;
constexpr std::size_t UpdatePathOffset = 5;
constexpr std::size_t UpdatePathSize = 64000;

// Reply: byte 0 is the result (non-zero = success or "yes"), then a 64-bit value nobody reads.
constexpr std::size_t ReplyResultOffset = 0;
constexpr std::size_t ReplyValueOffset = 1;

} // namespace HelperWire

#pragma pack(push, 1)

// The five flag bytes of the firewall payload, in wire order.
struct FIREWALL_PARAMETERS
{
    bool killConnect = false;
    bool ipv6Block = false;
    bool allowLocalIp = false;
    bool changeTimezone = false;
    bool idle = false;
};

struct MessagePacket
{
    std::uint32_t command;
    std::uint8_t payload[HelperWire::PacketSize - HelperWire::PayloadOffset];
};

struct ReplyPacket
{
    std::uint8_t result;
    std::uint64_t value;
};

#pragma pack(pop)

static_assert(sizeof(FIREWALL_PARAMETERS) == HelperWire::FirewallParametersSize, "five one-byte flags");
static_assert(sizeof(MessagePacket) == HelperWire::PacketSize, "requests are 64005 bytes");
static_assert(sizeof(ReplyPacket) == HelperWire::ReplySize, "replies are 9 bytes");
static_assert(HelperWire::FirewallInterfaceOffset
                  == HelperWire::FirewallAddressesOffset + HelperWire::FirewallAddressesSize,
              "firewall fields are packed");
static_assert(HelperWire::FirewallParametersOffset
                  == HelperWire::FirewallInterfaceOffset + HelperWire::FirewallInterfaceSize,
              "firewall fields are packed");
static_assert(HelperWire::UpdatePathOffset + HelperWire::UpdatePathSize == HelperWire::PacketSize,
              "path fills the packet");

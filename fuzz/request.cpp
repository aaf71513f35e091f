// The daemon's 64005-byte request: read as the daemon reads it, then every field through the
// check that guards it. Shorter inputs are the start of a packet, the rest zero.
#include "DaemonProperties.h"
#include "HelperRequest.h"
#include "HelperWire.h"

#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    QByteArray packet(int(HelperWire::PacketSize), '\0');
    std::memcpy(packet.data(), data, std::min(size, HelperWire::PacketSize));
    HelperRequest request;
    FUZZ_CHECK(HelperRequest::read(packet, &request), QStringLiteral("a whole packet was refused"));
    switch (request.command) {
    case HelperWire::FirewallOn:
    case HelperWire::FirewallChange:
        if (!request.firewall.addresses.isNull() && !request.firewall.interfaceName.isNull())
            checkFirewall(request.firewall);
        break;
    case HelperWire::TimezoneChange:
        if (!request.zone.isNull())
            checkZone(request.zone);
        break;
    case HelperWire::RunOpenVpnWithConfig:
        if (!request.arguments.isNull())
            checkArguments(request.arguments);
        break;
    default:
        break;
    }
    return 0;
}

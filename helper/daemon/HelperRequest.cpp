#include "HelperRequest.h"

#include "WireText.h"

#include "HelperWire.h"

#include <cstring>

bool HelperRequest::read(const QByteArray& packet, HelperRequest* request)
{
    *request = HelperRequest();
    if (packet.size() != int(HelperWire::PacketSize))
        return false;
    std::memcpy(&request->command, packet.constData() + HelperWire::CommandOffset, sizeof request->command);
    switch (request->command) {
    case HelperWire::FirewallOn:
    case HelperWire::FirewallChange: {
        FirewallRequest& r = request->firewall;
        r.addresses
            = WireText::readUcs4(packet, HelperWire::FirewallAddressesOffset, HelperWire::FirewallAddressesSize);
        r.interfaceName
            = WireText::readUcs4(packet, HelperWire::FirewallInterfaceOffset, HelperWire::FirewallInterfaceSize);
        const auto flag = [&](std::size_t i) {
            return packet.at(int(HelperWire::FirewallParametersOffset + i)) != 0;
        };
        r.killConnect = flag(0);
        r.ipv6Block = flag(1);
        r.allowLocalIp = flag(2);
        r.changeTimezone = flag(3);
        r.idle = flag(4);
        break;
    }
    case HelperWire::TimezoneChange:
        request->restoreZone = packet.at(int(HelperWire::TimezoneRestoreOffset)) != 0;
        request->zone = WireText::readUtf8(packet, HelperWire::TimezoneNameOffset, HelperWire::TimezoneNameSize);
        break;
    case HelperWire::RunOpenVpnWithConfig:
        request->arguments
            = WireText::readUcs4(packet, HelperWire::OpenVpnArgumentsOffset, HelperWire::OpenVpnArgumentsSize);
        break;
    case HelperWire::UpdateInstall:
        request->packagePath = WireText::readUcs4(packet, HelperWire::UpdatePathOffset, HelperWire::UpdatePathSize);
        break;
    default:
        break;
    }
    return true;
}

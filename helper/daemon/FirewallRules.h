#pragma once

#include <QString>
#include <QStringList>

// One firewall request: the allowed addresses, the tunnel interface and the flags of the wire.
struct FirewallRequest
{
    QString addresses; // separated by semicolons
    QString interfaceName;
    bool killConnect = false;
    bool ipv6Block = false;
    bool allowLocalIp = false;
    bool changeTimezone = false;
    bool idle = false;
};

// Turns a request into an nft script for the daemon's own table "inet tavrin"; no other table
// is ever named. The script replaces the table as a whole in one transaction.
//
// - killConnect: input and output drop everything but loopback, the tunnel interface, the
//   allowed addresses, DHCP and (on input) replies to what was let out.
// - ipv6Block: all IPv6 but loopback is dropped, through the tunnel too.
// - allowLocalIp: with the kill switch, private, link-local and multicast ranges pass, but for
//   DNS (ports 53 and 853), which goes through the tunnel or to an allowed address only.
// - idle: no connection of ours is up or being made, so the tunnel interface is not trusted;
//   everything else stays as it is, and the kill switch keeps the machine locked between
//   connections.
// - changeTimezone: does not concern the firewall.
class FirewallRules
{
public:
    static constexpr const char* TableFamily = "inet";
    static constexpr const char* TableName = "tavrin";

    // False with error() when an address or the interface name is malformed.
    bool build(const FirewallRequest& request);
    QString script() const { return m_script; }
    QString error() const { return m_error; }

    // Removes the table; harmless when it does not exist.
    static QString removeScript();

    static bool isValidInterfaceName(const QString& name);

private:
    QString m_script;
    QString m_error;
};

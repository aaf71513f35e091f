#include "FirewallRules.h"

#include <QHostAddress>
#include <QPair>
#include <QRegularExpression>

namespace {

const QStringList localRanges4 {QStringLiteral("10.0.0.0/8"),
                                QStringLiteral("172.16.0.0/12"),
                                QStringLiteral("192.168.0.0/16"),
                                QStringLiteral("169.254.0.0/16"),
                                QStringLiteral("224.0.0.0/4"),
                                QStringLiteral("255.255.255.255/32")};
const QStringList localRanges6 {QStringLiteral("fc00::/7"), QStringLiteral("fe80::/10"), QStringLiteral("ff00::/8")};

QString setElements(const QStringList& items)
{
    return QStringLiteral("elements = { %1 }").arg(items.join(QStringLiteral(", ")));
}

} // namespace

bool FirewallRules::isValidInterfaceName(const QString& name)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9_.-]{1,15}")));
    return pattern.match(name).hasMatch() && name != QLatin1String(".") && name != QLatin1String("..");
}

QString FirewallRules::removeScript()
{
    // Declaring the table first makes the delete succeed when it is absent.
    return QStringLiteral("table inet tavrin\ndelete table inet tavrin\n");
}

bool FirewallRules::build(const FirewallRequest& request)
{
    m_script.clear();
    m_error.clear();

    QStringList allowed4;
    QStringList allowed6;
    const QStringList entries = request.addresses.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString& raw : entries) {
        const QString entry = raw.trimmed();
        if (entry.isEmpty())
            continue;
        if (entry.contains(QLatin1Char('%'))) {
            m_error = QStringLiteral("scoped addresses are not supported: \"%1\"").arg(entry);
            return false;
        }
        QPair<QHostAddress, int> subnet = QHostAddress::parseSubnet(entry);
        if (subnet.first.isNull()) {
            const QHostAddress single(entry);
            if (single.isNull()) {
                m_error = QStringLiteral("not an address: \"%1\"").arg(entry);
                return false;
            }
            subnet = qMakePair(single, single.protocol() == QAbstractSocket::IPv4Protocol ? 32 : 128);
        }
        const QString text = subnet.first.toString() + QLatin1Char('/') + QString::number(subnet.second);
        if (subnet.first.protocol() == QAbstractSocket::IPv4Protocol)
            allowed4.append(text);
        else
            allowed6.append(text);
    }
    allowed4.removeDuplicates();
    allowed6.removeDuplicates();

    const bool trustTunnel = !request.idle;
    if (trustTunnel && !isValidInterfaceName(request.interfaceName)) {
        m_error = QStringLiteral("bad interface name \"%1\"").arg(request.interfaceName);
        return false;
    }

    QStringList out; // output chain rules, in order
    QStringList in; // input chain rules, in order
    out << QStringLiteral("oifname \"lo\" accept");
    in << QStringLiteral("iifname \"lo\" accept");
    if (request.ipv6Block) {
        out << QStringLiteral("meta nfproto ipv6 drop");
        in << QStringLiteral("meta nfproto ipv6 drop");
    }
    if (request.killConnect) {
        if (trustTunnel) {
            out << QStringLiteral("oifname \"%1\" accept").arg(request.interfaceName);
            in << QStringLiteral("iifname \"%1\" accept").arg(request.interfaceName);
        }
        if (!allowed4.isEmpty()) {
            out << QStringLiteral("ip daddr @allowed4 accept");
            in << QStringLiteral("ip saddr @allowed4 accept");
        }
        if (!allowed6.isEmpty()) {
            out << QStringLiteral("ip6 daddr @allowed6 accept");
            in << QStringLiteral("ip6 saddr @allowed6 accept");
        }
        // Name lookups leave through the tunnel only: not to the router either when local
        // devices are let through (plain DNS and DNS over TLS).
        out << QStringLiteral("meta l4proto { tcp, udp } th dport { 53, 853 } drop");
        if (request.allowLocalIp) {
            out << QStringLiteral("ip daddr @local4 accept") << QStringLiteral("ip6 daddr @local6 accept");
            in << QStringLiteral("ip saddr @local4 accept") << QStringLiteral("ip6 saddr @local6 accept");
        }
        // Keep the lease of the real interface and the neighbour discovery IPv6 needs.
        out << QStringLiteral("udp sport 68 udp dport 67 accept")
            << QStringLiteral("icmpv6 type { nd-router-solicit, nd-neighbor-solicit, nd-neighbor-advert } accept");
        in << QStringLiteral("udp sport 67 udp dport 68 accept")
           << QStringLiteral("icmpv6 type { nd-router-advert, nd-neighbor-solicit, nd-neighbor-advert } accept")
           << QStringLiteral("ct state established,related accept");
    }
    const QString policy = request.killConnect ? QStringLiteral("drop") : QStringLiteral("accept");

    QString s;
    s += removeScript();
    s += QStringLiteral("table inet tavrin {\n");
    if (!allowed4.isEmpty())
        s += QStringLiteral("    set allowed4 { type ipv4_addr; flags interval; auto-merge; %1; }\n")
                 .arg(setElements(allowed4));
    if (!allowed6.isEmpty())
        s += QStringLiteral("    set allowed6 { type ipv6_addr; flags interval; auto-merge; %1; }\n")
                 .arg(setElements(allowed6));
    if (request.killConnect && request.allowLocalIp) {
        s += QStringLiteral("    set local4 { type ipv4_addr; flags interval; %1; }\n").arg(setElements(localRanges4));
        s += QStringLiteral("    set local6 { type ipv6_addr; flags interval; %1; }\n").arg(setElements(localRanges6));
    }
    s += QStringLiteral("    chain output {\n        type filter hook output priority 0; policy %1;\n").arg(policy);
    for (const QString& rule : qAsConst(out))
        s += QStringLiteral("        %1\n").arg(rule);
    s += QStringLiteral("    }\n    chain input {\n        type filter hook input priority 0; policy %1;\n")
             .arg(policy);
    for (const QString& rule : qAsConst(in))
        s += QStringLiteral("        %1\n").arg(rule);
    s += QStringLiteral("    }\n}\n");
    m_script = s;
    return true;
}

#include "ManagementGuard.h"

namespace ManagementGuard {

QString removeScript()
{
    // Declaring the table first makes the delete succeed when it is absent.
    return QStringLiteral("table inet tavrin_mgmt\ndelete table inet tavrin_mgmt\n");
}

QString installScript(quint16 port, qint64 ownerUid)
{
    const QString match = QStringLiteral("oifname \"lo\" tcp dport %1").arg(port);
    QString s = removeScript();
    s += QStringLiteral("table inet tavrin_mgmt {\n    chain output {\n"
                        "        type filter hook output priority -1; policy accept;\n");
    s += QStringLiteral("        %1 meta skuid 0 accept\n").arg(match);
    if (ownerUid > 0)
        s += QStringLiteral("        %1 meta skuid %2 accept\n").arg(match).arg(ownerUid);
    s += QStringLiteral("        %1 reject with tcp reset\n    }\n}\n").arg(match);
    return s;
}

} // namespace ManagementGuard

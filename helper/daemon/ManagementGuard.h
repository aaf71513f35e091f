#pragma once

#include <QString>

// OpenVPN's management port has no password: whoever connects first may read the state, hand it
// credentials or stop it. While an OpenVPN of ours runs, an nft table of the daemon's own
// ("inet tavrin_mgmt") resets every connection to that port made by a uid other than the tunnel's
// owner and root. The kill switch's table is never touched by it.
namespace ManagementGuard {

QString installScript(quint16 port, qint64 ownerUid);
QString removeScript();

} // namespace ManagementGuard

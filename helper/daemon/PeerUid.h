#pragma once

#include <QByteArray>
#include <QtGlobal>

// The wire protocol carries no identity, so the caller's uid comes from the kernel's socket
// table: the line whose local end is the caller's port and whose remote end is ours.
namespace PeerUid {

// Looks the socket 127.0.0.1:peerPort -> 127.0.0.1:ourPort up in a /proc/net/tcp text; -1 if absent.
qint64 find(const QByteArray& table, quint16 peerPort, quint16 ourPort);
// The same on this process's live table.
qint64 lookup(quint16 peerPort, quint16 ourPort);

} // namespace PeerUid

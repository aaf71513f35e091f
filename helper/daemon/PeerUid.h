#pragma once

#include <QByteArray>
#include <QList>
#include <QtGlobal>

#include <sys/types.h>

// The wire protocol carries no identity, so the caller's uid comes from the kernel: the owner of
// the socket whose local end is the caller's port on 127.0.0.1 and whose remote end is ours.
namespace PeerUid {

struct Peer
{
    qint64 uid = -1;
    quint64 inode = 0; // 0 once the caller's end is no longer held by any process
};

// Asks the kernel (sock_diag) for the socket 127.0.0.1:peerPort -> 127.0.0.1:ourPort; uid -1 if
// there is none.
Peer lookup(quint16 peerPort, quint16 ourPort);

// The sockets listening on port (any local address, IPv4 or IPv6).
QList<Peer> listeners(quint16 port);
// The fields of /proc/PID/stat from the third (the state) on, the command name before them left
// out since it may hold blanks and parentheses; empty when the process is gone.
QList<QByteArray> processStat(qint64 pid);
// Whether process pid holds the socket with this inode.
bool holds(pid_t pid, quint64 inode);

// Whether a process descended from ancestor holds the socket with this inode. Such a process
// (OpenVPN, or a script it runs) acts for whoever configured it, not with its own root rights.
bool heldByDescendant(quint64 inode, pid_t ancestor);

} // namespace PeerUid

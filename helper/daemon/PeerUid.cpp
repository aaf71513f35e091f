#include "PeerUid.h"

#include <QDir>
#include <QFile>
#include <QHash>
#include <QSet>

#include <arpa/inet.h>
#include <cerrno>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace PeerUid {

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// sl local rem st tx:rx tr:when retr uid timeout inode ...
QList<QList<QByteArray>> rows(const QByteArray& table)
{
    QList<QList<QByteArray>> out;
    const QList<QByteArray> lines = table.split('\n');
    for (int i = 1; i < lines.size(); ++i) { // the first line is the header
        const QList<QByteArray> fields = lines.at(i).simplified().split(' ');
        if (fields.size() >= 10)
            out.append(fields);
    }
    return out;
}

} // namespace

Peer lookup(quint16 peerPort, quint16 ourPort)
{
    const int fd = ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG);
    if (fd < 0)
        return Peer();
    struct
    {
        nlmsghdr header;
        inet_diag_req_v2 request;
    } message {};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    message.header.nlmsg_flags = NLM_F_REQUEST; // one socket by its addresses, not a dump
    message.request.sdiag_family = AF_INET;
    message.request.sdiag_protocol = IPPROTO_TCP;
    message.request.idiag_states = ~0U;
    message.request.id.idiag_sport = htons(peerPort);
    message.request.id.idiag_dport = htons(ourPort);
    message.request.id.idiag_src[0] = htonl(INADDR_LOOPBACK);
    message.request.id.idiag_dst[0] = htonl(INADDR_LOOPBACK);
    message.request.id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    message.request.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    sockaddr_nl kernel {};
    kernel.nl_family = AF_NETLINK;
    Peer peer;
    alignas(nlmsghdr) char answer[8192];
    if (::sendto(fd, &message, sizeof message, 0, reinterpret_cast<sockaddr*>(&kernel), sizeof kernel)
        == ssize_t(sizeof message)) {
        ssize_t n;
        while ((n = ::recv(fd, answer, sizeof answer, 0)) < 0 && errno == EINTR) { }
        const auto* header = reinterpret_cast<const nlmsghdr*>(answer);
        if (n >= ssize_t(sizeof(nlmsghdr)) && NLMSG_OK(header, size_t(n)) && header->nlmsg_type == SOCK_DIAG_BY_FAMILY
            && header->nlmsg_len >= NLMSG_LENGTH(sizeof(inet_diag_msg))) {
            const auto* diag = static_cast<const inet_diag_msg*>(NLMSG_DATA(header));
            // With no connection of that key the kernel answers with a socket listening on the
            // caller's port instead: someone else's, never the caller.
            if (diag->idiag_state == TCP_ESTABLISHED && diag->id.idiag_sport == htons(peerPort)
                && diag->id.idiag_dport == htons(ourPort)) {
                peer.uid = diag->idiag_uid;
                peer.inode = diag->idiag_inode;
            }
        }
    }
    ::close(fd);
    return peer;
}

QList<Peer> listeners(quint16 port)
{
    const QByteArray suffix = ':' + QByteArray::number(port, 16).toUpper().rightJustified(4, '0');
    QList<Peer> found;
    for (const char* file : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        for (const QList<QByteArray>& fields : rows(readAll(QLatin1String(file)))) {
            if (fields.at(1).endsWith(suffix) && fields.at(3) == "0A") { // LISTEN
                Peer peer;
                peer.uid = fields.at(7).toLongLong();
                peer.inode = fields.at(9).toULongLong();
                found.append(peer);
            }
        }
    }
    return found;
}

QList<QByteArray> processStat(qint64 pid)
{
    const QByteArray stat = readAll(QStringLiteral("/proc/%1/stat").arg(pid));
    const int close = stat.lastIndexOf(')');
    return close < 0 ? QList<QByteArray>() : stat.mid(close + 2).split(' ');
}

bool holds(pid_t pid, quint64 inode)
{
    const QByteArray target = "socket:[" + QByteArray::number(inode) + ']';
    const QString fdDir = QStringLiteral("/proc/%1/fd").arg(pid);
    for (const QString& fd : QDir(fdDir).entryList(QDir::System | QDir::NoDotAndDotDot)) {
        char link[64];
        const QByteArray path = QFile::encodeName(fdDir + QLatin1Char('/') + fd);
        const ssize_t n = ::readlink(path.constData(), link, sizeof link);
        if (n > 0 && QByteArray(link, int(n)) == target)
            return true;
    }
    return false;
}

bool heldByDescendant(quint64 inode, pid_t ancestor)
{
    // Without a child of our own there is nothing to look for (the usual case, and cheap).
    siginfo_t info {};
    if (ancestor == ::getpid() && ::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0 && errno == ECHILD)
        return false;
    // The parent of every process.
    QHash<qint64, QList<qint64>> children;
    for (const QString& name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool ok = false;
        const qint64 pid = name.toLongLong(&ok);
        if (!ok)
            continue;
        const QList<QByteArray> stat = processStat(pid);
        if (stat.size() > 1)
            children[stat.at(1).toLongLong()].append(pid);
    }
    QList<qint64> queue = children.value(ancestor);
    QSet<qint64> seen;
    while (!queue.isEmpty()) {
        const qint64 pid = queue.takeFirst();
        if (seen.contains(pid))
            continue;
        seen.insert(pid);
        queue += children.value(pid);
        if (holds(pid_t(pid), inode))
            return true;
    }
    return false;
}

} // namespace PeerUid

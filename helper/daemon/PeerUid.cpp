#include "PeerUid.h"

#include <QFile>
#include <QList>

namespace PeerUid {

namespace {

QByteArray endpoint(quint16 port)
{
    // 127.0.0.1 as the kernel prints it: the address in memory order, the port in hex
    return QByteArrayLiteral("0100007F:") + QByteArray::number(port, 16).toUpper().rightJustified(4, '0');
}

} // namespace

qint64 find(const QByteArray& table, quint16 peerPort, quint16 ourPort)
{
    const QByteArray local = endpoint(peerPort);
    const QByteArray remote = endpoint(ourPort);
    const QList<QByteArray> lines = table.split('\n');
    for (int i = 1; i < lines.size(); ++i) { // the first line is the header
        const QList<QByteArray> fields = lines.at(i).simplified().split(' ');
        // sl local rem st tx:rx tr:when retr uid ...
        if (fields.size() < 8 || fields.at(1) != local || fields.at(2) != remote)
            continue;
        bool ok = false;
        const qint64 uid = fields.at(7).toLongLong(&ok);
        if (ok && uid >= 0)
            return uid;
    }
    return -1;
}

qint64 lookup(quint16 peerPort, quint16 ourPort)
{
    QFile file(QStringLiteral("/proc/net/tcp"));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return find(file.readAll(), peerPort, ourPort);
}

} // namespace PeerUid

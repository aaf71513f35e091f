#include "LocalPeer.h"

#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QTimer>
#include <QtEndian>

#include <unistd.h>

namespace {
const char ack = '\x06';

QString runtimeDirectory()
{
    QString dir = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (dir.isEmpty())
        dir = QDir::tempPath();
    return dir;
}
} // namespace

LocalPeer::LocalPeer(const QString& appId, QObject* parent)
    : QObject(parent)
{
    // The uid in the name keeps users apart even where the runtime directory is shared.
    const QString base = QStringLiteral("%1-%2").arg(appId).arg(::getuid());
    const QString dir = runtimeDirectory();
    m_socketName = dir + QLatin1Char('/') + base + QStringLiteral(".socket");
    m_lockName = dir + QLatin1Char('/') + base + QStringLiteral(".lock");
    m_lock.reset(new QLockFile(m_lockName));
    // A running instance never goes stale by age; only a dead owner frees the name.
    m_lock->setStaleLockTime(0);
    connect(&m_server, &QLocalServer::newConnection, this, &LocalPeer::onNewConnection);
}

LocalPeer::~LocalPeer()
{
    m_server.close();
    if (m_owner)
        m_lock->unlock();
}

bool LocalPeer::isClient()
{
    if (m_owner)
        return false;
    if (!m_lock->tryLock(0))
        return true;
    m_owner = true;
    // A socket file left behind by a crashed owner would make listen() fail.
    QLocalServer::removeServer(m_socketName);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server.listen(m_socketName))
        qWarning() << "LocalPeer: cannot listen on" << m_socketName << m_server.errorString();
    return false;
}

bool LocalPeer::sendMessage(const QString& message, int timeoutMs)
{
    if (!isClient())
        return false;

    QLocalSocket socket;
    socket.connectToServer(m_socketName);
    if (!socket.waitForConnected(timeoutMs))
        return false;

    const QByteArray payload = message.toUtf8().left(int(MaxMessageSize));
    QByteArray packet(4, Qt::Uninitialized);
    qToBigEndian<quint32>(quint32(payload.size()), packet.data());
    packet += payload;
    socket.write(packet);
    if (!socket.waitForBytesWritten(timeoutMs))
        return false;
    if (!socket.waitForReadyRead(timeoutMs))
        return false;
    return socket.read(1) == QByteArray(1, ack);
}

void LocalPeer::onNewConnection()
{
    while (QLocalSocket* socket = m_server.nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        // A peer that connects and never finishes its message is dropped.
        QTimer::singleShot(5000, socket, &QLocalSocket::abort);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket]() {
            if (socket->bytesAvailable() < 4)
                return;
            const QByteArray head = socket->peek(4);
            const quint32 size = qFromBigEndian<quint32>(head.constData());
            if (size > MaxMessageSize) {
                socket->abort();
                return;
            }
            if (socket->bytesAvailable() < qint64(4 + size))
                return;
            socket->read(4);
            const QString message = QString::fromUtf8(socket->read(size));
            socket->write(&ack, 1);
            socket->flush();
            socket->disconnectFromServer();
            emit messageReceived(message);
        });
    }
}

#include "HelperServer.h"

#include "PeerUid.h"
#include "RequestHandler.h"

#include "HelperWire.h"

#include <QDebug>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <cstring>
#include <unistd.h>

namespace {

const char* const BufferProperty = "tavrinRequest";
const char* const DoneProperty = "tavrinDone";
const char* const UidProperty = "tavrinUid";
const char* const InodeProperty = "tavrinInode";

void finishReading(QTcpSocket* socket)
{
    socket->setProperty(DoneProperty, true);
    socket->setProperty(BufferProperty, QByteArray());
    for (QTimer* timer : socket->findChildren<QTimer*>())
        timer->stop();
}

bool looksLikeHttp(const QByteArray& start)
{
    static const char* const methods[]
        = {"GET ", "POST", "PUT ", "HEAD", "DELE", "OPTI", "PATC", "CONN", "TRAC", "PRI "};
    for (const char* method : methods) {
        if (start.startsWith(QByteArray(method, 4)))
            return true;
    }
    return false;
}

} // namespace

HelperServer::HelperServer(RequestHandler* handler, int requestTimeoutMs, QObject* parent)
    : QObject(parent)
    , m_handler(handler)
    , m_server(new QTcpServer(this))
    , m_requestTimeoutMs(requestTimeoutMs)
{
    // Each request holds a thread only for its own work; most take milliseconds.
    m_pool.setMaxThreadCount(32);
    m_server->setMaxPendingConnections(MaxConnections);
    connect(m_server, &QTcpServer::newConnection, this, &HelperServer::onNewConnection);
}

HelperServer::~HelperServer()
{
    finish();
}

void HelperServer::finish()
{
    m_server->close();
    m_pool.waitForDone();
}

bool HelperServer::listen(quint16 port)
{
    if (!m_server->listen(QHostAddress::LocalHost, port)) {
        qCritical().noquote() << "cannot listen on 127.0.0.1 port" << port << ":" << m_server->errorString();
        return false;
    }
    qInfo() << "listening on 127.0.0.1 port" << m_server->serverPort();
    return true;
}

quint16 HelperServer::port() const
{
    return m_server->serverPort();
}

void HelperServer::onNewConnection()
{
    while (QTcpSocket* socket = m_server->nextPendingConnection()) {
        // The client connects from 127.0.0.1; another loopback address is someone playing tricks
        // with the socket lookup.
        const bool fromClientAddress = socket->peerAddress() == QHostAddress(QHostAddress::LocalHost);
        const PeerUid::Peer peer
            = fromClientAddress ? PeerUid::lookup(socket->peerPort(), socket->localPort()) : PeerUid::Peer();
        QString refusal;
        if (!fromClientAddress)
            refusal = QStringLiteral("not from 127.0.0.1 but from %1").arg(socket->peerAddress().toString());
        else if (peer.uid < 0)
            refusal = QStringLiteral("not found in the socket table");
        else if (m_clients >= MaxConnections)
            refusal = QStringLiteral("%1 connections open").arg(m_clients);
        else if (peer.uid != 0 && m_clientsOfUid.value(peer.uid) >= MaxConnectionsPerUid)
            refusal = QStringLiteral("uid %1 has %2 connections open").arg(peer.uid).arg(MaxConnectionsPerUid);
        if (!refusal.isEmpty()) {
            qWarning().noquote() << QStringLiteral("client port %1: %2, dropped").arg(socket->peerPort()).arg(refusal);
            socket->abort();
            socket->deleteLater();
            continue;
        }
        ++m_clients;
        ++m_clientsOfUid[peer.uid];
        socket->setProperty(UidProperty, peer.uid);
        socket->setProperty(InodeProperty, peer.inode);
        socket->setReadBufferSize(qint64(HelperWire::PacketSize) + 1);
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        const qint64 uid = peer.uid;
        connect(socket, &QObject::destroyed, this, [this, uid] {
            --m_clients;
            if (--m_clientsOfUid[uid] <= 0)
                m_clientsOfUid.remove(uid);
        });
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { onReadyRead(socket); });
        auto* timer = new QTimer(socket);
        timer->setSingleShot(true);
        connect(timer, &QTimer::timeout, this, [this, socket] {
            drop(socket,
                 QStringLiteral("no complete request after %1 ms (%2 bytes)")
                     .arg(m_requestTimeoutMs)
                     .arg(socket->property(BufferProperty).toByteArray().size()));
        });
        timer->start(m_requestTimeoutMs);
    }
}

void HelperServer::drop(QTcpSocket* socket, const QString& why)
{
    qWarning().noquote() << QStringLiteral("client port %1: %2, dropped").arg(socket->peerPort()).arg(why);
    finishReading(socket);
    socket->abort();
    socket->deleteLater();
}

void HelperServer::onReadyRead(QTcpSocket* socket)
{
    if (socket->property(DoneProperty).toBool()) {
        socket->readAll(); // one request per connection: further bytes are ignored
        return;
    }
    QByteArray buffer = socket->property(BufferProperty).toByteArray();
    buffer += socket->readAll();
    if (buffer.size() >= 4 && looksLikeHttp(buffer.left(4))) {
        drop(socket, QStringLiteral("HTTP request"));
        return;
    }
    if (buffer.size() > int(HelperWire::PacketSize)) {
        drop(socket, QStringLiteral("request longer than %1 bytes").arg(HelperWire::PacketSize));
        return;
    }
    if (buffer.size() < int(HelperWire::PacketSize)) {
        socket->setProperty(BufferProperty, buffer);
        return;
    }
    finishReading(socket);
    dispatch(socket, buffer);
}

void HelperServer::dispatch(QTcpSocket* socket, const QByteArray& packet)
{
    const qint64 uid = socket->property(UidProperty).toLongLong();
    const quint64 inode = socket->property(InodeProperty).toULongLong();
    const quint16 peerPort = socket->peerPort();
    // The worker never touches the socket: it hands back the request's number and its answer.
    const quint64 id = ++m_lastRequest;
    m_inFlight.insert(id, socket);
    RequestHandler* handler = m_handler;
    m_pool.start([this, id, packet, uid, inode, peerPort, handler] {
        bool ok = false;
        // Root is trusted, but not a process of ours acting as root for someone else, nor a
        // caller that is gone and can no longer be told apart. Our processes run with our own
        // uid: only a caller with it can be one of them, so nobody else pays for the look.
        if (inode == 0 || (uid == qint64(::geteuid()) && PeerUid::heldByDescendant(inode, ::getpid())))
            qWarning() << "client port" << peerPort << "is a process started by this daemon or gone: refused";
        else
            ok = handler->handle(packet, uid);
        QMetaObject::invokeMethod(
            this, [this, id, ok] { reply(id, ok); }, Qt::QueuedConnection);
    });
}

void HelperServer::reply(quint64 id, bool ok)
{
    const QPointer<QTcpSocket> socket = m_inFlight.take(id);
    if (!socket)
        return;
    ReplyPacket reply {};
    reply.result = ok ? 1 : 0;
    reply.value = 0;
    char bytes[HelperWire::ReplySize];
    std::memcpy(bytes, &reply, sizeof bytes);
    socket->write(bytes, sizeof bytes);
    socket->disconnectFromHost();
}

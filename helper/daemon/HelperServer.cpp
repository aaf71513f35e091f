#include "HelperServer.h"

#include "PeerUid.h"
#include "RequestHandler.h"

#include "HelperWire.h"

#include <QDebug>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <cstring>

namespace {

constexpr int MaxClients = 32;
const char* const BufferProperty = "tavrinRequest";
const char* const DoneProperty = "tavrinDone";

void finish(QTcpSocket* socket)
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
    connect(m_server, &QTcpServer::newConnection, this, &HelperServer::onNewConnection);
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
        if (m_clients >= MaxClients) {
            qWarning() << "too many clients: dropping one from port" << socket->peerPort();
            socket->abort();
            socket->deleteLater();
            continue;
        }
        ++m_clients;
        socket->setReadBufferSize(qint64(HelperWire::PacketSize) + 1);
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QObject::destroyed, this, [this] { --m_clients; });
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
    finish(socket);
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
    finish(socket);

    const qint64 uid = PeerUid::lookup(socket->peerPort(), socket->localPort());
    bool ok = false;
    if (uid < 0)
        qWarning() << "client port" << socket->peerPort() << "not found in the socket table: refused";
    else
        ok = m_handler->handle(buffer, uid);

    ReplyPacket reply {};
    reply.result = ok ? 1 : 0;
    reply.value = 0;
    char bytes[HelperWire::ReplySize];
    std::memcpy(bytes, &reply, sizeof bytes);
    socket->write(bytes, sizeof bytes);
    socket->disconnectFromHost();
}

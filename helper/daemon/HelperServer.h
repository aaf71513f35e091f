#pragma once

#include <QHash>
#include <QObject>
#include <QPointer>
#include <QThreadPool>

class QTcpServer;
class QTcpSocket;
class RequestHandler;

// Accepts clients on 127.0.0.1, reads one fixed-size request from each and answers the 9-byte
// reply. Requests are carried out on a pool of threads, so that no client waits for another's
// OpenVPN start or nft call. A uid other than root may hold only a few connections at once, and
// all clients together a bounded number; a client that sends too little in time, too much, or
// something that looks like HTTP is dropped. A connection made by a process this daemon started
// (OpenVPN relaying for someone) is refused, although its uid is root's.
class HelperServer : public QObject
{
    Q_OBJECT
public:
    static constexpr int MaxConnectionsPerUid = 4;
    static constexpr int MaxConnections = 128;

    HelperServer(RequestHandler* handler, int requestTimeoutMs, QObject* parent = nullptr);
    ~HelperServer() override;

    bool listen(quint16 port);
    quint16 port() const;
    // Waits for the requests being carried out; called before the handler goes.
    void finish();

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket* socket);
    void drop(QTcpSocket* socket, const QString& why);
    void dispatch(QTcpSocket* socket, const QByteArray& packet);
    void reply(quint64 id, bool ok);

    RequestHandler* m_handler;
    QTcpServer* m_server;
    int m_requestTimeoutMs;
    int m_clients = 0;
    QHash<qint64, int> m_clientsOfUid;
    QHash<quint64, QPointer<QTcpSocket>> m_inFlight;
    quint64 m_lastRequest = 0;
    QThreadPool m_pool;
};

#pragma once

#include <QObject>

class QTcpServer;
class QTcpSocket;
class RequestHandler;

// Accepts clients on 127.0.0.1, reads one fixed-size request from each, has it carried out and
// answers the 9-byte reply. A client that sends too little in time, too much, or something that
// looks like HTTP is dropped; clients never wait for one another beyond a request's own work.
class HelperServer : public QObject
{
    Q_OBJECT
public:
    HelperServer(RequestHandler* handler, int requestTimeoutMs, QObject* parent = nullptr);

    bool listen(quint16 port);
    quint16 port() const;

private:
    void onNewConnection();
    void onReadyRead(QTcpSocket* socket);
    void drop(QTcpSocket* socket, const QString& why);

    RequestHandler* m_handler;
    QTcpServer* m_server;
    int m_requestTimeoutMs;
    int m_clients = 0;
};

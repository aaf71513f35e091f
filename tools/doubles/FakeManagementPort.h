#pragma once

#include "ManagementScript.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <mutex>
#include <thread>

// Stands in for OpenVPN's management interface: listens on 127.0.0.1:<port>, accepts one client
// and plays a script on its own thread. Records every line the client sends.
class FakeManagementPort
{
public:
    explicit FakeManagementPort(const ManagementScript& script);
    ~FakeManagementPort();
    FakeManagementPort(const FakeManagementPort&) = delete;
    FakeManagementPort& operator=(const FakeManagementPort&) = delete;

    // Starts listening; port 0 picks a free one. False when the port cannot be bound.
    bool listen(quint16 port = 0);
    quint16 port() const { return m_port; }

    // Lines received from the client, line ends removed, in order.
    QList<QByteArray> received() const;
    // Expectations the client did not meet (wrong line, or nothing within the time-out).
    QList<QString> mismatches() const;
    // The script has run to its end (or was cut short by a mismatch or a closed client).
    bool finished() const { return m_finished; }

    // Shared with the fake helper daemon: a socket listening on 127.0.0.1:port (0 picks a free port, put in
    // *bound), or -1; and a send of all the bytes, false once the peer is gone.
    static int listenOnLoopback(quint16 port, quint16* bound);
    static bool sendAll(int fd, const QByteArray& data);

private:
    void serve();
    // The next line from the client, false once it is gone, stopped or the time-out (none if negative) passed.
    bool readLine(int fd, QByteArray& line, int timeoutMs);

    ManagementScript m_script;
    int m_listenFd = -1;
    quint16 m_port = 0;
    std::thread m_thread;
    std::atomic<bool> m_stop {false};
    std::atomic<bool> m_finished {false};
    mutable std::mutex m_mutex;
    QList<QByteArray> m_received;
    QList<QString> m_mismatches;
    QByteArray m_pending;
};

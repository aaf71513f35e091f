#pragma once

#include "FakeManagementPort.h"
#include "ManagementScript.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// Stands in for the privileged helper daemon: listens on a loopback port, reads the fixed-size
// requests and records them, and answers as told. On a run-OpenVPN request it can open a fake
// management port on the port named in the argument string, as OpenVPN would.
class FakeHelperDaemon
{
public:
    enum class Behaviour {
        Reply, // the 9-byte reply in one piece
        ReplyInPieces, // the reply in 1 + 3 + 5 bytes with pauses between
        CloseWithoutReply, // read the request, then hang up
        StaySilent, // read the request, keep the connection open, never answer
    };

    FakeHelperDaemon() = default;
    ~FakeHelperDaemon();
    FakeHelperDaemon(const FakeHelperDaemon&) = delete;
    FakeHelperDaemon& operator=(const FakeHelperDaemon&) = delete;

    // Binds 127.0.0.1 on a free port, points the client at it through TAVRIN_HELPER_PORT and starts serving.
    bool start();
    quint16 port() const { return m_port; }

    void setBehaviour(Behaviour behaviour) { m_behaviour = behaviour; }
    void setResult(quint8 result) { m_result = result; }
    // Answers the next request of this command with a refusal, whatever the result set above.
    void refuseNext(quint32 command) { m_refused = command; }
    // The dialogue a management port plays after a run-OpenVPN request; without one, no port opens.
    void setManagementScript(const ManagementScript& script);

    // Full requests as received (64005 bytes each unless the client sent less before closing).
    QList<QByteArray> requests() const;
    // The management port opened for the latest run-OpenVPN request, or null.
    FakeManagementPort* managementPort() const;

    // Decodes a zero-filled UCS-4 field of a request.
    static QString ucs4Field(const QByteArray& request, int offset, int size);

private:
    void serve();
    void handle(int client);

    int m_listenFd = -1;
    quint16 m_port = 0;
    std::thread m_thread;
    std::atomic<bool> m_stop {false};
    std::atomic<Behaviour> m_behaviour {Behaviour::Reply};
    std::atomic<quint8> m_result {1};
    std::atomic<quint32> m_refused {0};
    mutable std::mutex m_mutex;
    QList<QByteArray> m_requests;
    bool m_hasScript = false;
    ManagementScript m_script;
    std::vector<std::unique_ptr<FakeManagementPort>> m_managementPorts;
    std::vector<int> m_heldClients;
};

#include "SingleApplication.h"

#include "LocalPeer.h"

SingleApplication::SingleApplication(const QString& id, int& argc, char** argv)
    : QApplication(argc, argv)
    , m_peer(new LocalPeer(id, this))
{
    connect(m_peer, &LocalPeer::messageReceived, this, &SingleApplication::messageReceived);
}

SingleApplication::~SingleApplication() = default;

bool SingleApplication::isRunning()
{
    return m_peer->isClient();
}

bool SingleApplication::sendMessage(const QString& message, int timeout)
{
    return m_peer->sendMessage(message, timeout);
}

#include "FakeHelperDaemon.h"

#include "HelperWire.h"

#include <QRegularExpression>
#include <QVector>

#include <chrono>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int PollStepMs = 50;
constexpr int RequestTimeoutMs = 5000;

// The port after "--management 127.0.0.1 " in an argument string, or 0.
quint16 managementPortFrom(const QString& arguments)
{
    static const QRegularExpression pattern(QStringLiteral("--management 127\\.0\\.0\\.1 (\\d+)"));
    const QRegularExpressionMatch match = pattern.match(arguments);
    return match.hasMatch() ? quint16(match.captured(1).toUInt()) : 0;
}

} // namespace

FakeHelperDaemon::~FakeHelperDaemon()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    if (m_listenFd >= 0)
        ::close(m_listenFd);
    for (int fd : m_heldClients)
        ::close(fd);
}

bool FakeHelperDaemon::start()
{
    m_listenFd = FakeManagementPort::listenOnLoopback(0, &m_port);
    if (m_listenFd < 0)
        return false;
    qputenv(HelperWire::PortEnvironmentVariable, QByteArray::number(m_port));
    m_thread = std::thread([this] { serve(); });
    return true;
}

void FakeHelperDaemon::setManagementScript(const ManagementScript& script)
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_script = script;
    m_hasScript = true;
}

QList<QByteArray> FakeHelperDaemon::requests() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_requests;
}

FakeManagementPort* FakeHelperDaemon::managementPort() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_managementPorts.empty() ? nullptr : m_managementPorts.back().get();
}

QString FakeHelperDaemon::ucs4Field(const QByteArray& request, int offset, int size)
{
    QVector<uint> codePoints;
    for (int i = offset; i + 4 <= offset + size && i + 4 <= request.size(); i += 4) {
        uint codePoint = 0;
        std::memcpy(&codePoint, request.constData() + i, 4);
        if (codePoint == 0)
            break;
        codePoints.append(codePoint);
    }
    return QString::fromUcs4(codePoints.constData(), codePoints.size());
}

void FakeHelperDaemon::serve()
{
    while (!m_stop) {
        pollfd p {m_listenFd, POLLIN, 0};
        if (::poll(&p, 1, PollStepMs) <= 0)
            continue;
        const int client = ::accept(m_listenFd, nullptr, nullptr);
        if (client >= 0)
            handle(client);
    }
}

void FakeHelperDaemon::handle(int client)
{
    QByteArray request;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(RequestTimeoutMs);
    while (request.size() < int(HelperWire::PacketSize) && !m_stop && std::chrono::steady_clock::now() < deadline) {
        pollfd p {client, POLLIN, 0};
        if (::poll(&p, 1, PollStepMs) <= 0)
            continue;
        char buffer[16384];
        const ssize_t n = ::recv(client, buffer, std::min(sizeof(buffer), HelperWire::PacketSize - request.size()), 0);
        if (n <= 0)
            break;
        request.append(buffer, int(n));
    }

    std::uint32_t command = 0;
    if (request.size() >= 4)
        std::memcpy(&command, request.constData(), 4);
    if (command == HelperWire::RunOpenVpnWithConfig && request.size() == int(HelperWire::PacketSize)) {
        std::lock_guard<std::mutex> lock(m_mutex);
        const quint16 managementPort = managementPortFrom(
            ucs4Field(request, int(HelperWire::OpenVpnArgumentsOffset), int(HelperWire::OpenVpnArgumentsSize)));
        if (m_hasScript && managementPort != 0) {
            auto fake = std::make_unique<FakeManagementPort>(m_script);
            if (fake->listen(managementPort))
                m_managementPorts.push_back(std::move(fake));
        }
    }
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.append(request);
    }

    ReplyPacket reply;
    std::memset(&reply, 0, sizeof(reply));
    quint32 refused = command;
    reply.result = command != 0 && m_refused.compare_exchange_strong(refused, 0) ? 0 : m_result.load();
    reply.value = 0x0102030405060708ULL;
    const QByteArray bytes(reinterpret_cast<const char*>(&reply), sizeof(reply));
    switch (m_behaviour.load()) {
    case Behaviour::Reply:
        FakeManagementPort::sendAll(client, bytes);
        break;
    case Behaviour::ReplyInPieces:
        for (const QByteArray& piece : {bytes.left(1), bytes.mid(1, 3), bytes.mid(4)}) {
            FakeManagementPort::sendAll(client, piece);
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
        }
        break;
    case Behaviour::CloseWithoutReply:
        break;
    case Behaviour::StaySilent:
        m_heldClients.push_back(client);
        return;
    }
    ::close(client);
}

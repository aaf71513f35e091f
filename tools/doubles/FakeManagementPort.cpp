#include "FakeManagementPort.h"

#include <arpa/inet.h>
#include <cerrno>
#include <chrono>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int PollStepMs = 50;
constexpr int ExpectTimeoutMs = 10000; // how long an expectation waits for the client's line

} // namespace

int FakeManagementPort::listenOnLoopback(quint16 port, quint16* bound)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    const int yes = 1;
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    if (fd < 0 || ::setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes)) != 0
        || ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 || ::listen(fd, 16) != 0
        || ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        if (fd >= 0)
            ::close(fd);
        return -1;
    }
    *bound = ntohs(address.sin_port);
    return fd;
}

bool FakeManagementPort::sendAll(int fd, const QByteArray& data)
{
    qsizetype sent = 0;
    while (sent < data.size()) {
        const ssize_t n = ::send(fd, data.constData() + sent, std::size_t(data.size() - sent), MSG_NOSIGNAL);
        if (n < 0)
            return false;
        sent += n;
    }
    return true;
}

FakeManagementPort::FakeManagementPort(const ManagementScript& script)
    : m_script(script)
{ }

FakeManagementPort::~FakeManagementPort()
{
    m_stop = true;
    if (m_thread.joinable())
        m_thread.join();
    if (m_listenFd >= 0)
        ::close(m_listenFd);
}

bool FakeManagementPort::listen(quint16 port)
{
    m_listenFd = listenOnLoopback(port, &m_port);
    if (m_listenFd < 0)
        return false;
    m_thread = std::thread([this] { serve(); });
    return true;
}

QList<QByteArray> FakeManagementPort::received() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_received;
}

QList<QString> FakeManagementPort::mismatches() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_mismatches;
}

bool FakeManagementPort::readLine(int fd, QByteArray& line, int timeoutMs)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        const int end = m_pending.indexOf('\n');
        if (end >= 0) {
            line = m_pending.left(end);
            m_pending.remove(0, end + 1);
            if (line.endsWith('\r'))
                line.chop(1);
            std::lock_guard<std::mutex> lock(m_mutex);
            m_received.append(line);
            return true;
        }
        if (m_stop || (timeoutMs >= 0 && std::chrono::steady_clock::now() >= deadline))
            return false;
        pollfd p {fd, POLLIN, 0};
        if (::poll(&p, 1, PollStepMs) <= 0)
            continue;
        char buffer[4096];
        const ssize_t n = ::recv(fd, buffer, sizeof(buffer), 0);
        if (n <= 0)
            return false;
        m_pending.append(buffer, int(n));
    }
}

void FakeManagementPort::serve()
{
    int client = -1;
    while (!m_stop && client < 0) {
        pollfd p {m_listenFd, POLLIN, 0};
        if (::poll(&p, 1, PollStepMs) > 0)
            client = ::accept(m_listenFd, nullptr, nullptr);
    }
    if (client < 0)
        return;

    bool open = true;
    for (const ManagementScript::Step& step : qAsConst(m_script.steps)) {
        if (m_stop || !open)
            break;
        switch (step.kind) {
        case ManagementScript::Step::Send:
            open = sendAll(client, step.text + "\r\n");
            break;
        case ManagementScript::Step::Expect: {
            QByteArray line;
            open = readLine(client, line, ExpectTimeoutMs);
            if (!open || line != step.text) {
                const QString got
                    = open ? QLatin1Char('"') + QString::fromUtf8(line) + QLatin1Char('"') : QStringLiteral("nothing");
                std::lock_guard<std::mutex> lock(m_mutex);
                m_mismatches.append(QStringLiteral("expected \"%1\", got %2").arg(QString::fromUtf8(step.text), got));
            }
            break;
        }
        case ManagementScript::Step::Pause:
            std::this_thread::sleep_for(std::chrono::milliseconds(step.pauseMs));
            break;
        case ManagementScript::Step::Close:
            open = false;
            break;
        }
    }
    m_finished = true;

    // Without a close step the connection stays up; keep recording until the client leaves.
    QByteArray line;
    while (open && readLine(client, line, -1)) { }
    ::close(client);
}

#include "OpenVPNConnectorQt.h"

#include "FreePort.h"
#include "InterruptSafe.h"
#include "ManagementLine.h"
#include "ServiceConnector.h"

#include <QDebug>
#include <QDir>

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// The one management connection of the process, shared by the thread and disconnect(); -1 when closed.
std::atomic<int> socketOpenVPNfd {-1};

constexpr int MaxRetries = 30;
constexpr unsigned long RetryPauseMs = 100;
constexpr int CommandLimit = 1023;

qint32 sendAll(int socket, const char* buffer, qint32 length)
{
    if (length < 1)
        return 0;
    qint32 total = 0;
    while (total < length) {
        // MSG_NOSIGNAL: OpenVPN going away must not take the program with it.
        const ssize_t sent = InterruptSafe::send(socket, buffer + total, std::size_t(length - total), MSG_NOSIGNAL);
        if (sent < 0)
            return -1;
        total += qint32(sent);
    }
    return total;
}

qint32 sendAll(int socket, const QByteArray& text)
{
    return sendAll(socket, text.constData(), qint32(text.size()));
}

// Reads up to and including the next line feed, which is not stored; a carriage return before it
// stays. Keeps at most limit - 1 bytes of the line and drops the rest. Returns the number of bytes
// read, or -1 when the connection closed or failed.
int sgetline(int socket, QByteArray& line, int limit)
{
    line.clear();
    int count = 0;
    for (;;) {
        char c = 0;
        const ssize_t received = InterruptSafe::recv(socket, &c, 1, 0);
        if (received <= 0)
            return -1;
        ++count;
        if (c == '\n')
            return count;
        if (line.size() < limit - 1)
            line.append(c);
    }
}

void closeSharedSocket()
{
    const int fd = socketOpenVPNfd.exchange(-1);
    if (fd >= 0)
        ::close(fd);
}

} // namespace

OpenVPNConnectorQt::OpenVPNConnectorQt(const Parameters& parameters, QObject* parent)
    : QThread(parent)
    , params(parameters)
{ }

OpenVPNConnectorQt::~OpenVPNConnectorQt()
{
    stopRequested = true;
    // OpenVPN normally closes the connection right after a stop request; if it does not, wake the
    // blocked read so the thread can leave.
    if (isRunning() && !wait(2000)) {
        const int fd = socketOpenVPNfd.load();
        if (fd >= 0)
            ::shutdown(fd, SHUT_RDWR);
    }
    wait();
    acquireSession();
}

void OpenVPNConnectorQt::endPreviousSession()
{
    if (!isRunning())
        return;
    stopRequested = true;
    const int fd = socketOpenVPNfd.load();
    if (fd >= 0)
        ::shutdown(fd, SHUT_RDWR);
    wait();
    acquireSession();
}

void OpenVPNConnectorQt::connect(const QString& configPath_, const QString& username_, const QString& password_)
{
    // A previous run still finishing is stopped first, or start() below would do nothing.
    endPreviousSession();
    configPath = configPath_;
    username = username_;
    password = password_;
    managementConnected = false;
    stopRequested = false;
    closeSharedSocket();
    state = 1;
    qDebug() << "start OpenVPNConnectorQt";
    start(QThread::LowPriority);
}

void OpenVPNConnectorQt::disconnect()
{
    const int fd = socketOpenVPNfd.load();
    if (fd >= 0 && managementConnected)
        sendAll(fd, QByteArrayLiteral("signal SIGTERM\n"));
    stopRequested = true;
}

int OpenVPNConnectorQt::getAvailablePort()
{
    return findFreeLocalPort();
}

QString OpenVPNConnectorQt::openVpnArguments(const QString& configPath_, int port)
{
    return QStringLiteral("--config \"") + QDir::toNativeSeparators(configPath_) + QStringLiteral("\"")
        + QStringLiteral(" --management 127.0.0.1 ") + QString::number(port)
        + QStringLiteral(" --management-query-passwords ") + QStringLiteral(" --script-security 2 ")
        + QStringLiteral(" --up /usr/share/tavrin/script/update-resolv-conf.sh ")
        + QStringLiteral(" --down /usr/share/tavrin/script/update-resolv-conf.sh ");
}

bool OpenVPNConnectorQt::connectToPipeAndRunOpenVPN()
{
    if (!params.serviceConnector)
        return false;
    return params.serviceConnector->runOpenVpnWithConfig(openVpnArguments(configPath, managementPort));
}

void OpenVPNConnectorQt::run()
{
    session();
    // Publishes the session's last writes to whoever waited for the thread (see acquireSession).
    m_sessionsEnded.fetch_add(1, std::memory_order_release);
}

void OpenVPNConnectorQt::acquireSession()
{
    // QThread::wait() orders the thread's end before the caller, but through a lock that thread
    // checkers cannot see; an acquire on the flag makes the order explicit.
    (void)m_sessionsEnded.load(std::memory_order_acquire);
}

void OpenVPNConnectorQt::session()
{
    managementPort = getAvailablePort();
    if (managementPort == -1) {
        emit error(5);
        return;
    }
    if (!connectToPipeAndRunOpenVPN()) {
        emit error(3);
        return;
    }
    managementConnected = false;
    m_retries = 0;
    m_tapReported = false;
    m_proxyReported = false;

    QByteArray line;
    line.reserve(LineBufferSize);
    while (!stopRequested) {
        if (!managementConnected) {
            const int fd = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
            if (fd < 0)
                return;
            socketOpenVPNfd = fd;
            if (!connectManagement()) {
                closeSharedSocket();
                if (++m_retries > MaxRetries) {
                    qDebug() << "Can't connect to openvpn socket after 30 retries";
                    state = 0;
                    emit error(1);
                    return;
                }
                msleep(RetryPauseMs);
                continue;
            }
            managementConnected = true;
            // Our commands go out as written.
            const int on = 1;
            ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
            sendAll(fd, QByteArrayLiteral("state on all\n"));
            sendAll(fd, QByteArrayLiteral("log on\n"));
            sendAll(fd, QByteArrayLiteral("bytecount 1\n"));
        }
        // OpenVPN writes a command's echo in the log and then its answer as two small writes, and holds the second
        // until the first is acknowledged: acknowledge at once rather than after the usual 40 ms delay, which would
        // otherwise come twice (user name and password) before every connection.
        const int quick = 1;
        ::setsockopt(socketOpenVPNfd, IPPROTO_TCP, TCP_QUICKACK, &quick, sizeof(quick));
        if (sgetline(socketOpenVPNfd, line, LineBufferSize) < 0)
            break;
        interpretLine(line);
        if (stopRequested)
            break;
    }

    qDebug() << "OpenVPN socket thread stopped";
    closeSharedSocket();
    managementConnected = false;
    if (state != 0) {
        state = 0;
        emit disconnected();
    }
}

bool OpenVPNConnectorQt::connectManagement()
{
    sockaddr_in address {};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(managementPort.load()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return InterruptSafe::connect(socketOpenVPNfd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

void OpenVPNConnectorQt::sendCredential(const char* keyword, const QString& value)
{
    // Sent as typed, unquoted: OpenVPN cuts a value at its first blank.
    QByteArray command = QByteArray(keyword) + " \"Auth\" " + value.toUtf8() + '\n';
    if (command.size() > CommandLimit)
        command.truncate(CommandLimit);
    sendAll(socketOpenVPNfd, command);
}

void OpenVPNConnectorQt::interpretLine(const QByteArray& rawLine)
{
    const ManagementLine line = ManagementLine::read(rawLine);
    switch (line.kind) {
    case ManagementLine::NeedUsername:
        sendCredential("username", username);
        break;
    case ManagementLine::NeedPassword:
        sendCredential("password", password);
        break;
    case ManagementLine::AuthFailed:
        emit error(0);
        break;
    case ManagementLine::NoTapAdapter:
        if (!m_tapReported) {
            m_tapReported = true;
            emit error(2);
        }
        break;
    case ManagementLine::ProxyNeedsAuth:
        if (!m_proxyReported) {
            m_proxyReported = true;
            emit error(6);
        }
        break;
    case ManagementLine::ByteCount:
        emit statisticsUpdated(line.bytesIn, line.bytesOut);
        break;
    case ManagementLine::State:
        emit stateChanged(line.state);
        if (line.change == ManagementLine::Connected) {
            state = 2;
            emit connected();
        } else if (line.change == ManagementLine::ConnectFailed) {
            state = 0;
            emit error(8);
        } else if (line.change == ManagementLine::Reconnecting) {
            state = 1;
            emit reconnecting();
        }
        break;
    case ManagementLine::Log:
        if (line.blockedWrite)
            emit error(7);
        emit log(line.text);
        break;
    case ManagementLine::Other:
        break;
    }
}

#pragma once

// Blocking socket calls that a signal may interrupt (a finished ping's SIGCHLD, say). An
// interrupted call is not a failure: it is taken up again until it succeeds or really fails.

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>
#include <sys/types.h>

namespace InterruptSafe {

inline int connect(int fd, const sockaddr* address, socklen_t length)
{
    if (::connect(fd, address, length) == 0)
        return 0;
    if (errno != EINTR)
        return -1;
    // The connection goes on without us: wait for it to settle, then read how it ended.
    pollfd p {fd, POLLOUT, 0};
    while (::poll(&p, 1, -1) < 0) {
        if (errno != EINTR)
            return -1;
    }
    int error = 0;
    socklen_t size = sizeof error;
    if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) != 0)
        return -1;
    errno = error;
    return error == 0 ? 0 : -1;
}

inline ssize_t send(int fd, const void* data, size_t length, int flags)
{
    ssize_t n;
    while ((n = ::send(fd, data, length, flags)) < 0 && errno == EINTR) { }
    return n;
}

inline ssize_t recv(int fd, void* data, size_t length, int flags)
{
    ssize_t n;
    while ((n = ::recv(fd, data, length, flags)) < 0 && errno == EINTR) { }
    return n;
}

} // namespace InterruptSafe

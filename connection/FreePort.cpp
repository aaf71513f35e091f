#include "FreePort.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

int findFreeLocalPort()
{
    addrinfo hints {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_protocol = IPPROTO_TCP;
    addrinfo* found = nullptr;
    if (::getaddrinfo("127.0.0.1", "0", &hints, &found) != 0 || !found)
        return -1;

    int port = -1;
    const int fd = ::socket(found->ai_family, found->ai_socktype, found->ai_protocol);
    if (fd >= 0) {
        sockaddr_in bound {};
        socklen_t length = sizeof(bound);
        if (::bind(fd, found->ai_addr, found->ai_addrlen) == 0
            && ::getsockname(fd, reinterpret_cast<sockaddr*>(&bound), &length) == 0)
            port = ntohs(bound.sin_port);
        ::close(fd);
    }
    ::freeaddrinfo(found);
    return port;
}

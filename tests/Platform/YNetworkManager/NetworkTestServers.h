#pragma once
// Loopback sockets for tests that need a port of their own: bound, refusing, or silent.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace ycontacts::testing {

// A TCP socket bound to 127.0.0.1 on an ephemeral port; returns the descriptor and fills `port`.
inline int bindLoopback(int& port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        throw std::runtime_error("cannot bind a loopback socket");
    }
    port = ntohs(address.sin_port);
    return fd;
}

// A port on 127.0.0.1 that was bound and closed again: connecting to it is refused.
inline int closedLoopbackPort() {
    int port = -1;
    ::close(bindLoopback(port));
    return port;
}

}  // namespace ycontacts::testing

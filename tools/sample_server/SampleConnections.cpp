#include "sample_server/SampleConnections.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cstdlib>
#include <functional>
#include <optional>

namespace sample_server {
namespace {

std::optional<int> portOf(const sockaddr_storage& address) {
    if (address.ss_family == AF_INET) return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
    if (address.ss_family == AF_INET6) return ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port);
    return std::nullopt;
}

// Calls `visit(fd, peerPort)` for every connected socket of this process whose local port is `localPort`,
// until it returns true.
bool forEachConnection(int localPort, const std::function<bool(int, int)>& visit) {
    DIR* directory = opendir("/proc/self/fd");
    if (directory == nullptr) return false;
    const int ownFd = dirfd(directory);
    bool stopped = false;
    while (!stopped) {
        const dirent* entry = readdir(directory);
        if (entry == nullptr) break;
        char* end = nullptr;
        const long fd = std::strtol(entry->d_name, &end, 10);
        if (end == entry->d_name || *end != '\0' || fd == ownFd) continue;
        struct stat info {};
        if (fstat(static_cast<int>(fd), &info) != 0 || !S_ISSOCK(info.st_mode)) continue;
        sockaddr_storage local{};
        sockaddr_storage peer{};
        socklen_t localSize = sizeof local;
        socklen_t peerSize = sizeof peer;
        if (getsockname(static_cast<int>(fd), reinterpret_cast<sockaddr*>(&local), &localSize) != 0) continue;
        if (portOf(local) != localPort) continue;
        if (getpeername(static_cast<int>(fd), reinterpret_cast<sockaddr*>(&peer), &peerSize) != 0) continue;
        const auto peerPort = portOf(peer);
        if (peerPort) stopped = visit(static_cast<int>(fd), *peerPort);
    }
    closedir(directory);
    return stopped;
}

}  // namespace

bool shutdownConnection(int localPort, int remotePort) {
    return forEachConnection(localPort, [remotePort](int fd, int peerPort) {
        if (peerPort != remotePort) return false;
        shutdown(fd, SHUT_RDWR);
        return true;
    });
}

void shutdownAcceptedConnections(int localPort) {
    forEachConnection(localPort, [](int fd, int) {
        shutdown(fd, SHUT_RDWR);
        return false;
    });
}

}  // namespace sample_server

#include "sample_server/SampleHttpServer.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>

namespace sample_server {
namespace {

// The socket whose request the current worker thread is serving.
thread_local socket_t currentConnection = -1;

// Clients keep their connections open for many requests; the library's default closes after five.
constexpr std::size_t kKeepAliveRequests = 100;

int millisecondsOf(time_t seconds, time_t microseconds) {
    return static_cast<int>(seconds * 1000 + microseconds / 1000);
}

bool waitFor(socket_t sock, short events, int milliseconds) {
    pollfd descriptor{sock, events, 0};
    int result = 0;
    do {
        result = poll(&descriptor, 1, milliseconds);
    } while (result < 0 && errno == EINTR);
    return result > 0;
}

void addressOf(const sockaddr_storage& address, std::string& ip, int& port) {
    char text[INET6_ADDRSTRLEN] = {};
    if (address.ss_family == AF_INET) {
        const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
        inet_ntop(AF_INET, &v4.sin_addr, text, sizeof text);
        port = ntohs(v4.sin_port);
    } else if (address.ss_family == AF_INET6) {
        const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address);
        inet_ntop(AF_INET6, &v6.sin6_addr, text, sizeof text);
        port = ntohs(v6.sin6_port);
    }
    ip = text;
}

// A blocking socket stream with read and write time-outs, as the HTTP library's request code expects. Reads
// go through a buffer because the library reads request lines one byte at a time.
class ConnectionStream : public httplib::Stream {
public:
    ConnectionStream(socket_t sock, int readTimeoutMs, int writeTimeoutMs)
        : sock_(sock), readTimeoutMs_(readTimeoutMs), writeTimeoutMs_(writeTimeoutMs) {}

    // True when a next request has started to arrive within the time-out.
    bool awaitRequest(int timeoutMs) const { return buffered() > 0 || waitFor(sock_, POLLIN, timeoutMs); }

    bool is_readable() const override { return buffered() > 0 || waitFor(sock_, POLLIN, readTimeoutMs_); }
    bool is_writable() const override { return waitFor(sock_, POLLOUT, writeTimeoutMs_); }

    ssize_t read(char* ptr, size_t size) override {
        if (buffered() == 0) {
            if (!waitFor(sock_, POLLIN, readTimeoutMs_)) return -1;
            const ssize_t received = receive(buffer_.data(), buffer_.size());
            if (received <= 0) return received;
            begin_ = 0;
            end_ = static_cast<std::size_t>(received);
        }
        const std::size_t count = std::min(size, buffered());
        std::memcpy(ptr, buffer_.data() + begin_, count);
        begin_ += count;
        return static_cast<ssize_t>(count);
    }

    ssize_t write(const char* ptr, size_t size) override {
        if (!is_writable()) return -1;
        ssize_t sent = 0;
        do {
            sent = send(sock_, ptr, size, MSG_NOSIGNAL);
        } while (sent < 0 && errno == EINTR);
        return sent;
    }

    void get_remote_ip_and_port(std::string& ip, int& port) const override {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        if (getpeername(sock_, reinterpret_cast<sockaddr*>(&address), &size) == 0) addressOf(address, ip, port);
    }

    void get_local_ip_and_port(std::string& ip, int& port) const override {
        sockaddr_storage address{};
        socklen_t size = sizeof address;
        if (getsockname(sock_, reinterpret_cast<sockaddr*>(&address), &size) == 0) addressOf(address, ip, port);
    }

    socket_t socket() const override { return sock_; }

private:
    std::size_t buffered() const { return end_ - begin_; }

    ssize_t receive(char* ptr, std::size_t size) {
        ssize_t received = 0;
        do {
            received = recv(sock_, ptr, size, 0);
        } while (received < 0 && errno == EINTR);
        return received;
    }

    socket_t sock_;
    int readTimeoutMs_;
    int writeTimeoutMs_;
    std::array<char, 4096> buffer_{};
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
};

}  // namespace

SampleHttpServer::SampleHttpServer() { set_keep_alive_max_count(kKeepAliveRequests); }

void SampleHttpServer::shutdownConnections() {
    std::lock_guard lock(mutex_);
    closing_ = true;
    for (const socket_t sock : open_) shutdown(sock, SHUT_RDWR);
}

void SampleHttpServer::dropCurrentConnection() {
    if (currentConnection >= 0) shutdown(currentConnection, SHUT_RDWR);
}

bool SampleHttpServer::track(socket_t sock) {
    std::lock_guard lock(mutex_);
    if (closing_) return false;
    open_.insert(sock);
    return true;
}

void SampleHttpServer::untrack(socket_t sock) {
    std::lock_guard lock(mutex_);
    open_.erase(sock);
}

bool SampleHttpServer::process_and_close_socket(socket_t sock) {
    bool served = false;
    if (track(sock)) {
        currentConnection = sock;
        ConnectionStream stream(sock, millisecondsOf(read_timeout_sec_, read_timeout_usec_),
                                millisecondsOf(write_timeout_sec_, write_timeout_usec_));
        // Serve requests until the client or a reply closes the connection, the server stops, the connection
        // has been idle for the keep-alive time, or the request budget of one connection is spent.
        for (std::size_t left = keep_alive_max_count_; left > 0 && svr_sock_ != INVALID_SOCKET; --left) {
            if (!stream.awaitRequest(millisecondsOf(keep_alive_timeout_sec_, 0))) break;
            bool closed = false;
            served = process_request(stream, left == 1, closed, nullptr);
            if (!served || closed) break;
        }
        currentConnection = -1;
        // Untracked before closing: a concurrent shutdownConnections() never touches a reused descriptor.
        untrack(sock);
    }
    shutdown(sock, SHUT_RDWR);
    close(sock);
    return served;
}

}  // namespace sample_server

#include "Platform/YNetworkManager/NetworkTestServers.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

namespace ycontacts::testing {

namespace {

// A TCP socket bound to 127.0.0.1 on an ephemeral port; returns the descriptor and fills `port`.
int bindLoopback(int& port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0) throw std::runtime_error("socket failed");
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = 0;
    socklen_t length = sizeof(address);
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        ::close(fd);
        throw std::runtime_error("bind failed");
    }
    port = ntohs(address.sin_port);
    return fd;
}

}  // namespace

std::string SeenRequest::header(const std::string& name) const {
    const auto found = headers.find(name);
    return found == headers.end() ? std::string() : found->second;
}

LocalHTTPServer::LocalHTTPServer(const Setup& setup) {
    server_.set_keep_alive_timeout(1);
    server_.set_keep_alive_max_count(1000);
    setup(server_, *this);
    port_ = server_.bind_to_any_port("127.0.0.1");
    if (port_ <= 0) throw std::runtime_error("httplib could not bind");
    thread_ = std::thread([this] { server_.listen_after_bind(); });
    // stop() is ignored until the loop runs, so the destructor could otherwise wait forever.
    while (!server_.is_running()) std::this_thread::yield();
}

LocalHTTPServer::~LocalHTTPServer() {
    releaseHeld();
    server_.stop();
    thread_.join();
}

std::string LocalHTTPServer::url(const std::string& pathAndQuery) const {
    return "http://127.0.0.1:" + std::to_string(port_) + pathAndQuery;
}

void LocalHTTPServer::record(const httplib::Request& request) {
    SeenRequest seen{request.method, request.target, request.path, request.body, request.headers, {},
                     request.remote_port};
    for (const auto& [name, part] : request.files) seen.multipartFields[name] = part.content;
    {
        std::lock_guard lock(mutex_);
        seen_.push_back(std::move(seen));
    }
    changed_.notify_all();
}

std::vector<SeenRequest> LocalHTTPServer::seen() const {
    std::lock_guard lock(mutex_);
    return seen_;
}

bool LocalHTTPServer::waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return seen_.size() >= count; });
}

void LocalHTTPServer::holdUntilReleased() {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(30), [&] { return released_; });
}

void LocalHTTPServer::releaseHeld() {
    {
        std::lock_guard lock(mutex_);
        released_ = true;
    }
    changed_.notify_all();
}

int closedLoopbackPort() {
    int port = -1;
    ::close(bindLoopback(port));
    return port;
}

SilentListener::SilentListener() {
    fd_ = bindLoopback(port_);
    ::listen(fd_, 16);
}

SilentListener::~SilentListener() { ::close(fd_); }

ScriptedReplyServer::ScriptedReplyServer(std::string reply) {
    fd_ = bindLoopback(port_);
    ::listen(fd_, 4);
    thread_ = std::thread([fd = fd_, reply = std::move(reply)] {
        const int connection = ::accept(fd, nullptr, nullptr);
        if (connection < 0) return;
        std::string head;
        char buffer[1024];
        while (head.find("\r\n\r\n") == std::string::npos) {
            const ssize_t got = ::recv(connection, buffer, sizeof(buffer), 0);
            if (got <= 0) break;
            head.append(buffer, static_cast<std::size_t>(got));
        }
        std::size_t sent = 0;
        while (sent < reply.size()) {
            const ssize_t wrote = ::send(connection, reply.data() + sent, reply.size() - sent, MSG_NOSIGNAL);
            if (wrote <= 0) break;
            sent += static_cast<std::size_t>(wrote);
        }
        ::close(connection);
    });
}

ScriptedReplyServer::~ScriptedReplyServer() {
    // Wakes an accept() that never got a connection.
    ::shutdown(fd_, SHUT_RDWR);
    thread_.join();
    ::close(fd_);
}

}  // namespace ycontacts::testing

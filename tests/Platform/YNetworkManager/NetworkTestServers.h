#pragma once
// Loopback servers and sockets for tests that need a port of their own: an HTTP server, bound, or refusing.

#include <arpa/inet.h>
#include <httplib.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "Support/Waiting.h"

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

// What a handler was sent, with its headers looked up by name.
struct SeenRequest : httplib::Request {
    std::string header(const std::string& name) const { return get_header_value(name); }
};

// An httplib server on 127.0.0.1 and an ephemeral port, listening on its own thread until destroyed.
// Handlers that call holdUntilReleased() park until releaseHeld() or the destructor lets them go.
class LocalHTTPServer {
public:
    using Setup = std::function<void(httplib::Server&, LocalHTTPServer&)>;

    explicit LocalHTTPServer(const Setup& setup) {
        setup(server_, *this);
        server_.set_keep_alive_timeout(1);
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        // stop() is ignored until the loop runs, so the destructor could otherwise wait forever.
        while (!server_.is_running()) std::this_thread::yield();
    }
    ~LocalHTTPServer() {
        releaseHeld();
        server_.stop();
        thread_.join();
    }
    LocalHTTPServer(const LocalHTTPServer&) = delete;
    LocalHTTPServer& operator=(const LocalHTTPServer&) = delete;

    std::string url(const std::string& pathAndQuery) const {
        return "http://127.0.0.1:" + std::to_string(port_) + pathAndQuery;
    }
    // Handlers call it first with the request they got.
    void record(const httplib::Request& request) { seen_.add(SeenRequest{request}); }
    std::vector<SeenRequest> seen() { return seen_.values(); }
    // Waits until at least `count` requests were recorded, or `timeout` passed.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds timeout = testsupport::waitLimit) {
        const auto end = std::chrono::steady_clock::now() + timeout;
        while (seen_.values().size() < count) {
            if (std::chrono::steady_clock::now() > end) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    void holdUntilReleased() { released_.wait_for(testsupport::waitLimit); }
    void releaseHeld() {
        std::call_once(releasedOnce_, [this] { release_.set_value(); });
    }

private:
    httplib::Server server_;
    int port_ = -1;
    std::thread thread_;
    testsupport::Received<SeenRequest> seen_;
    std::promise<void> release_;
    std::shared_future<void> released_ = release_.get_future().share();
    std::once_flag releasedOnce_;
};

}  // namespace ycontacts::testing

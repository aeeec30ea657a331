#pragma once
// Loopback servers for the HTTP client's tests: an httplib server that records requests, and raw sockets
// that misbehave on purpose (refuse, stay silent, cut a reply short).

#include <httplib.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <map>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ycontacts::testing {

// What a handler of LocalHTTPServer saw, copied out of httplib's request.
struct SeenRequest {
    std::string method;
    std::string target;  // path and query exactly as sent on the request line
    std::string path;
    std::string body;
    httplib::Headers headers;
    // Parts of a multipart/form-data body by name (httplib leaves `body` empty for those).
    std::map<std::string, std::string> multipartFields;
    int remotePort = -1;

    std::string header(const std::string& name) const;
};

// An httplib server on 127.0.0.1 and an ephemeral port, listening on its own thread until destroyed.
// Handlers registered under "/hold..." park until `releaseHeld()` (or the destructor) lets them go.
class LocalHTTPServer {
public:
    using Setup = std::function<void(httplib::Server&, LocalHTTPServer&)>;

    explicit LocalHTTPServer(const Setup& setup);
    ~LocalHTTPServer();
    LocalHTTPServer(const LocalHTTPServer&) = delete;
    LocalHTTPServer& operator=(const LocalHTTPServer&) = delete;

    std::string url(const std::string& pathAndQuery) const;
    int port() const { return port_; }

    // Stores what `request` carried; handlers call it first.
    void record(const httplib::Request& request);
    std::vector<SeenRequest> seen() const;
    // Waits (up to `timeout`) until at least `count` requests were recorded.
    bool waitForRequests(std::size_t count, std::chrono::milliseconds timeout) const;

    // For handlers: blocks until the test releases held requests (bounded, so a failing test cannot hang).
    void holdUntilReleased();
    void releaseHeld();

private:
    httplib::Server server_;
    int port_ = -1;
    std::thread thread_;
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<SeenRequest> seen_;
    bool released_ = false;
};

// A port on 127.0.0.1 that was bound and closed again: connecting to it is refused.
int closedLoopbackPort();

// A listening socket that never accepts: the kernel completes the connection, and nothing ever answers.
class SilentListener {
public:
    SilentListener();
    ~SilentListener();
    SilentListener(const SilentListener&) = delete;
    SilentListener& operator=(const SilentListener&) = delete;
    int port() const { return port_; }

private:
    int fd_ = -1;
    int port_ = -1;
};

// Accepts one connection, reads the request head, writes `reply` verbatim and closes the connection.
class ScriptedReplyServer {
public:
    explicit ScriptedReplyServer(std::string reply);
    ~ScriptedReplyServer();
    ScriptedReplyServer(const ScriptedReplyServer&) = delete;
    ScriptedReplyServer& operator=(const ScriptedReplyServer&) = delete;
    int port() const { return port_; }

private:
    int fd_ = -1;
    int port_ = -1;
    std::thread thread_;
};

}  // namespace ycontacts::testing

#pragma once
// SampleHttpServer: httplib::Server with its own connection loop, so that the sample server knows its open
// sockets: it can close them all when stopping and drop the one a handler is serving.

#include <httplib.h>

#include <mutex>
#include <set>

namespace sample_server {

class SampleHttpServer : public httplib::Server {
public:
    SampleHttpServer();

    // Shuts down every open connection, and every connection accepted from now on.
    void shutdownConnections();

    // Shuts down the connection whose request the calling handler is serving: the client receives nothing
    // more. Only meaningful inside a route handler.
    static void dropCurrentConnection();

private:
    bool process_and_close_socket(socket_t sock) override;
    // Registers an accepted socket; false once the server is shutting its connections down.
    bool track(socket_t sock);
    void untrack(socket_t sock);

    std::mutex mutex_;
    std::set<socket_t> open_;
    bool closing_ = false;
};

}  // namespace sample_server

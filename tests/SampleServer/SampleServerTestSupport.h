#pragma once
// Helpers for the sample server's tests: a raw socket client that shows exactly what came over the wire,
// and small JSON request helpers over httplib::Client.

#include <httplib.h>

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "sample_server/SampleContactsServer.h"

namespace sample_server_test {

struct RawReply {
    // Everything received until the server closed the connection.
    std::string bytes;
    std::string head;
    std::string body;
    std::optional<std::size_t> contentLength;
    int status = 0;
};

// Sends one GET with "Connection: close" and reads until the server closes (10 s receive time-out).
RawReply rawGet(int port, const std::string& target, const std::string& authorization);

// A raw client connection kept open across requests (5 s receive time-out), to watch one connection.
class RawConnection {
public:
    explicit RawConnection(int port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    // Sends GET requests, back to back in one write, without asking the server to close.
    bool sendGets(const std::vector<std::string>& targets, const std::string& authorization);
    // Reads one reply, head and Content-Length body; status 0 when the connection ended first.
    RawReply readReply();
    // True when the server closed the connection (end of stream) with nothing more to read.
    bool closedByServer();

private:
    bool fill();

    int fd_ = -1;
    std::string pending_;
};

struct JsonReply {
    int status = 0;
    nlohmann::json body;
};

// A GET through httplib::Client; the body is parsed when it is JSON (discarded value otherwise).
JsonReply getJson(const sample_server::SampleContactsServer& server, const std::string& path,
                  const httplib::Params& params, const std::string& authorization);

// Small data: u1 and u2 share organisation o1, u3 has none.
sample_server::SampleServerOptions smallOptions(std::uint64_t seed = 7);

}  // namespace sample_server_test

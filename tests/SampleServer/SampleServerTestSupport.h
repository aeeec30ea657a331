#pragma once
// Helpers for the sample server's tests: a raw socket client that shows exactly what came over the wire,
// and small JSON request helpers over httplib::Client.

#include <httplib.h>

#include <optional>
#include <string>

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

#include "ycontacts_cli/CommandSupport.h"

#include <cstdio>

namespace ycontacts_cli {

int problem(const std::string& message, int status) {
    std::fprintf(stderr, "ycontacts: %s\n", message.c_str());
    std::fflush(stderr);
    return status;
}

std::optional<ycontacts::RequestType> requestTypeNamed(const std::string& name) {
    if (name == "local") return ycontacts::RequestType::local;
    if (name == "server") return ycontacts::RequestType::server;
    if (name == "both") return ycontacts::RequestType::both;
    if (name == "prefer-local") return ycontacts::RequestType::preferLocal;
    return std::nullopt;
}

ServerSetting serverSetting(const ServerOptions& options) {
    if (options.server.empty()) return {std::nullopt, "this needs the contacts server: give --server URL"};
    if (options.token.empty()) return {std::nullopt, "this needs the user's token for the server: give --token VALUE"};
    auto parsed = ServerAddress::parse(options.server);
    if (!parsed.address) return {std::nullopt, "bad server URL '" + options.server + "': " + parsed.problem};
    return {parsed.address, {}};
}

}  // namespace ycontacts_cli

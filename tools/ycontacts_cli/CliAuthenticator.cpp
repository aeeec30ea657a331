#include "ycontacts_cli/CliAuthenticator.h"

#include <utility>

namespace ycontacts_cli {

CliAuthenticator::CliAuthenticator(std::optional<ServerAddress> server, bool viaProxy,
                                   std::map<std::string, std::string> tokens)
    : server_(std::move(server)), viaProxy_(viaProxy), tokens_(std::move(tokens)) {}

void CliAuthenticator::getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) {
    if (!callback) return;
    const auto found = tokens_.find(yuid);
    if (found == tokens_.end()) {
        callback(std::nullopt, "no token for user " + yuid);
        return;
    }
    callback(found->second, std::nullopt);
}

std::optional<ycontacts::YContactsHost> CliAuthenticator::getContactsHost(const std::string&) {
    if (!server_) return std::nullopt;
    return viaProxy_ ? ycontacts::YContactsHost::proxy(server_->base()) : ycontacts::YContactsHost::idc(server_->base());
}

}  // namespace ycontacts_cli

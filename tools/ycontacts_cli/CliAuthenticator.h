#pragma once
// CliAuthenticator: the tool's answer to the library's questions about a user's token and server.

#include <map>
#include <optional>
#include <string>

#include <ycontacts/YContacts.h>

#include "ycontacts_cli/ServerAddress.h"

namespace ycontacts_cli {

// Hands out the tokens it was given, verbatim, and one server for every user: addressed directly, or through a
// proxy. A user without a token, or a tool run without a server, gets no value, so server calls fail at once.
class CliAuthenticator : public ycontacts::YContactsAuthenticationContract {
public:
    CliAuthenticator(std::optional<ServerAddress> server, bool viaProxy, std::map<std::string, std::string> tokens);

    void getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) override;
    std::optional<ycontacts::YContactsHost> getContactsHost(const std::string& yuid) override;

private:
    const std::optional<ServerAddress> server_;
    const bool viaProxy_;
    const std::map<std::string, std::string> tokens_;
};

}  // namespace ycontacts_cli

#pragma once
// CommandSupport: the checks and messages that several subcommands share.

#include <optional>
#include <string>

#include <ycontacts/YContacts.h>

#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/ServerAddress.h"

namespace ycontacts_cli {

// Writes "ycontacts: <message>" as one line on stderr and returns `status`.
int problem(const std::string& message, int status);

// "local", "server", "both" or "prefer-local".
std::optional<ycontacts::RequestType> requestTypeNamed(const std::string& name);

// Checks that a server and a token were given and that the URL is usable; the problem otherwise.
struct ServerSetting {
    std::optional<ServerAddress> address;
    std::string problem;
};
ServerSetting serverSetting(const ServerOptions& options);

}  // namespace ycontacts_cli

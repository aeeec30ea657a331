#pragma once
// ServerCheck: asks the contacts server for one contact, to tell a person why the library's calls failed.

#include <chrono>
#include <optional>
#include <string>

#include "ycontacts_cli/ServerAddress.h"

namespace ycontacts_cli {

// The library reports a failed download as an error case without the HTTP status or the transport error
// behind it. This check repeats the simplest list request with the same token, so that the tool can say
// whether nothing answers, the token was refused, or the server speaks something else. With a yoid the
// organisation's list is asked for as well.
struct ServerCheck {
    enum class Outcome { ok, unreachable, refusedToken, denied, notContactsServer, unexpected };

    Outcome outcome = Outcome::unexpected;
    int httpStatus = 0;
    // One sentence for a person, without a trailing period.
    std::string message;

    static ServerCheck run(const ServerAddress& server, bool viaProxy, const std::string& yuid,
                           const std::optional<std::string>& yoid, const std::string& token,
                           std::chrono::seconds timeout);
};

}  // namespace ycontacts_cli

#pragma once
// SampleServerOptions: what the sample server generates and where it listens.

#include <cstdint>
#include <map>
#include <string>

namespace sample_server {

struct SampleServerOptions {
    std::uint64_t seed = 1;
    int users = 2;
    int personalContactsPerUser = 120;
    int orgContactsPerOrg = 80;
    // Users u1, u2, ... are grouped into organisations of this size, in order.
    int usersPerOrg = 2;
    // The last users of the list belong to no organisation (they have no yoid).
    int usersWithoutOrg = 0;
    // Authorization values by yuid; a user without an entry gets "token-<yuid>".
    std::map<std::string, std::string> tokens{};
    // 0 asks for an ephemeral port.
    int port = 0;
};

}  // namespace sample_server

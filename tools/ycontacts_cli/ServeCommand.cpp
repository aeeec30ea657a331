// `ycontacts serve`: the sample contacts server alone, until SIGINT or SIGTERM.

#include <cstdio>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts_cli/CommandSupport.h"
#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/Interrupt.h"

namespace ycontacts_cli {

int runServe(const ServeOptions& options) {
    sample_server::SampleServerOptions serverOptions;
    serverOptions.port = options.port;
    serverOptions.personalContactsPerUser = options.contacts;
    serverOptions.orgContactsPerOrg = options.orgContacts;
    serverOptions.seed = options.seed;
    serverOptions.users = options.users;
    serverOptions.usersPerOrg = options.usersPerOrg;
    for (const std::string& token : options.tokens) {
        const auto equals = token.find('=');
        if (equals == std::string::npos)
            serverOptions.tokens["u1"] = token;
        else
            serverOptions.tokens[token.substr(0, equals)] = token.substr(equals + 1);
    }

    sample_server::SampleContactsServer server(serverOptions);
    if (server.start() < 0) return problem("cannot listen on 127.0.0.1:" + std::to_string(options.port), exitFailed);
    std::printf("listening on %s\n", server.baseURL().c_str());
    for (const std::string& yuid : server.userIds()) {
        std::printf("user %s token %s yoid %s\n", yuid.c_str(), server.userToken(yuid).c_str(),
                    server.yoidOf(yuid).value_or("-").c_str());
    }
    std::fflush(stdout);
    Interrupt::wait();
    server.stop();
    std::printf("stopped\n");
    return exitOk;
}

}  // namespace ycontacts_cli

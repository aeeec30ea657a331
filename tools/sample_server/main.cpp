// ycontacts-sample-server: runs the sample contacts server until SIGINT or SIGTERM.

#include <csignal>
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "sample_server/SampleContactsServer.h"

int main(int argc, char** argv) {
    sample_server::SampleServerOptions options;
    std::vector<std::string> tokens;
    CLI::App app{"Sample contacts server on 127.0.0.1 with generated, deterministic data"};
    app.add_option("--port", options.port, "port to listen on; 0 picks a free one")->check(CLI::Range(0, 65535));
    app.add_option("--contacts", options.personalContactsPerUser, "personal contacts per user")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--org-contacts", options.orgContactsPerOrg, "contacts per organisation")
        ->check(CLI::NonNegativeNumber);
    app.add_option("--seed", options.seed, "seed of the generated data");
    app.add_option("--users", options.users, "number of users (u1, u2, ...)")->check(CLI::NonNegativeNumber);
    app.add_option("--users-per-org", options.usersPerOrg, "users per organisation")->check(CLI::NonNegativeNumber);
    app.add_option("--token", tokens,
                   "authorization value: T for u1, or YUID=T for any user (repeatable); default token-<yuid>");
    CLI11_PARSE(app, argc, argv);

    for (const std::string& token : tokens) {
        const auto equals = token.find('=');
        if (equals == std::string::npos)
            options.tokens["u1"] = token;
        else
            options.tokens[token.substr(0, equals)] = token.substr(equals + 1);
    }

    // Block the stop signals before any server thread exists, so that only sigwait below receives them.
    sigset_t stopSignals;
    sigemptyset(&stopSignals);
    sigaddset(&stopSignals, SIGINT);
    sigaddset(&stopSignals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    sample_server::SampleContactsServer server(options);
    const int port = server.start();
    if (port < 0) {
        std::cerr << "cannot listen on 127.0.0.1:" << options.port << '\n';
        return 1;
    }
    std::cout << "listening on " << server.baseURL() << std::endl;
    for (const std::string& yuid : server.userIds()) {
        const auto yoid = server.yoidOf(yuid);
        std::cout << "user " << yuid << " token " << server.userToken(yuid) << " yoid " << yoid.value_or("-")
                  << std::endl;
    }

    int received = 0;
    sigwait(&stopSignals, &received);
    server.stop();
    std::cout << "stopped" << std::endl;
    return 0;
}

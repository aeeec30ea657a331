#pragma once
// Commands: the options of every subcommand of `ycontacts` and the functions that run them.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ycontacts_cli {

// Exit statuses: a run ended by SIGINT or SIGTERM exits with 128 + the signal.
enum ExitStatus : int {
    exitOk = 0,
    // The operation itself failed: server unreachable or refusing, sync failed, contact not found.
    exitFailed = 1,
    // The command line or the data directory is not usable as given.
    exitBadInput = 2,
};

// Where the contacts of a user are kept, and how to print.
struct LocalOptions {
    std::string user;
    std::string dataDir;
    bool json = false;
    bool verbose = false;
};

// How to reach the contacts server for a user.
struct ServerOptions {
    std::string server;
    std::string token;
    bool proxy = false;
    std::optional<std::string> org;
    // How long to wait for the server: per query, or without any sync notification.
    double timeoutSeconds = 60;
};

struct SyncOptions {
    LocalOptions local;
    ServerOptions server;
    bool reset = false;
};

// search, suggest and list.
struct QueryOptions {
    LocalOptions local;
    ServerOptions server;
    std::optional<std::string> query;
    // local, server, both or prefer-local.
    std::string source = "prefer-local";
    int limit = 20;
    // all, personal or org.
    std::string scope = "all";
};

struct ShowOptions {
    LocalOptions local;
    std::optional<std::string> id;
    std::optional<std::string> email;
    std::optional<std::string> contactYuid;
};

struct PhotoOptions {
    LocalOptions local;
    ServerOptions server;
    std::optional<std::string> id;
    std::optional<std::string> email;
    std::optional<std::string> contactYuid;
    // The normal size instead of the thumbnail.
    bool normal = false;
    // Ask the server even when the cached copy is fresh.
    bool refresh = false;
    std::string out;
};

struct ServeOptions {
    int port = 0;
    int contacts = 120;
    int orgContacts = 80;
    std::uint64_t seed = 1;
    int users = 2;
    int usersPerOrg = 2;
    // T for u1, or YUID=T.
    std::vector<std::string> tokens;
};

struct DemoOptions {
    std::optional<std::string> dataDir;
    int contacts = 20000;
    int orgContacts = 10000;
    std::uint64_t seed = 1;
    bool json = false;
    bool verbose = false;
};

int runSync(const SyncOptions& options);
int runSearch(const QueryOptions& options);
int runList(const QueryOptions& options);
int runSuggest(const QueryOptions& options);
int runShow(const ShowOptions& options);
int runPhoto(const PhotoOptions& options);
int runStatus(const LocalOptions& options);
int runRemove(const LocalOptions& options);
int runServe(const ServeOptions& options);
int runDemo(const DemoOptions& options);

}  // namespace ycontacts_cli

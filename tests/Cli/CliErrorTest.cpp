// Mistakes and failures a person can act on: each ends `ycontacts` with a non-zero status and one line on stderr
// that names the cause, without a hang and without faking success.

#include <gtest/gtest.h>

#include <functional>

#include "Cli/CliTestSupport.h"
#include "Support/StoreRefusal.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

namespace {

using namespace cli_test;
namespace fs = std::filesystem;
using Args = std::vector<std::string>;

class CliErrorTest : public CliServerTest {};

TEST_F(CliErrorTest, EachFailureEndsWithItsStatusAndOneLineNamingTheCause) {
    struct Case {
        const char* name;
        // Prepares the data folder (created empty) and gives the tool's arguments.
        std::function<Args(const fs::path& data)> prepare;
        int status;
        std::string message;            // empty: only the status is checked
        const char* outcome = nullptr;  // the JSON outcome of a sync that ran
    };
    const std::string address = server.baseURL();
    const auto sync = [](const Args& serverPart, const fs::path& data) {
        return Args{"sync", "--json"} + serverPart + userArgs(data);
    };
    const auto synced = [&](const fs::path& data) { return runCli(sync(serverArgs(server), data)).exitStatus == 0; };
    const auto missing = folder.path() / "missing";
    const std::vector<Case> cases{
        {"refused token",
         [&](auto data) {
             return sync({"--server", address, "--token", "token-u2-stolen"}, data);
         },
         1, "refused the token for user u1 (HTTP 401)", "failed"},
        // The server answers the check that follows, so the message says the sync failed although it answers.
        {"server error",
         [&](auto data) {
             server.injectFault({.pathContains = "/contacts", .status = 500});
             return sync(serverArgs(server), data);
         },
         1, "sync of u1 failed (unknownError) although the contacts server", "failed"},
        {"server stops answering",
         [&](auto data) {
             server.injectFault({.pathContains = "/contacts", .delay = std::chrono::minutes(5)});
             return sync(serverArgs(server) + Args{"--timeout", "1"}, data);
         },
         1, "no word from the download of u1", "stalled"},
        {"store refuses a contact",
         [&](auto data) {
             EXPECT_TRUE(ycontacts::YContactsDatabaseSchema::createTablesInFile(data / "contacts.sqlite"));
             EXPECT_TRUE(ycontacts::testsupport::refuseContact(data / "contacts.sqlite",
                                                               server.contacts("u1", false).at(7).contactId));
             return sync(serverArgs(server), data);
         },
         1,
         "could not be stored in " + (folder.path() / "store refuses a contact" / "contacts.sqlite").string() +
             " (SQLite save failed on YContactDetail",
         "failed"},
        {"bad server URL",
         [&](auto data) {
             return sync({"--server", "ftp://127.0.0.1", "--token", "t"}, data);
         },
         2, "bad server URL 'ftp://127.0.0.1'"},
        {"search without data",
         [&](auto) {
             return Args{"search", "a"} + userArgs(missing);
         },
         2, "the data directory " + missing.string() + " does not exist"},
        {"show without data",
         [&](auto) {
             return Args{"show", "--id", "1"} + userArgs(missing);
         },
         2, "does not exist"},
        {"status without data", [&](auto) { return Args{"status"} + userArgs(missing); }, 2, "does not exist"},
        {"remove without data", [&](auto) { return Args{"remove"} + userArgs(missing); }, 2, "does not exist"},
        {"status of a folder no sync has used", [&](auto data) { return Args{"status"} + userArgs(data); }, 2,
         "holds no contacts database"},
        {"server search without a server",
         [&](auto data) {
             EXPECT_TRUE(synced(data));
             return Args{"search", "a", "--source", "server"} + userArgs(data);
         },
         2, "give --server URL"},
        {"server search with a refused token",
         [&](auto data) {
             EXPECT_TRUE(synced(data));
             return Args{"search", "a", "--source", "both", "--server", address, "--token", "nope"} + userArgs(data);
         },
         1, "refused the token for user u1"},
        {"unknown command", [](auto) { return Args{"frobnicate"}; }, 2, ""},
        {"sync without a user",
         [](auto data) {
             return Args{"sync", "--data-dir", data.string()};
         },
         2, ""},
        {"unknown source",
         [](auto data) {
             return Args{"search", "a", "--source", "cloud"} + userArgs(data);
         },
         2, ""},
        // Last: the server is gone for good.
        {"unreachable server",
         [&](auto data) {
             server.stop();
             return sync({"--server", address, "--token", "token-u1"}, data);
         },
         1, "cannot reach the contacts server at " + address},
    };
    for (const auto& failure : cases) {
        SCOPED_TRACE(failure.name);
        const auto data = folder.path() / failure.name;
        fs::create_directories(data);
        server.clearFaults();
        const auto args = failure.prepare(data);
        server.clearRequestLog();
        const auto result = runCli(args);
        EXPECT_EQ(result.exitStatus, failure.status) << result.err;
        if (!failure.message.empty()) {
            EXPECT_TRUE(result.err.starts_with("ycontacts: ")) << result.err;
            EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
            EXPECT_NE(result.err.find(failure.message), std::string::npos) << result.err;
        }
        if (failure.outcome) {
            EXPECT_EQ(result.json()["outcome"], failure.outcome) << result.out;
        }
        // A mistake on the command line is caught before any request.
        if (failure.status == 2) {
            EXPECT_TRUE(server.requestLog().empty());
        }
    }
}

}  // namespace

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
    // A sync against `serverPart` after `before`; a command after a sync; one on a data folder that does not exist.
    const auto syncing = [&](const Args& serverPart, const std::function<void()>& before = nullptr) {
        return [=](const fs::path& data) {
            if (before) before();
            return sync(serverPart, data);
        };
    };
    const auto afterSync = [&](const Args& args) {
        return [=](const fs::path& data) {
            EXPECT_TRUE(synced(data));
            return args + userArgs(data);
        };
    };
    const auto withoutData = [&](const Args& args) {
        return [=](const fs::path&) { return args + userArgs(missing); };
    };
    const std::vector<Case> cases{
        {"refused token", syncing({"--server", address, "--token", "token-u2-stolen"}), 1,
         "refused the token for user u1 (HTTP 401)", "failed"},
        // The server answers the check that follows, so the message says the sync failed although it answers.
        {"server error",
         syncing(serverArgs(server), [&] { server.injectFault({.pathContains = "/contacts", .status = 500}); }), 1,
         "sync of u1 failed (unknownError) although the contacts server", "failed"},
        {"server stops answering",
         syncing(serverArgs(server) + Args{"--timeout", "1"},
                 [&] { server.injectFault({.pathContains = "/contacts", .delay = std::chrono::minutes(5)}); }),
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
        {"bad server URL", syncing({"--server", "ftp://127.0.0.1", "--token", "t"}), 2,
         "bad server URL 'ftp://127.0.0.1'"},
        {"search without data", withoutData({"search", "a"}), 2,
         "the data directory " + missing.string() + " does not exist"},
        {"show without data", withoutData({"show", "--id", "1"}), 2, "does not exist"},
        {"status without data", withoutData({"status"}), 2, "does not exist"},
        {"remove without data", withoutData({"remove"}), 2, "does not exist"},
        {"status of a folder no sync has used", [&](auto data) { return Args{"status"} + userArgs(data); }, 2,
         "holds no contacts database"},
        {"server search without a server", afterSync({"search", "a", "--source", "server"}), 2, "give --server URL"},
        {"server search with a refused token",
         afterSync({"search", "a", "--source", "both", "--server", address, "--token", "nope"}), 1,
         "refused the token for user u1"},
        {"unknown command", [](auto) { return Args{"frobnicate"}; }, 2, ""},
        {"sync without a user",
         [](auto data) {
             return Args{"sync", "--data-dir", data.string()};
         },
         2, ""},
        {"unknown source", withoutData({"search", "a", "--source", "cloud"}), 2, ""},
        // Last: the server is gone for good.
        {"unreachable server", syncing({"--server", address, "--token", "token-u1"}, [&] { server.stop(); }), 1,
         "cannot reach the contacts server at " + address},
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

// Mistakes and failures a person can act on: each ends `ycontacts` with one line on stderr and a non-zero
// status, without a hang.

#include <gtest/gtest.h>

#include <functional>

#include "Cli/CliTestSupport.h"
#include "Support/StoreRefusal.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

namespace {

using namespace cli_test;
using ycontacts::testsupport::refuseContact;

// One "ycontacts: ..." line that contains `text`, and nothing else on stderr.
void expectOneLine(const CliResult& result, const std::string& text) {
    const auto lines = result.errLines();
    ASSERT_EQ(lines.size(), 1u) << result.err;
    EXPECT_EQ(lines[0].rfind("ycontacts: ", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(text), std::string::npos) << lines[0];
}

class CliErrorTest : public CliServerTest {
protected:
    CliResult sync(const std::vector<std::string>& server) {
        return runCli(std::vector<std::string>{"sync", "--json"} + server + userArgs(folder.path()));
    }
};

// A sync that reaches no usable answer ends with status 1, the JSON outcome and one line that names the cause.
TEST_F(CliErrorTest, FailedSyncsNameTheirCauseWithoutFakingSuccess) {
    struct Case {
        const char* name;
        std::function<std::vector<std::string>()> prepare;
        const char* outcome;
        std::string message;
    };
    const std::string address = server.baseURL();
    const std::vector<Case> cases{
        {"refused token", [&] { return std::vector<std::string>{"--server", address, "--token", "token-u2-stolen"}; },
         "failed", "refused the token for user u1 (HTTP 401)"},
        // The server answers the check that follows, so the message says the sync failed although it answers.
        {"server error",
         [&] {
             server.injectFault(sample_server::Fault{.pathContains = "/contacts", .status = 500});
             return serverArgs(server);
         },
         "failed", "sync of u1 failed (unknownError) although the contacts server"},
        {"server stops answering",
         [&] {
             server.injectFault(sample_server::Fault{.pathContains = "/contacts", .delay = std::chrono::minutes(5)});
             return serverArgs(server) + std::vector<std::string>{"--timeout", "1"};
         },
         "stalled", "no word from the download of u1"},
        {"store refuses a contact",
         [&] {
             const auto database = folder.path() / "contacts.sqlite";
             EXPECT_TRUE(ycontacts::YContactsDatabaseSchema::createTablesInFile(database));
             EXPECT_TRUE(refuseContact(database, server.contacts("u1", false).at(7).contactId));
             return serverArgs(server);
         },
         "failed", "the contacts of u1 could not be stored in " + (folder.path() / "contacts.sqlite").string() +
                       " (SQLite save failed on YContactDetail"},
        {"unreachable server",
         [&] {
             server.stop();
             return std::vector<std::string>{"--server", address, "--token", "token-u1"};
         },
         nullptr, "cannot reach the contacts server at " + address},
    };
    for (const auto& failure : cases) {
        SCOPED_TRACE(failure.name);
        server.clearFaults();
        const auto result = sync(failure.prepare());
        EXPECT_FALSE(result.timedOut);
        EXPECT_EQ(result.exitStatus, 1);
        expectOneLine(result, failure.message);
        if (failure.outcome) {
            EXPECT_EQ(result.json()["outcome"], failure.outcome);
        }
    }
}

TEST_F(CliErrorTest, BadServerUrlsAreRejectedBeforeAnyRequest) {
    for (const std::string url : {"ftp://127.0.0.1", "127.0.0.1:80", "http://", "http://host:99999", "http://a b",
                                  "http://host/?q=1"}) {
        const auto result = sync({"--server", url, "--token", "t"});
        EXPECT_EQ(result.exitStatus, 2) << url;
        expectOneLine(result, "bad server URL '" + url + "'");
    }
    EXPECT_TRUE(server.requestLog().empty());
}

TEST_F(CliErrorTest, ReadingCommandsNeedASyncedDataDirectory) {
    const auto missing = folder.path() / "missing";
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"search", "a"}, {"show", "--id", "1"}, {"status"}, {"remove"}, {"list"}}) {
        const auto result = runCli(command + userArgs(missing));
        EXPECT_EQ(result.exitStatus, 2) << command[0];
        expectOneLine(result, "the data directory " + missing.string() + " does not exist");
    }
    // An existing folder that no sync has used yet.
    const auto empty = runCli(std::vector<std::string>{"status"} + userArgs(folder.path()));
    EXPECT_EQ(empty.exitStatus, 2);
    expectOneLine(empty, "holds no contacts database");
}

TEST_F(CliErrorTest, ServerQueriesNeedAServerThatAcceptsTheUser) {
    ASSERT_EQ(sync(serverArgs(server)).exitStatus, 0);
    const auto noServer = runCli(std::vector<std::string>{"search", "a", "--source", "server"} + userArgs(folder.path()));
    EXPECT_EQ(noServer.exitStatus, 2);
    expectOneLine(noServer, "give --server URL");

    const auto refused = runCli(std::vector<std::string>{"search", "a", "--source", "both", "--server",
                                                         server.baseURL(), "--token", "nope"} +
                                userArgs(folder.path()));
    EXPECT_EQ(refused.exitStatus, 1);
    expectOneLine(refused, "refused the token for user u1");
}

TEST_F(CliErrorTest, CommandLineMistakesExitWithStatusTwo) {
    EXPECT_EQ(runCli({}).exitStatus, 2);
    EXPECT_EQ(runCli({"frobnicate"}).exitStatus, 2);
    EXPECT_EQ(runCli({"sync", "--data-dir", folder.path().string()}).exitStatus, 2);
    EXPECT_EQ(runCli(std::vector<std::string>{"search", "a", "--source", "cloud"} + userArgs(folder.path())).exitStatus,
              2);
}

}  // namespace

// Mistakes and failures a person can act on: each ends `ycontacts` with one line on stderr and a non-zero
// status, without a hang.

#include <gtest/gtest.h>

#include "Cli/CliTestSupport.h"

namespace {

using namespace cli_test;

// One "ycontacts: ..." line that contains `text`, and nothing else on stderr.
void expectOneLine(const CliResult& result, const std::string& text) {
    const auto lines = result.errLines();
    ASSERT_EQ(lines.size(), 1u) << result.err;
    EXPECT_EQ(lines[0].rfind("ycontacts: ", 0), 0u) << lines[0];
    EXPECT_NE(lines[0].find(text), std::string::npos) << lines[0];
}

class CliErrorTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_GT(server.start(), 0); }

    CliResult sync(const std::vector<std::string>& server) {
        return runCli(std::vector<std::string>{"sync", "--json"} + server + userArgs(scratch.path()));
    }

    sample_server::SampleContactsServer server{smallServerOptions()};
    ScratchDirectory scratch;
};

TEST_F(CliErrorTest, RefusedTokenIsNamedAsSuch) {
    const auto result = sync({"--server", server.baseURL(), "--token", "token-u2-stolen"});
    EXPECT_EQ(result.exitStatus, 1);
    expectOneLine(result, "refused the token for user u1 (HTTP 401)");
    EXPECT_EQ(result.json()["outcome"], "failed");
}

TEST_F(CliErrorTest, UnreachableServerIsNamedAsSuch) {
    const std::string address = server.baseURL();
    server.stop();
    const auto result = sync({"--server", address, "--token", "token-u1"});
    EXPECT_EQ(result.exitStatus, 1);
    expectOneLine(result, "cannot reach the contacts server at " + address);
}

TEST_F(CliErrorTest, ServerThatStopsAnsweringEndsTheWaitAtTheTimeout) {
    sample_server::Fault stall;
    stall.pathContains = "/contacts";
    stall.delay = std::chrono::minutes(5);
    server.injectFault(stall);
    const auto result = sync(serverArgs(server) + std::vector<std::string>{"--timeout", "1"});
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.exitStatus, 1);
    expectOneLine(result, "no word from the download of u1");
    EXPECT_EQ(result.json()["outcome"], "stalled");
}

TEST_F(CliErrorTest, ServerErrorDuringSyncIsReportedWithoutFakingSuccess) {
    sample_server::Fault broken;
    broken.pathContains = "/contacts";
    broken.status = 500;
    server.injectFault(broken);
    const auto result = sync(serverArgs(server));
    EXPECT_EQ(result.exitStatus, 1);
    EXPECT_EQ(result.json()["outcome"], "failed");
    // The server answers the check that follows, so the message says the sync failed although it answers.
    expectOneLine(result, "sync of u1 failed (unknownError) although the contacts server");
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
    const auto missing = scratch.path() / "missing";
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"search", "a"}, {"show", "--id", "1"}, {"status"}, {"remove"}, {"list"}}) {
        const auto result = runCli(command + userArgs(missing));
        EXPECT_EQ(result.exitStatus, 2) << command[0];
        expectOneLine(result, "the data directory " + missing.string() + " does not exist");
    }
    // An existing folder that no sync has used yet.
    const auto empty = runCli(std::vector<std::string>{"status"} + userArgs(scratch.path()));
    EXPECT_EQ(empty.exitStatus, 2);
    expectOneLine(empty, "holds no contacts database");
}

TEST_F(CliErrorTest, ServerQueriesNeedAServerThatAcceptsTheUser) {
    ASSERT_EQ(sync(serverArgs(server)).exitStatus, 0);
    const auto noServer = runCli(std::vector<std::string>{"search", "a", "--source", "server"} + userArgs(scratch.path()));
    EXPECT_EQ(noServer.exitStatus, 2);
    expectOneLine(noServer, "give --server URL");

    const auto refused = runCli(std::vector<std::string>{"search", "a", "--source", "both", "--server",
                                                         server.baseURL(), "--token", "nope"} +
                                userArgs(scratch.path()));
    EXPECT_EQ(refused.exitStatus, 1);
    expectOneLine(refused, "refused the token for user u1");
}

TEST_F(CliErrorTest, CommandLineMistakesExitWithStatusTwo) {
    EXPECT_EQ(runCli({}).exitStatus, 2);
    EXPECT_EQ(runCli({"frobnicate"}).exitStatus, 2);
    EXPECT_EQ(runCli({"sync", "--data-dir", scratch.path().string()}).exitStatus, 2);
    EXPECT_EQ(runCli(std::vector<std::string>{"search", "a", "--source", "cloud"} + userArgs(scratch.path())).exitStatus,
              2);
}

}  // namespace

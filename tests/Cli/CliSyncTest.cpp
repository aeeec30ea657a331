// `ycontacts sync` against the sample server: initial download, incremental changes, remove and reset, and
// the other ways a user can be set up.

#include <gtest/gtest.h>

#include "Cli/CliTestSupport.h"

namespace {

using namespace cli_test;
using Args = std::vector<std::string>;
using nlohmann::json;

class CliSyncTest : public CliServerTest {
protected:
    CliResult run(const Args& args, const std::string& yuid = "u1") { return runCli(args + userArgs(folder.path(), yuid)); }
    CliResult sync(const Args& extra = {}) { return run(Args{"sync", "--json"} + serverArgs(server) + extra); }
    json stored(const std::string& yuid = "u1") {
        const auto yoid = server.yoidOf(yuid);
        return {{"personal", server.contacts(yuid, false).size()}, {"org", yoid ? server.contacts(*yoid, true).size() : 0}};
    }
};

TEST_F(CliSyncTest, ASecondSyncBringsExactlyTheServerSideChangesAndARemoveEmptiesTheUser) {
    auto result = sync();
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    auto report = result.json();
    EXPECT_EQ(report["outcome"], "completed");
    EXPECT_EQ(report["initial"], true);
    EXPECT_EQ(report["added"], stored());
    EXPECT_EQ(report["stored"], stored());
    EXPECT_GT(report["lastUpdatedTime"].get<double>(), 0.0);
    EXPECT_TRUE(std::filesystem::is_regular_file(folder.path() / "contacts.sqlite"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "photos"));
    EXPECT_TRUE(result.err.empty()) << result.err;

    sample_server::SampleContact added;
    added.firstName = "Zelda";
    added.emails.push_back({"zelda.added@example.com", true});
    const auto addedId = server.addContact("u1", false, added);
    ASSERT_TRUE(addedId);
    auto renamed = server.contacts("u1", false).at(5);
    renamed.nickName = "Renamed";
    ASSERT_TRUE(server.updateContact("u1", false, renamed));
    const auto deletedId = server.contacts("u1", false).at(7).contactId;
    ASSERT_TRUE(server.deleteContact("u1", false, deletedId));
    ASSERT_TRUE(server.deleteContact("u1", false, server.contacts("u1", false).at(8).contactId));
    ASSERT_TRUE(server.deleteContact("o1", true, server.contacts("o1", true).at(9).contactId));
    result = sync();
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    report = result.json();
    EXPECT_EQ(report["initial"], false);
    EXPECT_EQ(report["added"], (json{{"personal", 1}, {"org", 0}}));
    EXPECT_EQ(report["updated"], (json{{"personal", 1}, {"org", 0}}));
    EXPECT_EQ(report["deleted"], (json{{"personal", 2}, {"org", 1}}));
    EXPECT_EQ(report["stored"], stored());
    EXPECT_EQ(run({"show", "--json", "--id", *addedId}).json()["firstName"], "Zelda");
    EXPECT_EQ(run({"show", "--json", "--id", renamed.contactId}).json()["nickName"], "Renamed");
    const auto shownDeleted = run({"show", "--id", deletedId});
    EXPECT_EQ(shownDeleted.exitStatus, 1);
    EXPECT_NE(shownDeleted.err.find("no contact with id " + deletedId), std::string::npos) << shownDeleted.err;

    const auto removed = run({"remove", "--json"});
    ASSERT_EQ(removed.exitStatus, 0) << removed.err;
    EXPECT_EQ(removed.json()["removed"]["personal"], stored()["personal"]);
    EXPECT_EQ(removed.json()["remaining"], (json{{"personal", 0}, {"org", 0}}));
    const auto status = run({"status", "--json"});
    EXPECT_EQ(status.json()["personal"], 0);
    EXPECT_TRUE(status.json()["lastUpdatedTime"].is_null()) << status.out;
    result = sync({"--reset"});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["initial"], true);
    EXPECT_EQ(result.json()["stored"], stored());
}

TEST_F(CliSyncTest, UsersWithoutAnOrganisationOrBehindTheProxyGetEverythingAndPeopleSeeProgress) {
    auto result = run(Args{"sync", "--json"} + serverArgs(server, "u3"), "u3");
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["stored"], stored("u3"));

    result = run(Args{"sync", "--json", "--proxy"} + serverArgs(server, "u2"), "u2");
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["stored"], stored("u2"));
    bool proxyAsked = false;
    for (const auto& request : server.requestLog()) proxyAsked |= request.path == "/yct/getContactsList";
    EXPECT_TRUE(proxyAsked);

    // Without --json: the progress goes to stderr, the outcome to stdout.
    result = run(Args{"sync"} + serverArgs(server));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_NE(result.out.find("Initial download of u1 complete: 150 personal and 80 organisation contacts stored"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.err.find("230 contacts"), std::string::npos) << result.err;
}

}  // namespace

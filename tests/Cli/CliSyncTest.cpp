// `ycontacts sync` against the sample server: initial download, incremental changes, reset, and the files it keeps.

#include <gtest/gtest.h>

#include "Cli/CliTestSupport.h"

namespace {

using namespace cli_test;

class CliSyncTest : public CliServerTest {
protected:
    CliResult sync(const std::vector<std::string>& extra = {}) {
        return runCli(std::vector<std::string>{"sync", "--json"} + serverArgs(server) + userArgs(folder.path()) + extra);
    }

    std::int64_t serverCount(bool isOrg) {
        return static_cast<std::int64_t>(server.contacts(isOrg ? "o1" : "u1", isOrg).size());
    }
};

TEST_F(CliSyncTest, InitialSyncStoresBothPopulationsAndReportsCompletion) {
    const auto result = sync();
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    const auto report = result.json();
    ASSERT_TRUE(report.is_object()) << result.out;
    EXPECT_EQ(report["outcome"], "completed");
    EXPECT_EQ(report["initial"], true);
    EXPECT_EQ(report["added"]["personal"], serverCount(false));
    EXPECT_EQ(report["added"]["org"], serverCount(true));
    EXPECT_EQ(report["stored"]["personal"], serverCount(false));
    EXPECT_EQ(report["stored"]["org"], serverCount(true));
    EXPECT_GT(report["lastUpdatedTime"].get<double>(), 0.0);
    // The data directory's layout is what the tool documents.
    EXPECT_TRUE(std::filesystem::is_regular_file(folder.path() / "contacts.sqlite"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "photos"));
    EXPECT_TRUE(result.err.empty()) << result.err;
}

TEST_F(CliSyncTest, HumanOutputShowsProgressOnStderrAndTheOutcomeOnStdout) {
    const auto result = runCli(std::vector<std::string>{"sync"} + serverArgs(server) + userArgs(folder.path()));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_NE(result.out.find("Initial download of u1 complete: 150 personal and 80 organisation contacts stored"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.err.find("230 contacts"), std::string::npos) << result.err;
}

TEST_F(CliSyncTest, SecondSyncBringsExactlyTheServerSideChanges) {
    ASSERT_EQ(sync().exitStatus, 0);

    sample_server::SampleContact added;
    added.firstName = "Zelda";
    added.lastName = "Added";
    added.emails.push_back({"zelda.added@example.com", true});
    const auto addedId = server.addContact("u1", false, added);
    ASSERT_TRUE(addedId);
    auto renamed = server.contacts("u1", false).at(5);
    renamed.nickName = "Renamed";
    ASSERT_TRUE(server.updateContact("u1", false, renamed));
    const auto deletedId = server.contacts("u1", false).at(7).contactId;
    ASSERT_TRUE(server.deleteContact("u1", false, deletedId));
    ASSERT_TRUE(server.deleteContact("u1", false, server.contacts("u1", false).at(8).contactId));
    const auto orgDeleted = server.contacts("o1", true).at(9).contactId;
    ASSERT_TRUE(server.deleteContact("o1", true, orgDeleted));

    const auto result = sync();
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    const auto report = result.json();
    EXPECT_EQ(report["initial"], false);
    EXPECT_EQ(report["added"], (nlohmann::json{{"personal", 1}, {"org", 0}}));
    EXPECT_EQ(report["updated"], (nlohmann::json{{"personal", 1}, {"org", 0}}));
    EXPECT_EQ(report["deleted"], (nlohmann::json{{"personal", 2}, {"org", 1}}));
    EXPECT_EQ(report["stored"]["personal"], serverCount(false));
    EXPECT_EQ(report["stored"]["org"], serverCount(true));

    const auto shownAdded = runCli(std::vector<std::string>{"show", "--json", "--id", *addedId} + userArgs(folder.path()));
    ASSERT_EQ(shownAdded.exitStatus, 0) << shownAdded.err;
    EXPECT_EQ(shownAdded.json()["firstName"], "Zelda");
    const auto shownRenamed =
        runCli(std::vector<std::string>{"show", "--json", "--id", renamed.contactId} + userArgs(folder.path()));
    ASSERT_EQ(shownRenamed.exitStatus, 0) << shownRenamed.err;
    EXPECT_EQ(shownRenamed.json()["nickName"], "Renamed");
    const auto shownDeleted = runCli(std::vector<std::string>{"show", "--id", deletedId} + userArgs(folder.path()));
    EXPECT_EQ(shownDeleted.exitStatus, 1);
    EXPECT_NE(shownDeleted.err.find("no contact with id " + deletedId), std::string::npos) << shownDeleted.err;
}

TEST_F(CliSyncTest, ResetDownloadsAfreshAfterRemove) {
    ASSERT_EQ(sync().exitStatus, 0);
    const auto removed = runCli(std::vector<std::string>{"remove", "--json"} + userArgs(folder.path()));
    ASSERT_EQ(removed.exitStatus, 0) << removed.err;
    EXPECT_EQ(removed.json()["removed"]["personal"], serverCount(false));
    EXPECT_EQ(removed.json()["remaining"], (nlohmann::json{{"personal", 0}, {"org", 0}}));
    const auto status = runCli(std::vector<std::string>{"status", "--json"} + userArgs(folder.path()));
    EXPECT_EQ(status.json()["personal"], 0);
    EXPECT_TRUE(status.json()["lastUpdatedTime"].is_null()) << status.out;

    const auto result = sync({"--reset"});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["initial"], true);
    EXPECT_EQ(result.json()["stored"]["personal"], serverCount(false));
    EXPECT_EQ(result.json()["stored"]["org"], serverCount(true));
}

TEST_F(CliSyncTest, UserWithoutOrganisationCompletesWithPersonalContactsOnly) {
    const auto result = runCli(std::vector<std::string>{"sync", "--json"} + serverArgs(server, "u3") +
                               userArgs(folder.path(), "u3"));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["stored"],
              (nlohmann::json{{"personal", server.contacts("u3", false).size()}, {"org", 0}}));
}

TEST_F(CliSyncTest, ProxyHostDownloadsTheSameContacts) {
    const auto result = sync({"--proxy"});
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["stored"]["personal"], serverCount(false));
    EXPECT_EQ(result.json()["stored"]["org"], serverCount(true));
    bool proxyAsked = false;
    for (const auto& request : server.requestLog()) proxyAsked |= request.path == "/yct/getContactsList";
    EXPECT_TRUE(proxyAsked);
}

}  // namespace

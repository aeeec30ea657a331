// `ycontacts sync` against the sample server, and the commands that read what it stored: search, list, suggest,
// show, status and remove.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "Cli/CliTestSupport.h"

namespace {

using namespace cli_test;
using Args = std::vector<std::string>;
using nlohmann::json;

class CliSyncTest : public CliServerTest {
protected:
    CliResult run(const Args& args, const std::string& yuid = "u1") {
        return runCli(args + userArgs(folder.path(), yuid));
    }
    CliResult sync(const Args& extra = {}) { return run(Args{"sync", "--json"} + serverArgs(server) + extra); }
    json stored(const std::string& yuid = "u1") {
        const auto yoid = server.yoidOf(yuid);
        return {{"personal", server.contacts(yuid, false).size()},
                {"org", yoid ? server.contacts(*yoid, true).size() : 0}};
    }
    // Whether a JSON answer holds the contact.
    static bool holds(const json& contacts, const std::string& contactId) {
        return std::any_of(contacts.begin(), contacts.end(),
                           [&](const json& c) { return c["contactId"] == contactId; });
    }
};

TEST_F(CliSyncTest, TheCommandsReadWhatTheInitialSyncStored) {
    const auto result = sync();
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    const auto report = result.json();
    EXPECT_EQ(report["outcome"], "completed");
    EXPECT_EQ(report["initial"], true);
    EXPECT_EQ(report["added"], stored());
    EXPECT_EQ(report["stored"], stored());
    EXPECT_GT(report["lastUpdatedTime"].get<double>(), 0.0);
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "photos"));
    EXPECT_TRUE(result.err.empty()) << result.err;

    // A personal contact with an ASCII first name, to type towards.
    const auto personal = server.contacts("u1", false);
    const auto contact = *std::find_if(personal.begin(), personal.end(), [](const auto& each) {
        return each.contactType == "user" && each.yuid && each.firstName.size() >= 3 &&
               std::all_of(each.firstName.begin(), each.firstName.end(),
                           [](unsigned char c) { return std::isalpha(c); });
    });
    const std::string typed = contact.firstName.substr(0, 3);
    EXPECT_TRUE(
        holds(run({"search", typed, "--source", "local", "--limit", "1000", "--json"}).json(), contact.contactId));
    const auto human = run({"search", contact.firstName, "--limit", "1000"}).out;
    EXPECT_NE(human.find("from the local store"), std::string::npos) << human;
    EXPECT_NE(human.find(contact.contactId), std::string::npos) << human;
    server.clearRequestLog();
    const auto fromServer =
        run(Args{"search", typed, "--source", "server", "--json", "--limit", "1000"} + serverArgs(server));
    EXPECT_TRUE(holds(fromServer.json(), contact.contactId)) << fromServer.out << fromServer.err;
    const auto requests = server.requestLog();
    EXPECT_TRUE(std::any_of(requests.begin(), requests.end(), [&](const auto& r) { return r.param("q") == typed; }));
    const auto both = run(Args{"search", typed, "--source", "both", "--json"} + serverArgs(server)).json();
    EXPECT_TRUE(holds(both["local"], contact.contactId)) << both;
    EXPECT_TRUE(holds(both["server"], contact.contactId)) << both;

    EXPECT_EQ(run({"list", "--limit", "7", "--json"}).json().size(), 7u);
    const auto org = run({"list", "--scope", "org", "--limit", "1000", "--json"}).json();
    EXPECT_EQ(org.size(), server.contacts("o1", true).size());
    for (const auto& each : org) EXPECT_EQ(each["isOrg"], true);
    const std::string address = contact.emails.front().address;
    const auto suggested = run({"suggest", address.substr(0, address.find('@')), "--json"}).json();
    EXPECT_TRUE(std::any_of(suggested.begin(), suggested.end(), [&](const json& s) { return s["email"] == address; }))
        << suggested;

    for (const auto& key :
         std::vector<Args>{{"--id", contact.contactId}, {"--email", address}, {"--contact-yuid", *contact.yuid}}) {
        SCOPED_TRACE(key[0]);
        const auto shown = run(Args{"show", "--json"} + key);
        ASSERT_EQ(shown.exitStatus, 0) << shown.err;
        EXPECT_EQ(shown.json()["contactId"], contact.contactId);
        EXPECT_EQ(shown.json()["firstName"], contact.firstName);
    }
    EXPECT_NE(run({"show", "--id", contact.contactId}).out.find(address), std::string::npos);
    EXPECT_EQ(run({"show"}).exitStatus, 2);
    EXPECT_EQ(run({"show", "--id", "1", "--email", "a@b.c"}).exitStatus, 2);

    const auto status = run({"status", "--json"}).json();
    EXPECT_EQ((json{{"personal", status["personal"]}, {"org", status["org"]}}), stored());
    EXPECT_GT(status["lastUpdatedTime"].get<double>(), 0.0);
    EXPECT_GT(status["databaseBytes"].get<std::int64_t>(), 0);

    const auto removed = run({"remove", "--json"});
    ASSERT_EQ(removed.exitStatus, 0) << removed.err;
    EXPECT_EQ(removed.json()["removed"]["personal"], stored()["personal"]);
    EXPECT_EQ(removed.json()["remaining"], (json{{"personal", 0}, {"org", 0}}));
    EXPECT_TRUE(run({"status", "--json"}).json()["lastUpdatedTime"].is_null());
    const auto reset = sync({"--reset"});
    ASSERT_EQ(reset.exitStatus, 0) << reset.err;
    EXPECT_EQ(reset.json()["initial"], true);
    EXPECT_EQ(reset.json()["stored"], stored());
}

TEST_F(CliSyncTest, ASecondSyncBringsExactlyTheServerSideChanges) {
    ASSERT_EQ(sync().exitStatus, 0);
    sample_server::SampleContact added;
    added.firstName = "Zelda";
    const auto addedId = server.addContact("u1", false, added);
    ASSERT_TRUE(addedId);
    auto renamed = server.contacts("u1", false).at(5);
    renamed.nickName = "Renamed";
    ASSERT_TRUE(server.updateContact("u1", false, renamed));
    const auto deletedId = server.contacts("u1", false).at(7).contactId;
    ASSERT_TRUE(server.deleteContact("u1", false, deletedId));
    ASSERT_TRUE(server.deleteContact("u1", false, server.contacts("u1", false).at(8).contactId));
    ASSERT_TRUE(server.deleteContact("o1", true, server.contacts("o1", true).at(9).contactId));

    const auto result = sync();
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    const auto report = result.json();
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
}

TEST_F(CliSyncTest, UsersWithoutAnOrganisationOrBehindTheProxyGetEverythingAndPeopleSeeProgress) {
    auto result = run(Args{"sync", "--json"} + serverArgs(server, "u3"), "u3");
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["stored"], stored("u3"));
    result = run(Args{"sync", "--json", "--proxy"} + serverArgs(server, "u2"), "u2");
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_EQ(result.json()["stored"], stored("u2"));
    const auto requests = server.requestLog();
    EXPECT_TRUE(
        std::any_of(requests.begin(), requests.end(), [](const auto& r) { return r.path == "/yct/getContactsList"; }));

    // Without --json: the progress goes to stderr, the outcome to stdout.
    result = run(Args{"sync"} + serverArgs(server));
    ASSERT_EQ(result.exitStatus, 0) << result.err;
    EXPECT_NE(result.out.find("Initial download of u1 complete: 150 personal and 80 organisation contacts stored"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.err.find("230 contacts"), std::string::npos) << result.err;
}

}  // namespace

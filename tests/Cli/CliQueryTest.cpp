// Queries of a synced data directory through `ycontacts`: search, list, suggest, show and status, from the
// local store and from the server.

#include <algorithm>
#include <cctype>
#include <memory>

#include <gtest/gtest.h>

#include "Cli/CliTestSupport.h"

namespace {

using namespace cli_test;

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

bool startsWith(const nlohmann::json& value, const std::string& prefix) {
    return value.is_string() && lowered(value.get<std::string>()).rfind(lowered(prefix), 0) == 0;
}

// Whether a contact in its JSON coding matches a typed prefix the way the store matches.
bool matches(const nlohmann::json& contact, const std::string& prefix) {
    if (startsWith(contact["firstName"], prefix) || startsWith(contact.value("lastName", nlohmann::json()), prefix) ||
        startsWith(contact.value("nickName", nlohmann::json()), prefix))
        return true;
    for (const auto& email : contact["emails"])
        if (startsWith(email["emailId"], prefix)) return true;
    return false;
}

class CliQueryTest : public ::testing::Test {
protected:
    // One server and one download serve every query of the suite.
    static void SetUpTestSuite() {
        server = std::make_unique<sample_server::SampleContactsServer>(cliServerOptions);
        ASSERT_GT(server->start(), 0);
        scratch = std::make_unique<ycontacts::testsupport::TemporaryDirectory>();
        const auto synced = runCli(std::vector<std::string>{"sync"} + serverArgs(*server) + userArgs(scratch->path()));
        ASSERT_EQ(synced.exitStatus, 0) << synced.err;
    }
    static void TearDownTestSuite() {
        scratch.reset();
        server.reset();
    }

    static CliResult query(const std::vector<std::string>& args) { return runCli(args + userArgs(scratch->path())); }

    // A personal contact of the user with an ASCII first name, to type towards.
    static sample_server::SampleContact target() {
        for (const auto& contact : server->contacts("u1", false)) {
            const auto& name = contact.firstName;
            if (contact.contactType == "user" && contact.yuid && name.size() >= 3 &&
                std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalpha(c); }))
                return contact;
        }
        return server->contacts("u1", false).front();
    }

    static inline std::unique_ptr<sample_server::SampleContactsServer> server;
    static inline std::unique_ptr<ycontacts::testsupport::TemporaryDirectory> scratch;
};

TEST_F(CliQueryTest, SearchListAndSuggestAnswerFromTheStoreOrTheServer) {
    const auto contact = target();
    const std::string typed = contact.firstName.substr(0, 2);
    const auto local = query({"search", typed, "--source", "local", "--limit", "1000", "--json"});
    ASSERT_EQ(local.exitStatus, 0) << local.err;
    ASSERT_TRUE(local.json().is_array()) << local.out;
    bool found = false;
    for (const auto& each : local.json()) {
        EXPECT_TRUE(matches(each, typed)) << each.dump();
        found |= each["contactId"] == contact.contactId;
    }
    EXPECT_TRUE(found) << contact.contactId << " not among " << local.json().size();
    const auto human = query({"search", contact.firstName, "--limit", "1000"});
    EXPECT_NE(human.out.find("from the local store"), std::string::npos) << human.out;
    EXPECT_NE(human.out.find(contact.contactId), std::string::npos) << human.out;

    server->clearRequestLog();
    const auto fromServer = query(std::vector<std::string>{"search", typed, "--source", "server", "--json", "--limit",
                                                           "1000"} + serverArgs(*server));
    ASSERT_EQ(fromServer.exitStatus, 0) << fromServer.err;
    found = false;
    for (const auto& each : fromServer.json()) found |= each["contactId"] == contact.contactId;
    EXPECT_TRUE(found) << fromServer.out;
    bool searched = false;
    for (const auto& request : server->requestLog()) searched |= request.param("q") == typed;
    EXPECT_TRUE(searched);
    const auto both = query(std::vector<std::string>{"search", typed, "--source", "both", "--json"} + serverArgs(*server));
    ASSERT_EQ(both.exitStatus, 0) << both.err;
    EXPECT_TRUE(both.json()["local"].is_array()) << both.out;
    EXPECT_TRUE(both.json()["server"].is_array()) << both.out;

    EXPECT_EQ(query({"list", "--limit", "7", "--json"}).json().size(), 7u);
    const auto org = query({"list", "--scope", "org", "--limit", "1000", "--json"}).json();
    EXPECT_EQ(org.size(), server->contacts("o1", true).size());
    for (const auto& each : org) EXPECT_EQ(each["isOrg"], true);

    const std::string address = contact.emails.front().address;
    const auto suggested = query({"suggest", address.substr(0, address.find('@')), "--json"});
    ASSERT_EQ(suggested.exitStatus, 0) << suggested.err;
    bool offered = false;
    for (const auto& suggestion : suggested.json()) offered |= suggestion["email"] == address;
    EXPECT_TRUE(offered) << suggested.out;
}

TEST_F(CliQueryTest, ShowFindsAContactByExactlyOneKeyAndStatusGivesTheStoredCounts) {
    const auto contact = target();
    for (const auto& key : std::vector<std::vector<std::string>>{{"--id", contact.contactId},
                                                                 {"--email", contact.emails.front().address},
                                                                 {"--contact-yuid", *contact.yuid}}) {
        SCOPED_TRACE(key[0]);
        const auto result = query(std::vector<std::string>{"show", "--json"} + key);
        ASSERT_EQ(result.exitStatus, 0) << result.err;
        EXPECT_EQ(result.json()["contactId"], contact.contactId);
        EXPECT_EQ(result.json()["firstName"], contact.firstName);
    }
    EXPECT_NE(query({"show", "--id", contact.contactId}).out.find(contact.emails.front().address), std::string::npos);
    EXPECT_EQ(query({"show"}).exitStatus, 2);
    EXPECT_EQ(query({"show", "--id", "1", "--email", "a@b.c"}).exitStatus, 2);

    const auto status = query({"status", "--json"}).json();
    EXPECT_EQ(status["personal"], server->contacts("u1", false).size());
    EXPECT_EQ(status["org"], server->contacts("o1", true).size());
    EXPECT_GT(status["lastUpdatedTime"].get<double>(), 0.0);
    EXPECT_GT(status["databaseBytes"].get<std::int64_t>(), 0);
    const auto unknown = runCli({"status", "--json", "--user", "nobody", "--data-dir", scratch->path().string()});
    ASSERT_EQ(unknown.exitStatus, 0) << unknown.err;
    EXPECT_EQ(unknown.json()["personal"], 0);
    EXPECT_TRUE(unknown.json()["lastUpdatedTime"].is_null());
}

}  // namespace

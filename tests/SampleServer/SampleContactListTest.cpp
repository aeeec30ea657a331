// Contact list replies over HTTP: paging, incremental changes with tombstones, search, authorization and
// the proxy's list call.

#include <gtest/gtest.h>

#include <set>

#include "SampleServer/SampleServerTestSupport.h"
#include "Support/SampleServerFixture.h"

using sample_server::SampleContact;
using sample_server::SampleContactsServer;
using sample_server_test::getJson;
using sample_server_test::smallOptions;

namespace {

constexpr const char* kInclude = "emails,phones,urls,usage_count,categories";

class SampleContactList : public ycontacts::testsupport::SampleServerTest {
protected:
    SampleContactList() : SampleServerTest(smallOptions()) {}

    sample_server_test::JsonReply get(const std::string& path, const httplib::Params& params,
                                      const std::string& yuid = "u1") {
        return getJson(server, path, params, server.userToken(yuid));
    }

    static std::vector<std::string> idsOf(const nlohmann::json& reply) {
        std::vector<std::string> ids;
        for (const auto& contact : reply["contacts"]) ids.push_back(contact["contact_id"].get<std::string>());
        return ids;
    }

    static std::vector<std::string> idsOf(const std::vector<SampleContact>& contacts) {
        std::vector<std::string> ids;
        for (const auto& contact : contacts) ids.push_back(contact.contactId);
        return ids;
    }

};

}  // namespace

TEST_F(SampleContactList, PagingVisitsEveryContactOnceInCreationOrder) {
    // 15 and 30 divide the population sizes exactly: the last full page must still say has_more false.
    for (const bool isOrg : {false, true}) {
        for (const int perPage : {7, 15, 30, 1000}) {
            const std::string path = std::string("/api/v1/accounts/") + (isOrg ? "org" : "self") + "/contacts";
            const std::size_t total = isOrg ? 30u : 45u;
            std::vector<std::string> seen;
            for (int page = 1; page <= 50; ++page) {
                const auto reply = get(path, {{"include", kInclude},
                                              {"page", std::to_string(page)},
                                              {"per_page", std::to_string(perPage)}});
                ASSERT_EQ(reply.status, 200);
                const auto ids = idsOf(reply.body);
                seen.insert(seen.end(), ids.begin(), ids.end());
                EXPECT_EQ(reply.body["page"], page);
                EXPECT_EQ(reply.body["per_page"], perPage);
                EXPECT_EQ(reply.body["total"], total);
                const bool more = reply.body["has_more"];
                EXPECT_EQ(more, seen.size() < total) << "per_page " << perPage << " page " << page;
                if (!more) break;
                EXPECT_EQ(ids.size(), static_cast<std::size_t>(perPage));
            }
            EXPECT_EQ(seen, idsOf(server.contacts("u1", isOrg))) << "per_page " << perPage;
        }
    }
}

TEST_F(SampleContactList, PageSizeDefaultsTo100AndIsCappedAt1000AndPagesPastTheEndAreEmpty) {
    SampleContactsServer big(SampleContactsServer::Options{.seed = 3, .users = 1, .personalContactsPerUser = 1200,
                                                           .orgContactsPerOrg = 0, .usersPerOrg = 0});
    ASSERT_GT(big.start(), 0);
    const auto token = big.userToken("u1");
    auto reply = getJson(big, "/api/v1/accounts/self/contacts", {}, token);
    EXPECT_EQ(reply.body["per_page"], 100);
    EXPECT_EQ(reply.body["contacts"].size(), 100u);
    reply = getJson(big, "/api/v1/accounts/self/contacts", {{"per_page", "5000"}}, token);
    EXPECT_EQ(reply.body["per_page"], 1000);
    EXPECT_EQ(reply.body["contacts"].size(), 1000u);
    EXPECT_TRUE(reply.body["has_more"]);
    reply = getJson(big, "/api/v1/accounts/self/contacts", {{"per_page", "1000"}, {"page", "2"}}, token);
    EXPECT_EQ(reply.body["contacts"].size(), 200u);
    EXPECT_FALSE(reply.body["has_more"]);
    reply = getJson(big, "/api/v1/accounts/self/contacts", {{"per_page", "1000"}, {"page", "3"}}, token);
    EXPECT_EQ(reply.status, 200);
    EXPECT_TRUE(reply.body["contacts"].empty());
    EXPECT_FALSE(reply.body["has_more"]);
    for (const char* bad : {"0", "-1", "x"})
        EXPECT_EQ(getJson(big, "/api/v1/accounts/self/contacts", {{"page", bad}}, token).status, 400) << bad;
}

TEST_F(SampleContactList, IncludeChoosesTheOptionalSections) {
    auto reply = get("/api/v1/accounts/self/contacts", {{"include", "emails"}, {"per_page", "3"}});
    for (const auto& contact : reply.body["contacts"]) {
        EXPECT_TRUE(contact.contains("emails"));
        EXPECT_FALSE(contact.contains("phones"));
        EXPECT_FALSE(contact.contains("usage_count"));
        EXPECT_TRUE(contact.contains("ims"));
    }
    reply = get("/api/v1/accounts/self/contacts", {{"per_page", "3"}});
    for (const auto& contact : reply.body["contacts"]) {
        EXPECT_TRUE(contact.contains("phones"));
        EXPECT_TRUE(contact.contains("categories"));
    }
}

TEST_F(SampleContactList, IncrementalReplyHoldsOnlyChangesAndTombstonesOnlyWhenAskedFor) {
    auto personal = server.contacts("u1", false);
    const std::int64_t since = server.clockMs();
    SampleContact changed = personal[3];
    changed.firstName = "Renée-Changed";
    ASSERT_TRUE(server.updateContact("u1", false, changed));
    ASSERT_TRUE(server.deleteContact("u1", false, personal[10].contactId));
    SampleContact added;
    added.firstName = "Zoë";
    added.lastName = "D'Angelo";
    const auto addedId = server.addContact("u1", false, added);
    ASSERT_TRUE(addedId);
    // A change on another user's data is not part of u1's reply.
    ASSERT_TRUE(server.deleteContact("u2", false, server.contacts("u2", false)[0].contactId));

    const std::string path = "/api/v1/sync/self/contacts";
    const std::string time = std::to_string(since);
    auto reply = get(path, {{"include", kInclude}, {"page", "1"}, {"filter_updated_time", time}});
    ASSERT_EQ(reply.status, 200);
    EXPECT_EQ(idsOf(reply.body), (std::vector<std::string>{changed.contactId, *addedId}));
    EXPECT_EQ(reply.body["contacts"][0]["first_name"], "Renée-Changed");
    // The client tells new from updated by creation time against its sync time.
    EXPECT_LE(reply.body["contacts"][0]["created_time"].get<std::int64_t>(), since);
    EXPECT_GT(reply.body["contacts"][1]["created_time"].get<std::int64_t>(), since);

    reply = get(path, {{"include", std::string(kInclude) + ",show_deleted"}, {"filter_updated_time", time}});
    ASSERT_EQ(reply.body["contacts"].size(), 3u);
    EXPECT_EQ(reply.body["contacts"][1], nlohmann::json({{"contact_id", personal[10].contactId}, {"is_deleted", true}}));
    EXPECT_EQ(reply.body["total"], 3);

    // The proxy call spells the same request with its own keys.
    reply = get("/yct/getContactsList", {{"yid", "u1"}, {"filterUpdatedTime", time}, {"showDeleted", "true"}});
    EXPECT_EQ(reply.body["contacts"].size(), 3u);
    reply = get("/yct/getContactsList", {{"yid", "u1"}, {"filterUpdatedTime", time}, {"showDeleted", "false"}});
    EXPECT_EQ(idsOf(reply.body), (std::vector<std::string>{changed.contactId, *addedId}));

    // Nothing changed after a later reading of the clock.
    reply = get(path, {{"include", std::string(kInclude) + ",show_deleted"},
                       {"filter_updated_time", std::to_string(server.clockMs())}});
    EXPECT_TRUE(reply.body["contacts"].empty());
    EXPECT_FALSE(reply.body["has_more"]);
}

TEST_F(SampleContactList, SearchIsACaseInsensitivePrefixMatchOnNamesAndEmails) {
    const auto personal = server.contacts("u1", false);
    auto expect = [&](const std::string& query, auto predicate) {
        std::vector<std::string> expected;
        for (const auto& contact : personal)
            if (predicate(contact)) expected.push_back(contact.contactId);
        ASSERT_FALSE(expected.empty()) << query;
        const auto reply = get("/api/v1/accounts/self/contacts", {{"include", kInclude}, {"q", query}});
        EXPECT_EQ(idsOf(reply.body), expected) << query;
        EXPECT_EQ(reply.body["total"], expected.size()) << query;
    };
    expect("o'b", [](const SampleContact& c) { return c.lastName == "O'Brien"; });
    expect("ÅNGS", [](const SampleContact& c) { return c.lastName == "Ångström"; });
    expect("zoË", [](const SampleContact& c) { return c.firstName == "Zoë"; });
    // "jose." is no name prefix (the name carries an accent), so only the e-mail addresses match it.
    expect("jose.", [](const SampleContact& c) { return c.firstName == "José"; });

    const auto proxy = get("/yct/getContactsList", {{"yid", "u1"}, {"searchText", "o'b"}});
    EXPECT_FALSE(proxy.body["contacts"].empty());
    EXPECT_TRUE(get("/api/v1/accounts/self/contacts", {{"q", "qqqq"}}).body["contacts"].empty());
}

TEST_F(SampleContactList, WrongOrMissingAuthorizationIsRejectedWith401) {
    // The value must match verbatim: another user's form, a different case or nothing at all are refused.
    for (const std::string token : {"token-u9", "Token-u1", "Bearer token-u1", ""}) {
        const auto reply = getJson(server, "/api/v1/accounts/self/contacts", {}, token);
        ASSERT_EQ(reply.status, 401) << token;
        EXPECT_EQ(reply.body["status_code"], 401);
        EXPECT_TRUE(reply.body["errors"].is_array());
    }
    EXPECT_EQ(getJson(server, "/yct/getContactsList", {{"yid", "u1"}}, "wrong").status, 401);
}

TEST_F(SampleContactList, TheTokenDecidesWhoseContactsSelfAndOrgPathsList) {
    const auto own = get("/api/v1/accounts/self/contacts", {{"per_page", "1000"}}, "u2");
    EXPECT_EQ(idsOf(own.body), idsOf(server.contacts("u2", false)));
    const auto org = get("/api/v1/accounts/org/contacts", {{"per_page", "1000"}}, "u2");
    EXPECT_EQ(idsOf(org.body), idsOf(server.contacts("o1", true)));
    // A user without an organisation gets the not-found envelope.
    const auto none = get("/api/v1/accounts/org/contacts", {}, "u3");
    EXPECT_EQ(none.status, 404);
    EXPECT_EQ(none.body, nlohmann::json::parse(R"({"errors":[{"message":"not found"}],"status_code":404})"));
}

TEST_F(SampleContactList, ProxyYidNamesTheUserOrTheOrganisation) {
    auto reply = get("/yct/getContactsList", {{"yid", "u1"}, {"perPage", "1000"}});
    EXPECT_EQ(idsOf(reply.body), idsOf(server.contacts("u1", false)));
    reply = get("/yct/getContactsList", {{"yid", "o1"}, {"page", "2"}, {"perPage", "20"}});
    const auto org = idsOf(server.contacts("o1", true));
    EXPECT_EQ(idsOf(reply.body), std::vector<std::string>(org.begin() + 20, org.end()));
    EXPECT_FALSE(reply.body["has_more"]);

    EXPECT_EQ(get("/yct/getContactsList", {{"yid", "u2"}}).status, 403);
    EXPECT_EQ(get("/yct/getContactsList", {{"yid", "o1"}}, "u3").status, 403);
    EXPECT_EQ(get("/yct/getContactsList", {{"yid", "o9"}}).status, 404);
    EXPECT_EQ(get("/yct/getContactsList", {}).status, 400);
}


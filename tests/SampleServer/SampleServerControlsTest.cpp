// What the end-to-end suites do not already exercise of the sample server: its fault controls, and the
// endpoints that add and delete contacts over HTTP.

#include <gtest/gtest.h>
#include <httplib.h>

#include <future>
#include <nlohmann/json.hpp>

#include "Support/SampleServerFixture.h"
#include "Support/Waiting.h"

namespace {

using sample_server::Fault;

struct Reply {
    int status = 0;
    nlohmann::json body;
};

// u1 and u2 share organisation o1, u3 has none.
class SampleServerControls : public ycontacts::testsupport::SampleServerTest {
protected:
    SampleServerControls()
        : SampleServerTest({.seed = 7,
                            .users = 3,
                            .personalContactsPerUser = 45,
                            .orgContactsPerOrg = 30,
                            .usersPerOrg = 2,
                            .usersWithoutOrg = 1}) {}

    // method is "GET", "POST" or "DELETE"; the body is parsed when it is JSON.
    Reply call(const std::string& method, const std::string& target, const std::string& yuid = "u1",
               const std::string& body = {}) {
        httplib::Client client(server.baseURL());
        const httplib::Headers headers{{"Authorization", server.userToken(yuid)}};
        const auto result = method == "GET"    ? client.Get(target, headers)
                            : method == "POST" ? client.Post(target, headers, body, "application/json")
                                               : client.Delete(target, headers);
        if (!result) return {};
        return {result->status, nlohmann::json::parse(result->body, nullptr, false)};
    }
    Reply page(int number) {
        return call("GET", "/api/v1/accounts/self/contacts?per_page=10&page=" + std::to_string(number));
    }
};

// What the end-to-end faults do not show: a fault's reach and count, the envelope under another status, a
// delay that a later request overtakes, and clearing.
TEST_F(SampleServerControls, AFaultServesOnlyItsPathAndPageForItsCountUntilCleared) {
    server.injectFault({.pathContains = "/self/contacts", .page = 2, .times = 2, .status = 503});
    server.injectFault({.pathContains = "/org/contacts", .status = 404, .error404Envelope = true});
    EXPECT_EQ(call("GET", "/api/v1/accounts/self/categories").status, 200);
    EXPECT_EQ(page(1).status, 200);
    EXPECT_EQ(page(3).status, 200);
    EXPECT_EQ(server.pendingFaults(), 2u);
    EXPECT_EQ(page(2).body["status_code"], 503);
    EXPECT_EQ(page(2).status, 503);
    EXPECT_EQ(page(2).status, 200);
    const auto envelope = call("GET", "/api/v1/accounts/org/contacts");
    EXPECT_EQ(envelope.status, 404);
    EXPECT_EQ(envelope.body, nlohmann::json::parse(R"({"errors":[{"message":"not found"}],"status_code":404})"));
    EXPECT_EQ(server.pendingFaults(), 0u);

    server.clearRequestLog();
    server.injectFault({.pathContains = "/self/contacts", .page = 2, .delay = std::chrono::minutes(5)});
    server.injectFault({.pathContains = "", .times = 100, .status = 500});
    auto delayed = std::async(std::launch::async, [this] { return page(2).status; });
    ASSERT_TRUE(ycontacts::testsupport::eventually([&] { return !server.requestLog().empty(); }));
    server.clearFaults();
    EXPECT_EQ(server.pendingFaults(), 0u);
    EXPECT_EQ(page(1).status, 200);
    EXPECT_EQ(delayed.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    server.stop();
    EXPECT_EQ(delayed.wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST_F(SampleServerControls, AnAddedContactGetsANewIdAndComesBackWithEveryFieldItWasSent) {
    const char* full = R"({
      "contact_id": "TempContactId-1", "first_name": "Zoë", "middle_name": "Ann", "last_name": "O'Brien",
      "nick_name": "Zo", "display_name": "Zoë O'Brien", "created_time": 5, "usage_count": 4,
      "contact_type": "user", "yuid": "y-new",
      "emails": [{"email_id": "zoe@example.com", "is_primary": true}, {"email_id": "z@example.org", "is_primary": false}],
      "phones": [{"number": "+1 555 010 0000", "type": "mobile"}], "urls": [{"url": "https://example.com/zoe", "type": "flickr"}],
      "ims": [{"im": "zoe@im.example.com", "type": "jabber"}], "has_photo": false, "gender": "female",
      "notes": "line one\nline \"two\"", "is_editable": true, "company": "Ångström Labs", "job_title": "Engineer",
      "designation": "Lead", "address": {"street1": "12 Rue de l'Église", "city": "Montréal", "postal_code": "H2X 1Y4"},
      "work_address": {"street1": "1 Main St", "street2": "Floor 2", "city": "Austin"}, "categories": ["101"],
      "birthday": {"date": 29, "month": 2, "year": 1988}})";
    const std::int64_t since = server.clockMs();
    const auto added =
        call("POST", "/syncapi/contact/add?format=json", "u1", std::string(R"({"contacts":[)") + full + "]}");
    ASSERT_EQ(added.status, 200);
    EXPECT_EQ(added.body["status"], "success");
    ASSERT_EQ(added.body["contact_ids"].size(), 1u);
    const std::string id = added.body["contact_ids"][0];
    EXPECT_NE(id, "TempContactId-1");

    const auto changes = call("GET", "/api/v1/sync/self/contacts?filter_updated_time=" + std::to_string(since));
    ASSERT_EQ(changes.body["contacts"].size(), 1u);
    nlohmann::json returned = changes.body["contacts"][0];
    EXPECT_EQ(returned["contact_id"], id);
    EXPECT_GT(returned["created_time"].get<std::int64_t>(), since) << "the server sets the creation time";
    nlohmann::json sent = nlohmann::json::parse(full);
    for (const char* serverOwned : {"contact_id", "created_time", "updated_time"}) {
        sent.erase(serverOwned);
        returned.erase(serverOwned);
    }
    EXPECT_EQ(returned, sent);

    // The organisation path adds to the caller's organisation, which a user without one has not.
    const auto before = server.contacts("o1", true).size();
    const auto org =
        call("POST", "/api/v1/org/contacts", "u2", R"({"contacts":[{"first_name":"Renée"},{"first_name":"Seán"}]})");
    ASSERT_EQ(org.status, 200);
    EXPECT_EQ(org.body["contact_ids"].size(), 2u);
    EXPECT_EQ(server.contacts("o1", true).size(), before + 2);
    EXPECT_EQ(server.contacts("o1", true).back().firstName, "Seán");
    EXPECT_EQ(call("POST", "/api/v1/org/contacts", "u3", R"({"contacts":[]})").status, 404);
    EXPECT_EQ(call("POST", "/api/v1/self/contacts", "u3", R"({"contacts":[{"first_name":"Ana"}]})").status, 200);
}

TEST_F(SampleServerControls, UnreadableAddsAreRejectedWholeAndUnknownCallersRefused) {
    const auto before = server.contacts("u1", false).size();
    for (const char* body :
         {"not json", R"({"contacts":{}})", R"([])", R"({"contacts":[{"first_name":"Ok"},{"first_name":5}]})",
          R"({"contacts":[{"contact_type":"robot"}]})", R"({"contacts":[{"emails":[{"email_id":1}]}]})"}) {
        SCOPED_TRACE(body);
        const auto reply = call("POST", "/syncapi/contact/add", "u1", body);
        EXPECT_EQ(reply.status, 400);
        EXPECT_EQ(reply.body["status_code"], 400);
    }
    EXPECT_EQ(server.contacts("u1", false).size(), before);
    EXPECT_EQ(call("POST", "/syncapi/contact/add", "nobody", "{}").status, 401);
}

TEST_F(SampleServerControls, DeletesRemoveContactsAndLeaveTombstones) {
    const auto personal = server.contacts("u1", false);
    const std::string first = personal[0].contactId;
    const std::string second = personal[1].contactId;
    auto reply = call("DELETE", "/api/v1/self/contacts?contactIds=" + first + "," + second + "&isOrg=false");
    ASSERT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, nlohmann::json({{"status", "success"}}));
    EXPECT_FALSE(server.contact("u1", false, first));
    EXPECT_FALSE(server.contact("u1", false, second));
    ASSERT_EQ(server.tombstones("u1", false).size(), 2u);
    EXPECT_EQ(server.tombstones("u1", false)[0].contactId, first);

    const std::string member = server.contacts("o1", true)[5].contactId;
    EXPECT_EQ(call("POST", "/syncapi/contact/delete?contactIds=" + member + "&isOrg=true").status, 200);
    EXPECT_FALSE(server.contact("o1", true, member));
    // Deleting again, or an unknown id, is still a success.
    EXPECT_EQ(call("DELETE", "/syncapi/contact/delete?contactIds=" + member + "&isOrg=true").status, 200);
    EXPECT_EQ(call("DELETE", "/api/v1/self/contacts?contactIds=").status, 400);
    EXPECT_EQ(call("DELETE", "/api/v1/org/contacts?contactIds=1", "u3").status, 404);
}

}  // namespace

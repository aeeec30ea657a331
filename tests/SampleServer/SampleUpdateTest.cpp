// Adding and deleting contacts over HTTP, and how the changes show in later replies.

#include <gtest/gtest.h>

#include <memory>

#include "SampleServer/SampleServerTestSupport.h"
#include "Support/SampleServerFixture.h"

using sample_server_test::getJson;
using sample_server_test::smallOptions;

namespace {

const char* kFullContact = R"({
  "contact_id": "TempContactId-1",
  "first_name": "Zoë", "middle_name": "Ann", "last_name": "O'Brien", "nick_name": "Zo",
  "display_name": "Zoë O'Brien", "created_time": 5, "usage_count": 4, "contact_type": "user", "yuid": "y-new",
  "emails": [{"email_id": "zoe@example.com", "is_primary": true}, {"email_id": "z@example.org", "is_primary": false}],
  "phones": [{"number": "+1 555 010 0000", "type": "mobile"}],
  "urls": [{"url": "https://example.com/zoe", "type": "flickr"}],
  "ims": [{"im": "zoe@im.example.com", "type": "jabber"}],
  "has_photo": false, "gender": "female", "notes": "line one\nline \"two\"", "is_editable": true,
  "company": "Ångström Labs", "job_title": "Engineer", "designation": "Lead",
  "address": {"street1": "12 Rue de l'Église", "city": "Montréal", "state": "QC", "country": "Canada",
              "postal_code": "H2X 1Y4"},
  "work_address": {"street1": "1 Main St", "street2": "Floor 2", "city": "Austin"},
  "categories": ["101"],
  "birthday": {"date": 29, "month": 2, "year": 1988}
})";

class SampleUpdate : public ycontacts::testsupport::SampleServerTest {
protected:
    SampleUpdate() : SampleServerTest(smallOptions()) {}

    void SetUp() override {
        SampleServerTest::SetUp();
        client = std::make_unique<httplib::Client>(server.baseURL());
    }

    httplib::Result post(const std::string& target, const std::string& body, const std::string& yuid = "u1") {
        return client->Post(target.c_str(), httplib::Headers{{"Authorization", server.userToken(yuid)}}, body,
                            "application/json");
    }

    httplib::Result remove(const std::string& target, const std::string& yuid = "u1") {
        return client->Delete(target.c_str(), httplib::Headers{{"Authorization", server.userToken(yuid)}});
    }

    std::unique_ptr<httplib::Client> client;
};

}  // namespace

TEST_F(SampleUpdate, AddedContactGetsANewIdAndComesBackWithEveryFieldItWasSent) {
    const std::int64_t since = server.clockMs();
    const auto reply = post("/syncapi/contact/add?format=json&source=test",
                            std::string(R"({"contacts":[)") + kFullContact + "]}");
    ASSERT_TRUE(reply);
    ASSERT_EQ(reply->status, 200);
    const auto body = nlohmann::json::parse(reply->body);
    EXPECT_EQ(body["status"], "success");
    ASSERT_EQ(body["contact_ids"].size(), 1u);
    const std::string id = body["contact_ids"][0];
    EXPECT_NE(id, "TempContactId-1");
    ASSERT_TRUE(server.contact("u1", false, id));

    const auto page = getJson(server, "/api/v1/sync/self/contacts", {{"filter_updated_time", std::to_string(since)}},
                              server.userToken("u1"));
    ASSERT_EQ(page.body["contacts"].size(), 1u);
    nlohmann::json returned = page.body["contacts"][0];
    EXPECT_EQ(returned["contact_id"], id);
    EXPECT_GT(returned["created_time"].get<std::int64_t>(), since) << "the server sets the creation time";
    nlohmann::json sent = nlohmann::json::parse(kFullContact);
    for (const char* serverOwned : {"contact_id", "created_time"}) {
        sent.erase(serverOwned);
        returned.erase(serverOwned);
    }
    returned.erase("updated_time");
    EXPECT_EQ(returned, sent);
}

TEST_F(SampleUpdate, AddGoesToTheOrganisationOnTheOrgPath) {
    const auto before = server.contacts("o1", true).size();
    const auto reply = post("/api/v1/org/contacts?format=json&source=test",
                            R"({"contacts":[{"first_name":"Renée"},{"first_name":"Seán","last_name":"D'Angelo"}]})",
                            "u2");
    ASSERT_EQ(reply->status, 200);
    EXPECT_EQ(nlohmann::json::parse(reply->body)["contact_ids"].size(), 2u);
    EXPECT_EQ(server.contacts("o1", true).size(), before + 2);
    EXPECT_EQ(server.contacts("o1", true).back().lastName, "D'Angelo");
    EXPECT_EQ(post("/api/v1/org/contacts", R"({"contacts":[]})", "u3")->status, 404);
    EXPECT_EQ(post("/api/v1/self/contacts", R"({"contacts":[{"first_name":"Ana"}]})", "u3")->status, 200);
}

TEST_F(SampleUpdate, UnreadableAddBodiesAreRejectedWholeWith400) {
    const auto before = server.contacts("u1", false).size();
    for (const char* body : {"not json", R"({"contacts":{}})", R"([])",
                             R"({"contacts":[{"first_name":"Ok"},{"first_name":5}]})",
                             R"({"contacts":[{"contact_type":"robot"}]})", R"({"contacts":[{"emails":[{"email_id":1}]}]})"}) {
        const auto reply = post("/syncapi/contact/add", body);
        EXPECT_EQ(reply->status, 400) << body;
        EXPECT_EQ(nlohmann::json::parse(reply->body)["status_code"], 400);
    }
    EXPECT_EQ(server.contacts("u1", false).size(), before);
    EXPECT_EQ(client->Post("/syncapi/contact/add", httplib::Headers{{"Authorization", "bad"}}, "{}", "application/json")
                  ->status,
              401);
}

TEST_F(SampleUpdate, DeleteRemovesContactsAndLeavesTombstones) {
    const auto personal = server.contacts("u1", false);
    const std::string first = personal[0].contactId;
    const std::string second = personal[1].contactId;
    auto reply = remove("/api/v1/self/contacts?contactIds=" + first + "," + second + "&isOrg=false");
    ASSERT_EQ(reply->status, 200);
    EXPECT_EQ(nlohmann::json::parse(reply->body), nlohmann::json({{"status", "success"}}));
    EXPECT_FALSE(server.contact("u1", false, first));
    EXPECT_FALSE(server.contact("u1", false, second));
    ASSERT_EQ(server.tombstones("u1", false).size(), 2u);
    EXPECT_EQ(server.tombstones("u1", false)[0].contactId, first);

    const std::string member = server.contacts("o1", true)[5].contactId;
    reply = post("/syncapi/contact/delete?contactIds=" + member + "&isOrg=true", "");
    ASSERT_EQ(reply->status, 200);
    EXPECT_FALSE(server.contact("o1", true, member));
    // Deleting again, or an unknown id, is still a success.
    EXPECT_EQ(remove("/syncapi/contact/delete?contactIds=" + member + "&isOrg=true")->status, 200);
    EXPECT_EQ(remove("/api/v1/self/contacts?contactIds=")->status, 400);
    EXPECT_EQ(remove("/api/v1/org/contacts?contactIds=1", "u3")->status, 404);
}

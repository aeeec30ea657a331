// Usage counts, categories and photos over HTTP.

#include <gtest/gtest.h>

#include <memory>

#include "SampleServer/SampleServerTestSupport.h"
#include "Support/SampleServerFixture.h"

using sample_server::SampleContact;
using sample_server_test::getJson;
using sample_server_test::smallOptions;

namespace {

class SampleAccountAndPhoto : public ycontacts::testsupport::SampleServerTest {
protected:
    SampleAccountAndPhoto() : SampleServerTest(smallOptions()) {}

    void SetUp() override {
        SampleServerTest::SetUp();
        client = std::make_unique<httplib::Client>(server.baseURL());
    }

    httplib::Result photo(const std::string& path, const httplib::Params& params, const std::string& yuid,
                          const std::string& ifModifiedSince = {}) {
        httplib::Headers headers{{"Authorization", server.userToken(yuid)}};
        if (!ifModifiedSince.empty()) headers.emplace("If-Modified-Since", ifModifiedSince);
        return client->Get(path, params, headers);
    }

    SampleContact firstPersonal(const std::string& yuid, bool withYuid, bool withPhoto) {
        for (const SampleContact& contact : server.contacts(yuid, false))
            if (contact.contactType == "user" && contact.yuid.has_value() == withYuid && contact.hasPhoto == withPhoto)
                return contact;
        ADD_FAILURE() << "no such contact";
        return {};
    }

    std::unique_ptr<httplib::Client> client;
};

}  // namespace

TEST_F(SampleAccountAndPhoto, UsageCountsComeHighestFirstAndOnlyForTheTokensOwnAccount) {
    const auto reply = getJson(server, "/api/v2/accounts/u1/contacts/ids", {{"sort", "usage_count"}}, "token-u1");
    ASSERT_EQ(reply.status, 200);
    const auto expected = server.usageCounts("u1");
    ASSERT_EQ(reply.body["contacts"].size(), server.contacts("u1", false).size());
    ASSERT_EQ(expected.size(), reply.body["contacts"].size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(reply.body["contacts"][i]["contact_id"], expected[i].first);
        EXPECT_EQ(reply.body["contacts"][i]["usage_count"], expected[i].second);
        if (i > 0) {
            EXPECT_GE(reply.body["contacts"][i - 1]["usage_count"], reply.body["contacts"][i]["usage_count"]);
        }
    }
    EXPECT_EQ(getJson(server, "/api/v2/accounts/u2/contacts/ids", {{"sort", "usage_count"}}, "token-u1").status, 403);
    EXPECT_EQ(getJson(server, "/api/v2/accounts/u1/contacts/ids", {}, "token-u2").status, 403);
}

TEST_F(SampleAccountAndPhoto, CategoriesAreTheUsersOwnWithTextDeletedFlags) {
    const auto reply = getJson(server, "/api/v1/accounts/self/categories", {}, "token-u2");
    ASSERT_EQ(reply.status, 200);
    const auto expected = server.categories("u2");
    ASSERT_EQ(reply.body["categories"].size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(reply.body["categories"][i]["category_id"], expected[i].categoryId);
        EXPECT_EQ(reply.body["categories"][i]["category_name"], expected[i].categoryName);
        EXPECT_EQ(reply.body["categories"][i]["deleted"], "false");
    }
    EXPECT_NE(server.categories("u1")[0].categoryId, expected[0].categoryId);
    EXPECT_EQ(getJson(server, "/api/v1/accounts/self/categories", {}, "nope").status, 401);
}

TEST_F(SampleAccountAndPhoto, PhotoByYuidIsSentThenRevalidatedWith304) {
    const SampleContact contact = firstPersonal("u1", true, true);
    const httplib::Params medium{{"ID", *contact.yuid}, {"t", "user"}, {"API", "true"}, {"fs", "medium"}};
    auto first = photo("/file/download", medium, "u1");
    ASSERT_TRUE(first);
    ASSERT_EQ(first->status, 200);
    EXPECT_EQ(first->body.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_EQ(first->get_header_value("Content-Type"), "image/png");
    EXPECT_TRUE(first->has_header("Date"));
    const std::string lastModified = first->get_header_value("Last-Modified");
    ASSERT_EQ(lastModified.size(), 29u) << lastModified;
    EXPECT_EQ(lastModified.substr(26), "GMT");

    auto thumb = photo("/file/download",
                       {{"ID", *contact.yuid}, {"t", "user"}, {"API", "true"}, {"fs", "thumb"}}, "u1");
    ASSERT_EQ(thumb->status, 200);
    EXPECT_LT(thumb->body.size(), first->body.size());
    EXPECT_EQ(photo("/file/download", medium, "u1")->body, first->body) << "photos are deterministic";

    auto revalidated = photo("/file/download", medium, "u1", lastModified);
    ASSERT_EQ(revalidated->status, 304);
    EXPECT_TRUE(revalidated->body.empty());
    EXPECT_TRUE(revalidated->has_header("Date"));
    EXPECT_EQ(photo("/file/download", medium, "u1", "Sat, 01 Jan 2000 00:00:00 GMT")->status, 200);

    // A new photo on the server makes the old date stale.
    SampleContact changed = contact;
    changed.photoModifiedMs = server.clockMs() / 1000 * 1000;
    ASSERT_TRUE(server.updateContact("u1", false, changed));
    auto renewed = photo("/file/download", medium, "u1", lastModified);
    EXPECT_EQ(renewed->status, 200);
    EXPECT_NE(renewed->body, first->body);
}

TEST_F(SampleAccountAndPhoto, PhotoStatusesForNoPhotoAndForContactsTheCallerMayNotSee) {
    const SampleContact noPhoto = firstPersonal("u1", true, false);
    auto reply = photo("/file/download", {{"ID", *noPhoto.yuid}, {"t", "user"}, {"API", "true"}, {"fs", "thumb"}}, "u1");
    EXPECT_EQ(reply->status, 204);
    EXPECT_TRUE(reply->body.empty());
    EXPECT_TRUE(reply->has_header("Date"));

    const SampleContact othersContact = firstPersonal("u2", true, true);
    reply = photo("/file/download", {{"ID", *othersContact.yuid}, {"t", "user"}, {"API", "true"}, {"fs", "thumb"}},
                  "u1");
    EXPECT_EQ(reply->status, 403);
    EXPECT_EQ(photo("/file/download", {{"ID", *othersContact.yuid}, {"t", "user"}, {"API", "true"}, {"fs", "thumb"}},
                    "u2")
                  ->status,
              200);
    EXPECT_EQ(photo("/file/download", {{"ID", *othersContact.yuid}, {"t", "group"}, {"API", "true"}, {"fs", "thumb"}},
                    "u2")
                  ->status,
              403)
        << "the type must match the contact";
}

TEST_F(SampleAccountAndPhoto, PhotoByContactIdFollowsThePopulation) {
    const SampleContact own = firstPersonal("u1", false, true);
    const httplib::Params byId{{"contactId", own.contactId}, {"isOrg", "false"}, {"photosize", "normal"}};
    EXPECT_EQ(photo("/syncapi/contact/photo", byId, "u1")->status, 200);
    EXPECT_EQ(photo("/syncapi/contact/photo", byId, "u2")->status, 403);
    EXPECT_EQ(photo("/syncapi/contact/photo",
                    {{"contactId", own.contactId}, {"isOrg", "true"}, {"photosize", "normal"}}, "u1")
                  ->status,
              403);

    SampleContact member;
    for (const SampleContact& contact : server.contacts("o1", true))
        if (contact.hasPhoto) member = contact;
    ASSERT_FALSE(member.contactId.empty());
    const httplib::Params orgPhoto{{"contactId", member.contactId}, {"isOrg", "true"}, {"photosize", "thumbnail"}};
    EXPECT_EQ(photo("/syncapi/contact/photo", orgPhoto, "u2")->status, 200);
    EXPECT_EQ(photo("/syncapi/contact/photo", orgPhoto, "u3")->status, 403);
    EXPECT_EQ(photo("/syncapi/contact/photo", {{"contactId", member.contactId}}, "u2")->status, 400);
}

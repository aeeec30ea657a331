// The parser against the sample server's real replies: both follow the same wire format, so what the server
// writes must read back as what it holds.

#include <gtest/gtest.h>

#include <httplib.h>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"

namespace ycontacts {
namespace {

YContactsParserContract::Body bytesOf(const httplib::Result& result) {
    if (!result) return std::nullopt;
    return std::vector<std::uint8_t>(result->body.begin(), result->body.end());
}

TEST(YContactsParserWireTest, CategoryAddAndDeleteRepliesOfTheServerReadBack) {
    sample_server::SampleContactsServer server{sample_server::SampleServerOptions{}};
    ASSERT_GT(server.start(), 0);
    httplib::Client client("127.0.0.1", server.port());
    const httplib::Headers headers{{"Authorization", "token-u1"}};
    const YContactsParser parser;

    auto categories = parser.parseFetchCategories(bytesOf(client.Get("/api/v1/accounts/self/categories", headers)));
    EXPECT_FALSE(categories.error);
    ASSERT_TRUE(categories.categories);
    const auto expected = server.categories("u1");
    ASSERT_EQ(categories.categories->size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(categories.categories->at(i).categoryId, expected[i].categoryId);
        EXPECT_EQ(categories.categories->at(i).categoryName, expected[i].categoryName);
        EXPECT_EQ(categories.categories->at(i).isDeleted, expected[i].deleted ? "true" : "false");
    }

    const std::string addBody =
        R"({"contacts":[{"contact_id":"TempContactId-1","first_name":"Ann"},{"first_name":"Bo","last_name":"Ek"}]})";
    auto added = parser.parseUpdateContacts(
        bytesOf(client.Post("/syncapi/contact/add?format=json&source=test", headers, addBody, "application/json")));
    EXPECT_FALSE(added.error);
    EXPECT_EQ(added.successResponse, "success");
    ASSERT_TRUE(added.contactIds);
    ASSERT_EQ(added.contactIds->size(), 2u);
    const auto bo = server.contact("u1", false, added.contactIds->at(1));
    ASSERT_TRUE(bo);
    EXPECT_EQ(bo->lastName, "Ek");

    auto deleted = parser.parseDeleteContacts(bytesOf(
        client.Post("/syncapi/contact/delete?contactIds=" + added.contactIds->at(0) + "&isOrg=false", headers, "",
                    "application/x-www-form-urlencoded")));
    EXPECT_FALSE(deleted.error);
    EXPECT_EQ(deleted.successResponse, "success");
    EXPECT_FALSE(server.contact("u1", false, added.contactIds->at(0)));

    const httplib::Headers wrongToken{{"Authorization", "token-nobody"}};
    auto refused = parser.parseUpdateContacts(
        bytesOf(client.Post("/syncapi/contact/add?format=json&source=test", wrongToken, addBody, "application/json")));
    EXPECT_EQ(refused.error, YContactError::authorizationError);
    auto refusedCategories =
        parser.parseFetchCategories(bytesOf(client.Get("/api/v1/accounts/self/categories", wrongToken)));
    EXPECT_EQ(refusedCategories.error, YContactError::parserError);
}

}  // namespace
}  // namespace ycontacts

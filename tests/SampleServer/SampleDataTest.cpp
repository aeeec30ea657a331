// Generated data: deterministic for a seed, realistic (diacritics, apostrophes), and internally consistent.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include <nlohmann/json.hpp>

#include "SampleServer/SampleServerTestSupport.h"

using sample_server::SampleContact;
using sample_server::SampleContactsServer;
using sample_server_test::smallOptions;

namespace {

std::vector<std::string> wireOfEverything(const SampleContactsServer& server) {
    std::vector<std::string> wire;
    for (const char* owner : {"u1", "u2", "u3"})
        for (const SampleContact& contact : server.contacts(owner, false)) wire.push_back(server.toWireJson(contact));
    for (const SampleContact& contact : server.contacts("o1", true)) wire.push_back(server.toWireJson(contact));
    return wire;
}

}  // namespace

TEST(SampleData, SameSeedGivesTheSameDataAndAnotherSeedDoesNot) {
    const SampleContactsServer first(smallOptions(11));
    const SampleContactsServer second(smallOptions(11));
    const SampleContactsServer other(smallOptions(12));
    EXPECT_EQ(wireOfEverything(first), wireOfEverything(second));
    EXPECT_NE(wireOfEverything(first), wireOfEverything(other));
    EXPECT_EQ(first.userToken("u2"), "token-u2");
}

TEST(SampleData, UsersOrganisationsAndTokensFollowTheOptions) {
    auto options = smallOptions();
    options.tokens["u2"] = "Bearer secret'value";
    const SampleContactsServer server(options);
    EXPECT_EQ(server.userIds(), (std::vector<std::string>{"u1", "u2", "u3"}));
    EXPECT_EQ(server.yoidOf("u1"), "o1");
    EXPECT_EQ(server.yoidOf("u2"), "o1");
    EXPECT_EQ(server.yoidOf("u3"), std::nullopt);
    EXPECT_EQ(server.userToken("u2"), "Bearer secret'value");
    EXPECT_EQ(server.userToken("nobody"), "");
    EXPECT_EQ(server.contacts("u1", false).size(), 45u);
    EXPECT_EQ(server.contacts("o1", true).size(), 30u);
    // An organisation's population is also reachable through any member's yuid.
    EXPECT_EQ(server.contacts("u2", true).size(), 30u);
    EXPECT_TRUE(server.contacts("u3", true).empty());
}

TEST(SampleData, NamesCarryDiacriticsAndApostrophes) {
    const SampleContactsServer server(smallOptions());
    bool diacritic = false;
    bool apostrophe = false;
    for (const SampleContact& contact : server.contacts("u1", false)) {
        const std::string name = contact.firstName + " " + contact.lastName.value_or("");
        diacritic = diacritic || name.find("ë") != std::string::npos || name.find("Å") != std::string::npos ||
                    name.find("é") != std::string::npos;
        apostrophe = apostrophe || name.find('\'') != std::string::npos;
    }
    EXPECT_TRUE(diacritic);
    EXPECT_TRUE(apostrophe);
}

TEST(SampleData, ContactsAreConsistentWithTheWireVocabulary) {
    const SampleContactsServer server(smallOptions());
    const std::set<std::string> phoneWords = {"mobile", "home", "work", "fax", "others"};
    const std::set<std::string> linkWords = {"home",    "work",   "blog",   "linkedin",  "facebook",
                                             "twitter", "amazon", "flickr", "delicious", "others"};
    const std::set<std::string> imWords = {"google", "yahoo", "skype", "aol", "icq", "msn", "jabber", "others"};
    std::set<std::string> categoryIds;
    for (const auto& category : server.categories("u1")) categoryIds.insert(category.categoryId);
    ASSERT_FALSE(categoryIds.empty());

    std::set<std::string> ids;
    int groups = 0;
    int withPhoto = 0;
    std::int64_t previousCreated = 0;
    for (const SampleContact& contact : server.contacts("u1", false)) {
        EXPECT_TRUE(ids.insert(contact.contactId).second) << contact.contactId;
        EXPECT_GT(contact.createdTimeMs, previousCreated) << "creation order is the list order";
        previousCreated = contact.createdTimeMs;
        EXPECT_GE(contact.updatedTimeMs, contact.createdTimeMs);
        EXPECT_EQ(std::count_if(contact.emails.begin(), contact.emails.end(), [](const auto& e) { return e.isPrimary; }),
                  1)
            << contact.contactId;
        for (const auto& phone : contact.phones) EXPECT_TRUE(phoneWords.count(phone.type)) << phone.type;
        for (const auto& url : contact.urls) EXPECT_TRUE(linkWords.count(url.type)) << url.type;
        for (const auto& im : contact.ims) EXPECT_TRUE(imWords.count(im.type)) << im.type;
        for (const auto& category : contact.categories) EXPECT_TRUE(categoryIds.count(category)) << category;
        groups += contact.contactType == "group";
        withPhoto += contact.hasPhoto;
        EXPECT_TRUE(contact.isEditable);
    }
    EXPECT_GT(groups, 0);
    EXPECT_GT(withPhoto, 0);
    EXPECT_LT(withPhoto, 45);

    const auto members = server.contacts("o1", true);
    ASSERT_GE(members.size(), 2u);
    EXPECT_EQ(members[0].yuid, "u1");
    EXPECT_EQ(members[1].yuid, "u2");
    for (const SampleContact& member : members) {
        EXPECT_FALSE(member.isEditable);
        EXPECT_TRUE(member.yuid.has_value());
        EXPECT_FALSE(ids.count(member.contactId)) << "contact ids are unique across populations";
    }
}

TEST(SampleData, WireObjectUsesTheDocumentedKeysAndTypes) {
    const SampleContactsServer server(smallOptions());
    for (const SampleContact& contact : server.contacts("u1", false)) {
        const auto json = nlohmann::json::parse(server.toWireJson(contact));
        ASSERT_TRUE(json["contact_id"].is_string());
        EXPECT_TRUE(json["first_name"].is_string());
        EXPECT_TRUE(json["created_time"].is_number_integer());
        EXPECT_EQ(json["created_time"].get<std::int64_t>(), contact.createdTimeMs);
        EXPECT_TRUE(json["usage_count"].is_number_integer());
        EXPECT_TRUE(json["has_photo"].is_boolean());
        EXPECT_EQ(json.contains("photo_url"), contact.hasPhoto);
        EXPECT_EQ(json.contains("birthday"), contact.birthday.has_value());
        if (contact.birthday) {
            EXPECT_TRUE(json["birthday"]["month"].is_number_integer());
            EXPECT_EQ(json["birthday"].contains("year"), contact.birthday->year.has_value());
        }
        EXPECT_EQ(json.contains("middle_name"), contact.middleName.has_value());
        EXPECT_FALSE(json.contains("is_deleted"));
        EXPECT_TRUE(json["categories"].is_array());
        for (const auto& email : json["emails"]) {
            EXPECT_TRUE(email["email_id"].is_string());
            EXPECT_TRUE(email["is_primary"].is_boolean());
        }
    }
}

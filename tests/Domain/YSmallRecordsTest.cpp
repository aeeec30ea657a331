#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

#include <nlohmann/json.hpp>

#include "ycontacts/Contacts/Domain/Entities/YCategoryResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/Contacts/Domain/Entities/YContactUsageCountResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"

namespace ycontacts {
namespace {

using nlohmann::json;

TEST(YSuggestionContactTest, IdentityIsTheEmailAlone) {
    const YSuggestionContact first("c-1", "ann@example.com", "Ann", false);
    const YSuggestionContact sameAddress("c-2", "ann@example.com", "Anne", true);
    const YSuggestionContact otherAddress("c-1", "ann@work.example", "Ann", false);

    EXPECT_EQ(first, sameAddress);
    EXPECT_EQ(std::hash<YSuggestionContact>{}(first), std::hash<YSuggestionContact>{}(sameAddress));
    EXPECT_NE(first, otherAddress);
    const std::unordered_set<YSuggestionContact> set{first, sameAddress, otherAddress};
    EXPECT_EQ(set.size(), 2u);
}

TEST(YSuggestionContactTest, JsonRoundTripAndRequiredKeys) {
    YSuggestionContact original("c-1", "ann@example.com", "Ann", true);
    original.yuid = "y-1";
    original.lastName = "Lee";
    original.type = YContactType::group;
    original.hasPhoto = false;

    const nlohmann::ordered_json encoded = original;
    EXPECT_EQ(encoded.dump(),
              R"({"email":"ann@example.com","contactId":"c-1","yuid":"y-1","firstName":"Ann","lastName":"Lee",)"
              R"("type":"group","hasPhoto":false,"isOrg":true})");
    const auto decoded = encoded.get<YSuggestionContact>();
    EXPECT_EQ(decoded.contactId, "c-1");
    EXPECT_EQ(decoded.yuid, "y-1");
    EXPECT_EQ(decoded.lastName, "Lee");
    EXPECT_FALSE(decoded.middleName);
    EXPECT_EQ(decoded.type, YContactType::group);
    EXPECT_FALSE(decoded.hasPhoto);
    EXPECT_TRUE(decoded.isOrg);

    for (const std::string key : {"email", "contactId", "firstName", "type", "hasPhoto", "isOrg"}) {
        json document = json(original);
        document.erase(key);
        EXPECT_THROW(document.get<YSuggestionContact>(), json::exception) << "without " << key;
    }
    json nullYuid = json(original);
    nullYuid["yuid"] = nullptr;
    EXPECT_FALSE(nullYuid.get<YSuggestionContact>().yuid);
}

TEST(YContactCategoryTest, DecodesSnakeCaseKeysAndKeepsTheDeletedFlagAsText) {
    const auto category =
        json::parse(R"({"category_id": "cat-1", "category_name": "Family", "deleted": "true"})").get<YContactCategory>();
    EXPECT_EQ(category.categoryId, "cat-1");
    EXPECT_EQ(category.categoryName, "Family");
    EXPECT_EQ(category.isDeleted, "true");

    const auto bare = json::parse(R"({"category_id": "cat-2", "category_name": null})").get<YContactCategory>();
    EXPECT_EQ(bare.categoryId, "cat-2");
    EXPECT_FALSE(bare.categoryName || bare.isDeleted);

    EXPECT_THROW(json::parse(R"({"categoryId": "cat-1"})").get<YContactCategory>(), json::exception);
    EXPECT_THROW(json::parse(R"({"category_id": 1})").get<YContactCategory>(), json::exception);
    EXPECT_THROW(json::parse(R"({"category_id": "c", "deleted": true})").get<YContactCategory>(), json::exception)
        << "the flag is text, not a boolean";

    const nlohmann::ordered_json encoded = category;
    EXPECT_EQ(encoded.dump(), R"({"category_id":"cat-1","category_name":"Family","deleted":"true"})");
    EXPECT_EQ(json(bare).dump(), R"({"category_id":"cat-2"})");
}

TEST(YCategoryResponseTest, CategoriesKeyIsRequired) {
    const auto response =
        json::parse(R"({"categories": [{"category_id": "a"}, {"category_id": "b", "deleted": "1"}]})")
            .get<YCategoryResponse>();
    ASSERT_EQ(response.categories.size(), 2u);
    EXPECT_EQ(response.categories[0].categoryId, "a");
    EXPECT_EQ(response.categories[1].isDeleted, "1");

    EXPECT_TRUE(json::parse(R"({"categories": []})").get<YCategoryResponse>().categories.empty());
    EXPECT_THROW(json::parse(R"({})").get<YCategoryResponse>(), json::exception);
    EXPECT_THROW(json::parse(R"({"categories": null})").get<YCategoryResponse>(), json::exception);
    EXPECT_THROW(json::parse(R"({"categories": [{"category_name": "x"}]})").get<YCategoryResponse>(), json::exception);
}

TEST(YContactUsageCountResponseTest, ContactsMapIsOptionalButMustHoldText) {
    const auto response = json::parse(R"({"contacts": {"c-1": "4", "c-2": "10"}})").get<YContactUsageCountResponse>();
    ASSERT_TRUE(response.contacts);
    EXPECT_EQ(response.contacts->at("c-2"), "10");
    EXPECT_EQ(json(response), json::parse(R"({"contacts": {"c-1": "4", "c-2": "10"}})"));

    EXPECT_FALSE(json::parse("{}").get<YContactUsageCountResponse>().contacts);
    EXPECT_FALSE(json::parse(R"({"contacts": null})").get<YContactUsageCountResponse>().contacts);
    EXPECT_THROW(json::parse(R"({"contacts": {"c-1": 4}})").get<YContactUsageCountResponse>(), json::exception);
    EXPECT_EQ(json(YContactUsageCountResponse{}).dump(), "{}");
}

}  // namespace
}  // namespace ycontacts

// The records' JSON coding, which the command-line tool prints: what decodes comes back out unchanged.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "Domain/ContactComparison.h"
#include "ycontacts/Contacts/Domain/Entities/YCategoryResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContactUsageCountResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"

namespace ycontacts {
namespace {

using nlohmann::json;
using testing::fullyPopulatedContact;
using testing::sameContactFields;

// Every required key of each record and nothing else.
const json minimalContact = json::parse(R"({"contactId": "c-1", "firstName": "Ann", "emails": [], "weightage": 3,
    "createdTime": 1700000000000, "isOrg": false, "phones": [], "urls": [], "IMs": [], "hasPhoto": true,
    "isEditable": false, "type": "user"})");
const json minimalSuggestion = json::parse(
    R"({"email": "a@x", "contactId": "c-1", "firstName": "Ann", "type": "user", "hasPhoto": true, "isOrg": false})");

json with(json document, const std::string& key, json value) {
    document[key] = std::move(value);
    return document;
}

// Decodes as T and encodes the result again.
template <class T>
json reencode(const json& document) {
    T target = document.get<T>();
    return json(target);
}
using Reencode = json (*)(const json&);

TEST(RecordJsonTest, DecodedRecordsEncodeBackWithAbsentAndNullOptionalsLeftOut) {
    // Each document encodes back as it was, or as `out` where one is given.
    const struct {
        Reencode reencode;
        json in, out;
    } rows[] = {
        {reencode<YContact>, minimalContact, nullptr},
        {reencode<YContact>, with(with(minimalContact, "middleName", nullptr), "weightage", -2),
         with(minimalContact, "weightage", -2)},
        {reencode<YSuggestionContact>, with(minimalSuggestion, "yuid", nullptr), minimalSuggestion},
        {reencode<YSuggestionContact>, with(with(minimalSuggestion, "lastName", "Lee"), "type", "group"), nullptr},
        {reencode<YCategoryResponse>,
         json::parse(R"({"categories": [{"category_id": "101", "category_name": "Friends", "deleted": "false"},
                                        {"category_id": "102", "category_name": null}]})"),
         json::parse(R"({"categories": [{"category_id": "101", "category_name": "Friends", "deleted": "false"},
                                        {"category_id": "102"}]})")},
        {reencode<YContactUsageCountResponse>, json::parse(R"({"contacts": {"100001": "7", "100002": "0"}})"), nullptr},
    };
    for (const auto& row : rows) EXPECT_EQ(row.reencode(row.in), row.out.is_null() ? row.in : row.out) << row.in.dump();
    EXPECT_EQ(json(YContact("c-1", "Ann", 1700000000000)), with(minimalContact, "weightage", 0));
}

TEST(RecordJsonTest, EveryFieldOfAContactSurvivesEachDocumentType) {
    const YContact original = fullyPopulatedContact();
    const json plain = original;
    EXPECT_TRUE(sameContactFields(original, plain.get<YContact>()));
    const nlohmann::ordered_json ordered = original;
    EXPECT_TRUE(sameContactFields(original, ordered.get<YContact>()));
    EXPECT_EQ(plain.size(), 27u) << "every field is encoded: the contact comparison of the tests relies on it";
    EXPECT_FALSE(sameContactFields(original, YContact("c-17", "Ann", 1700000000123)))
        << "the comparison helper must see more than the id";
}

}  // namespace
}  // namespace ycontacts

// The records' JSON coding: what decodes comes back out unchanged, and anything mistyped, misspelled or missing
// is refused without touching the target.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

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
        {reencode<YContact>, minimalContact},
        {reencode<YContact>, with(with(minimalContact, "middleName", nullptr), "weightage", -2),
         with(minimalContact, "weightage", -2)},
        {reencode<YSuggestionContact>, with(minimalSuggestion, "yuid", nullptr), minimalSuggestion},
        {reencode<YSuggestionContact>, with(with(minimalSuggestion, "lastName", "Lee"), "type", "group")},
        {reencode<YContactCategory>, json::parse(R"({"category_id": "c", "category_name": "F", "deleted": "true"})")},
        {reencode<YContactCategory>, json::parse(R"({"category_id": "c", "category_name": null})"),
         json::parse(R"({"category_id": "c"})")},
        {reencode<YCategoryResponse>, json::parse(R"({"categories": [{"category_id": "a", "deleted": "1"}]})")},
        {reencode<YContactUsageCountResponse>, json::parse(R"({"contacts": {"c-1": "4", "c-2": "10"}})")},
        {reencode<YContactUsageCountResponse>, json::parse(R"({"contacts": null})"), json::object()},
    };
    for (const auto& row : rows) EXPECT_EQ(row.reencode(row.in), row.out.is_null() ? row.in : row.out) << row.in.dump();
    EXPECT_EQ(json(YContact("c-1", "Ann", 1700000000000)), with(minimalContact, "weightage", 0));
}

TEST(RecordJsonTest, EveryFieldOfAContactSurvivesEachDocumentType) {
    const YContact original = fullyPopulatedContact();
    const json plain = original;
    EXPECT_TRUE(sameContactFields(original, plain.get<YContact>()));
    EXPECT_TRUE(sameContactFields(original, json::parse(plain.dump()).get<YContact>()));
    const nlohmann::ordered_json ordered = original;
    EXPECT_TRUE(sameContactFields(original, ordered.get<YContact>()));
    EXPECT_FALSE(sameContactFields(original, YContact("c-17", "Ann", 1700000000123)))
        << "the comparison helper must see more than the id";
}

TEST(RecordJsonTest, MissingMistypedAndMisspelledValuesAreRefusedAndLeaveTheTargetAlone) {
    std::vector<json> contacts{json::array()};
    for (const auto& item : minimalContact.items()) {
        json without = minimalContact;
        without.erase(item.key());
        contacts.push_back(without);
        contacts.push_back(with(minimalContact, item.key(), nullptr));
    }
    const std::vector<std::pair<std::string, json>> wrong = {
        {"weightage", "3"},
        {"weightage", 3.0},
        {"weightage", 4294967296LL},
        {"createdTime", "1700"},
        {"createdTime", 1.5},
        {"isOrg", 1},
        {"hasPhoto", "true"},
        {"contactId", 42},
        {"firstName", json::array()},
        {"emails", json::object()},
        {"emails", json::array({"ann@example.com"})},
        {"type", "USER"},
        {"type", 1},
        {"phones", json::parse(R"([{"phoneNumber": "1"}])")},
        {"phones", json::parse(R"([{"phoneNumber": "1", "phoneType": "other"}])")},
        {"urls", json::parse(R"([{"url": "u", "type": "flickr"}])")},
        {"urls", json::parse(R"([{"url": "u", "type": "linkedin"}])")},
        {"IMs", json::parse(R"([{"imLink": "x", "imType": "gtalk"}])")},
        {"gender", "Female"},
        {"middleName", 5},
        {"birthDate", "12"},
        {"categories", "c1"},
        {"address", "1 Main St"},
        {"primaryEmail", "ann@example.com"},
        {"workInfo", {{"company", 1}}}};
    for (const auto& [key, value] : wrong) contacts.push_back(with(minimalContact, key, value));
    for (const auto& document : contacts) {
        SCOPED_TRACE(document.dump());
        YContact target("keep", "Kept", 5);
        EXPECT_THROW(document.get_to(target), json::exception);
        EXPECT_EQ(target.contactId, "keep");
        EXPECT_EQ(target.firstName, "Kept");
    }

    for (const auto& item : minimalSuggestion.items()) {
        json without = minimalSuggestion;
        without.erase(item.key());
        EXPECT_THROW(without.get<YSuggestionContact>(), json::exception) << without.dump();
    }
    for (const char* text :
         {R"({"categoryId": "c"})", R"({"category_id": 1})", R"({"category_id": "c", "deleted": true})"}) {
        EXPECT_THROW(json::parse(text).get<YContactCategory>(), json::exception) << text;
    }
    for (const char* text : {"{}", R"({"categories": null})", R"({"categories": [{"category_name": "x"}]})"}) {
        EXPECT_THROW(json::parse(text).get<YCategoryResponse>(), json::exception) << text;
    }
    EXPECT_THROW(json::parse(R"({"contacts": {"c-1": 4}})").get<YContactUsageCountResponse>(), json::exception);
}

}  // namespace
}  // namespace ycontacts

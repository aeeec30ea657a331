#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Domain/ContactComparison.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"

namespace ycontacts {
namespace {

using nlohmann::json;
using testing::fullyPopulatedContact;
using testing::sameContactFields;

// The smallest document that decodes: every required key and nothing else.
json minimalContact() {
    return json::parse(R"({
        "contactId": "c-1", "firstName": "Ann", "emails": [], "weightage": 3, "createdTime": 1700000000000,
        "isOrg": false, "phones": [], "urls": [], "IMs": [], "hasPhoto": true, "isEditable": false,
        "type": "user"
    })");
}

json with(json document, const std::string& key, json value) {
    document[key] = std::move(value);
    return document;
}

TEST(YContactJsonTest, MinimalDocumentDecodesWithOptionalsAbsent) {
    const auto contact = minimalContact().get<YContact>();
    EXPECT_EQ(contact.contactId, "c-1");
    EXPECT_EQ(contact.firstName, "Ann");
    EXPECT_EQ(contact.weightage, 3);
    EXPECT_EQ(contact.createdTime, 1700000000000);
    EXPECT_FALSE(contact.middleName || contact.gender || contact.address || contact.categories ||
                 contact.birthYear || contact.displayName);
}

TEST(YContactJsonTest, EveryRequiredKeyMustBePresent) {
    const std::vector<std::string> required = {"contactId", "firstName", "emails",   "weightage",  "createdTime",
                                               "isOrg",     "phones",    "urls",     "IMs",        "hasPhoto",
                                               "isEditable", "type"};
    ASSERT_EQ(required.size(), minimalContact().size());
    for (const auto& key : required) {
        json document = minimalContact();
        document.erase(key);
        EXPECT_THROW(document.get<YContact>(), json::exception) << "without " << key;
        EXPECT_THROW(with(minimalContact(), key, nullptr).get<YContact>(), json::exception) << key << " null";
    }
}

TEST(YContactJsonTest, RequiredValuesAreNotConverted) {
    const std::vector<std::pair<std::string, json>> wrong = {
        {"weightage", "3"},       {"weightage", 3.0},          {"weightage", 4294967296LL},
        {"createdTime", "1700"},  {"createdTime", 1.5},        {"isOrg", 1},
        {"hasPhoto", "true"},     {"contactId", 42},           {"firstName", json::array()},
        {"emails", json::object()}, {"emails", json::array({"ann@example.com"})},
        {"phones", json::parse(R"([{"phoneNumber": "1"}])")},      {"type", "USER"},
        {"type", 1},
    };
    for (const auto& [key, value] : wrong) {
        EXPECT_THROW(with(minimalContact(), key, value).get<YContact>(), json::exception)
            << key << " = " << value.dump();
    }
    EXPECT_THROW(json::array().get<YContact>(), json::exception);
    EXPECT_EQ(with(minimalContact(), "weightage", -2).get<YContact>().weightage, -2);
}

TEST(YContactJsonTest, OptionalKeysAreReadOnlyWhenPresentAndNotNull) {
    json document = minimalContact();
    document["middleName"] = nullptr;
    document["gender"] = nullptr;
    document["address"] = nullptr;
    document["birthYear"] = nullptr;
    document["lastName"] = "Lee";
    document["birthMonth"] = 2;
    const auto contact = document.get<YContact>();
    EXPECT_FALSE(contact.middleName || contact.gender || contact.address || contact.birthYear);
    EXPECT_EQ(contact.lastName, "Lee");
    EXPECT_EQ(contact.birthMonth, 2);

    // Present optionals must still have the right type.
    for (const auto& [key, value] : std::vector<std::pair<std::string, json>>{
             {"middleName", 5}, {"birthDate", "12"}, {"categories", "c1"}, {"address", "1 Main St"},
             {"primaryEmail", "ann@example.com"}, {"workInfo", {{"company", 1}}}}) {
        EXPECT_THROW(with(minimalContact(), key, value).get<YContact>(), json::exception)
            << key << " = " << value.dump();
    }
}

TEST(YContactJsonTest, EnumerationsDecodeOnlyFromTheirExactRawStrings) {
    const auto urlDocument = [](const std::string& type) {
        return with(minimalContact(), "urls", json::array({{{"url", "u"}, {"type", type}}}));
    };
    EXPECT_EQ(urlDocument("flikr").get<YContact>().urls.at(0).type, YContact::URLType::flikr);
    EXPECT_EQ(urlDocument("linkedIn").get<YContact>().urls.at(0).type, YContact::URLType::linkedIn);
    for (const std::string spelling : {"flickr", "Flikr", "FLIKR", "linkedin", "others", ""}) {
        EXPECT_THROW(urlDocument(spelling).get<YContact>(), json::exception) << spelling;
    }

    const auto phoneDocument = [](const std::string& type) {
        return with(minimalContact(), "phones", json::array({{{"phoneNumber", "1"}, {"phoneType", type}}}));
    };
    EXPECT_EQ(phoneDocument("others").get<YContact>().phones.at(0).phoneType, YContact::PhoneType::others);
    EXPECT_THROW(phoneDocument("other").get<YContact>(), json::exception);

    EXPECT_EQ(with(minimalContact(), "gender", "female").get<YContact>().gender, YContact::Gender::female);
    EXPECT_THROW(with(minimalContact(), "gender", "Female").get<YContact>(), json::exception);
    EXPECT_THROW(with(minimalContact(), "IMs", json::array({{{"imLink", "x"}, {"imType", "gtalk"}}})).get<YContact>(),
                 json::exception);
}

TEST(YContactJsonTest, FailedDecodeLeavesTheTargetUnchanged) {
    YContact target("keep", "Kept", 5);
    EXPECT_THROW(with(minimalContact(), "type", "robot").get_to(target), json::exception);
    EXPECT_EQ(target.contactId, "keep");
    EXPECT_EQ(target.firstName, "Kept");
    EXPECT_EQ(target.type, YContactType::user);
}

TEST(YContactJsonTest, FullyPopulatedContactSurvivesEncodeAndDecode) {
    const YContact original = fullyPopulatedContact();

    const json plain = original;
    EXPECT_TRUE(sameContactFields(original, plain.get<YContact>()));

    const auto throughText = json::parse(plain.dump()).get<YContact>();
    EXPECT_TRUE(sameContactFields(original, throughText));

    const nlohmann::ordered_json ordered = original;
    EXPECT_TRUE(sameContactFields(original, ordered.get<YContact>()));

    EXPECT_FALSE(sameContactFields(original, YContact("c-17", "Ann", 1700000000123)))
        << "the comparison helper must see more than the id";
}

TEST(YContactJsonTest, EncodingWritesFieldOrderRawStringsAndOnlyPresentOptionals) {
    const nlohmann::ordered_json full = fullyPopulatedContact();
    std::vector<std::string> keys;
    for (const auto& item : full.items()) keys.push_back(item.key());
    const std::vector<std::string> fieldOrder = {
        "contactId", "firstName", "middleName", "lastName",   "nickName",  "primaryEmail", "emails",
        "contactYuid", "weightage", "createdTime", "isOrg",   "gender",    "phones",       "urls",
        "IMs",       "photoURL",  "hasPhoto",   "address",    "workInfo",  "categories",   "birthDate",
        "birthMonth", "birthYear", "notes",     "isEditable", "type",      "displayName"};
    EXPECT_EQ(keys, fieldOrder);
    EXPECT_EQ(full["urls"][0], (nlohmann::ordered_json{{"url", "https://flickr.example/ann"}, {"type", "flikr"}}));
    EXPECT_EQ(full["phones"][1]["phoneType"], "fax");
    EXPECT_EQ(full["IMs"][0]["imType"], "jabber");
    EXPECT_EQ(full["gender"], "female");
    EXPECT_EQ(full["type"], "group");
    EXPECT_EQ(full["primaryEmail"], (nlohmann::ordered_json{{"emailId", "ann@example.com"}, {"isPrimary", true}}));
    EXPECT_EQ(full["categories"], nlohmann::ordered_json::parse(R"([{"categoryId":"cat-1"},{"categoryId":"cat-2"}])"));
    EXPECT_EQ(full["workInfo"]["address"], nlohmann::ordered_json::parse(R"({"city":"Chicago"})"));

    // The designated constructor's defaults, and no optional field at all.
    const json sparse = YContact("c-2", "Bo", 9);
    EXPECT_EQ(sparse, json::parse(R"({
        "contactId": "c-2", "firstName": "Bo", "emails": [], "weightage": 0, "createdTime": 9, "isOrg": false,
        "phones": [], "urls": [], "IMs": [], "hasPhoto": true, "isEditable": false, "type": "user"
    })"));
}

}  // namespace
}  // namespace ycontacts

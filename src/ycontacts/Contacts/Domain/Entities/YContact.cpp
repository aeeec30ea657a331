#include "ycontacts/Contacts/Domain/Entities/YContact.h"

#include <chrono>
#include <utility>

#include "ycontacts/Contacts/Domain/Entities/YTemporaryId.h"

namespace ycontacts {

using jsoncoding::decodeIfPresent;
using jsoncoding::decodeRequired;
using jsoncoding::encodeIfPresent;
using jsoncoding::requireObject;

YContact::Email::Email() : isPrimary(false) {}

YContact::Email::Email(std::string emailId) : emailId(std::move(emailId)), isPrimary(false) {}

YContact::Phone::Phone(std::string phoneNumber, PhoneType phoneType)
    : phoneNumber(std::move(phoneNumber)), phoneType(phoneType) {}

YContact::IM::IM(std::string imLink, IMType imType) : imLink(std::move(imLink)), imType(imType) {}

YContact::URL::URL(std::string url, URLType type) : url(std::move(url)), type(type) {}

YContact::Category::Category(std::string categoryId) : categoryId(std::move(categoryId)) {}

YContact::YContact(std::string contactId, std::string firstName, std::int64_t createdTime)
    : contactId(std::move(contactId)), firstName(std::move(firstName)), createdTime(createdTime) {}

YContact::YContact(std::string firstName)
    : YContact(generateRandomContactId(), std::move(firstName),
               std::chrono::duration_cast<std::chrono::seconds>(
                   std::chrono::system_clock::now().time_since_epoch())
                   .count()) {}

std::string YContact::generateRandomContactId() {
    return makeTemporaryId("TempContactId-");
}

std::string YContact::getDisplayName() const {
    if (displayName) return *displayName;
    std::string name = firstName;
    if (middleName) name += " " + *middleName;
    if (lastName) name += " " + *lastName;
    return name;
}

template <JsonDocument J>
void to_json(J& json, const YContact::Email& value) {
    json = J::object();
    json["emailId"] = value.emailId;
    json["isPrimary"] = value.isPrimary;
}

template <JsonDocument J>
void from_json(const J& json, YContact::Email& value) {
    requireObject(json, "Email");
    YContact::Email decoded(decodeRequired<std::string>(json, "emailId"));
    decoded.isPrimary = decodeRequired<bool>(json, "isPrimary");
    value = std::move(decoded);
}

template <JsonDocument J>
void to_json(J& json, const YContact::Phone& value) {
    json = J::object();
    json["phoneNumber"] = value.phoneNumber;
    json["phoneType"] = value.phoneType;
}

template <JsonDocument J>
void from_json(const J& json, YContact::Phone& value) {
    requireObject(json, "Phone");
    value = YContact::Phone(decodeRequired<std::string>(json, "phoneNumber"),
                            decodeRequired<YContact::PhoneType>(json, "phoneType"));
}

template <JsonDocument J>
void to_json(J& json, const YContact::IM& value) {
    json = J::object();
    json["imLink"] = value.imLink;
    json["imType"] = value.imType;
}

template <JsonDocument J>
void from_json(const J& json, YContact::IM& value) {
    requireObject(json, "IM");
    value = YContact::IM(decodeRequired<std::string>(json, "imLink"),
                         decodeRequired<YContact::IMType>(json, "imType"));
}

template <JsonDocument J>
void to_json(J& json, const YContact::URL& value) {
    json = J::object();
    json["url"] = value.url;
    json["type"] = value.type;
}

template <JsonDocument J>
void from_json(const J& json, YContact::URL& value) {
    requireObject(json, "URL");
    value = YContact::URL(decodeRequired<std::string>(json, "url"),
                          decodeRequired<YContact::URLType>(json, "type"));
}

template <JsonDocument J>
void to_json(J& json, const YContact::Address& value) {
    json = J::object();
    encodeIfPresent(json, "streetAddress1", value.streetAddress1);
    encodeIfPresent(json, "streetAddress2", value.streetAddress2);
    encodeIfPresent(json, "city", value.city);
    encodeIfPresent(json, "state", value.state);
    encodeIfPresent(json, "country", value.country);
    encodeIfPresent(json, "postalCode", value.postalCode);
}

template <JsonDocument J>
void from_json(const J& json, YContact::Address& value) {
    requireObject(json, "Address");
    YContact::Address decoded;
    decoded.streetAddress1 = decodeIfPresent<std::string>(json, "streetAddress1");
    decoded.streetAddress2 = decodeIfPresent<std::string>(json, "streetAddress2");
    decoded.city = decodeIfPresent<std::string>(json, "city");
    decoded.state = decodeIfPresent<std::string>(json, "state");
    decoded.country = decodeIfPresent<std::string>(json, "country");
    decoded.postalCode = decodeIfPresent<std::string>(json, "postalCode");
    value = std::move(decoded);
}

template <JsonDocument J>
void to_json(J& json, const YContact::WorkInfo& value) {
    json = J::object();
    encodeIfPresent(json, "company", value.company);
    encodeIfPresent(json, "jobTitle", value.jobTitle);
    encodeIfPresent(json, "designation", value.designation);
    encodeIfPresent(json, "address", value.address);
}

template <JsonDocument J>
void from_json(const J& json, YContact::WorkInfo& value) {
    requireObject(json, "WorkInfo");
    YContact::WorkInfo decoded;
    decoded.company = decodeIfPresent<std::string>(json, "company");
    decoded.jobTitle = decodeIfPresent<std::string>(json, "jobTitle");
    decoded.designation = decodeIfPresent<std::string>(json, "designation");
    decoded.address = decodeIfPresent<YContact::Address>(json, "address");
    value = std::move(decoded);
}

template <JsonDocument J>
void to_json(J& json, const YContact::Category& value) {
    json = J::object();
    json["categoryId"] = value.categoryId;
}

template <JsonDocument J>
void from_json(const J& json, YContact::Category& value) {
    requireObject(json, "Category");
    value = YContact::Category(decodeRequired<std::string>(json, "categoryId"));
}

template <JsonDocument J>
void to_json(J& json, const YContact& value) {
    json = J::object();
    json["contactId"] = value.contactId;
    json["firstName"] = value.firstName;
    encodeIfPresent(json, "middleName", value.middleName);
    encodeIfPresent(json, "lastName", value.lastName);
    encodeIfPresent(json, "nickName", value.nickName);
    encodeIfPresent(json, "primaryEmail", value.primaryEmail);
    json["emails"] = value.emails;
    encodeIfPresent(json, "contactYuid", value.contactYuid);
    json["weightage"] = value.weightage;
    json["createdTime"] = value.createdTime;
    json["isOrg"] = value.isOrg;
    encodeIfPresent(json, "gender", value.gender);
    json["phones"] = value.phones;
    json["urls"] = value.urls;
    json["IMs"] = value.IMs;
    encodeIfPresent(json, "photoURL", value.photoURL);
    json["hasPhoto"] = value.hasPhoto;
    encodeIfPresent(json, "address", value.address);
    encodeIfPresent(json, "workInfo", value.workInfo);
    encodeIfPresent(json, "categories", value.categories);
    encodeIfPresent(json, "birthDate", value.birthDate);
    encodeIfPresent(json, "birthMonth", value.birthMonth);
    encodeIfPresent(json, "birthYear", value.birthYear);
    encodeIfPresent(json, "notes", value.notes);
    json["isEditable"] = value.isEditable;
    json["type"] = value.type;
    encodeIfPresent(json, "displayName", value.displayName);
}

template <JsonDocument J>
void from_json(const J& json, YContact& value) {
    requireObject(json, "YContact");
    YContact decoded(decodeRequired<std::string>(json, "contactId"), decodeRequired<std::string>(json, "firstName"),
                     decodeRequired<std::int64_t>(json, "createdTime"));
    decoded.middleName = decodeIfPresent<std::string>(json, "middleName");
    decoded.lastName = decodeIfPresent<std::string>(json, "lastName");
    decoded.nickName = decodeIfPresent<std::string>(json, "nickName");
    decoded.primaryEmail = decodeIfPresent<YContact::Email>(json, "primaryEmail");
    decoded.emails = decodeRequired<std::vector<YContact::Email>>(json, "emails");
    decoded.contactYuid = decodeIfPresent<std::string>(json, "contactYuid");
    decoded.weightage = decodeRequired<int>(json, "weightage");
    decoded.isOrg = decodeRequired<bool>(json, "isOrg");
    decoded.gender = decodeIfPresent<YContact::Gender>(json, "gender");
    decoded.phones = decodeRequired<std::vector<YContact::Phone>>(json, "phones");
    decoded.urls = decodeRequired<std::vector<YContact::URL>>(json, "urls");
    decoded.IMs = decodeRequired<std::vector<YContact::IM>>(json, "IMs");
    decoded.photoURL = decodeIfPresent<std::string>(json, "photoURL");
    decoded.hasPhoto = decodeRequired<bool>(json, "hasPhoto");
    decoded.address = decodeIfPresent<YContact::Address>(json, "address");
    decoded.workInfo = decodeIfPresent<YContact::WorkInfo>(json, "workInfo");
    decoded.categories = decodeIfPresent<std::vector<YContact::Category>>(json, "categories");
    decoded.birthDate = decodeIfPresent<int>(json, "birthDate");
    decoded.birthMonth = decodeIfPresent<int>(json, "birthMonth");
    decoded.birthYear = decodeIfPresent<int>(json, "birthYear");
    decoded.notes = decodeIfPresent<std::string>(json, "notes");
    decoded.isEditable = decodeRequired<bool>(json, "isEditable");
    decoded.type = decodeRequired<YContactType>(json, "type");
    decoded.displayName = decodeIfPresent<std::string>(json, "displayName");
    value = std::move(decoded);
}

// The coding above exists for exactly the two JSON document types.
template void to_json(nlohmann::json&, const YContact::Email&);
template void to_json(nlohmann::ordered_json&, const YContact::Email&);
template void from_json(const nlohmann::json&, YContact::Email&);
template void from_json(const nlohmann::ordered_json&, YContact::Email&);
template void to_json(nlohmann::json&, const YContact::Phone&);
template void to_json(nlohmann::ordered_json&, const YContact::Phone&);
template void from_json(const nlohmann::json&, YContact::Phone&);
template void from_json(const nlohmann::ordered_json&, YContact::Phone&);
template void to_json(nlohmann::json&, const YContact::IM&);
template void to_json(nlohmann::ordered_json&, const YContact::IM&);
template void from_json(const nlohmann::json&, YContact::IM&);
template void from_json(const nlohmann::ordered_json&, YContact::IM&);
template void to_json(nlohmann::json&, const YContact::URL&);
template void to_json(nlohmann::ordered_json&, const YContact::URL&);
template void from_json(const nlohmann::json&, YContact::URL&);
template void from_json(const nlohmann::ordered_json&, YContact::URL&);
template void to_json(nlohmann::json&, const YContact::Address&);
template void to_json(nlohmann::ordered_json&, const YContact::Address&);
template void from_json(const nlohmann::json&, YContact::Address&);
template void from_json(const nlohmann::ordered_json&, YContact::Address&);
template void to_json(nlohmann::json&, const YContact::WorkInfo&);
template void to_json(nlohmann::ordered_json&, const YContact::WorkInfo&);
template void from_json(const nlohmann::json&, YContact::WorkInfo&);
template void from_json(const nlohmann::ordered_json&, YContact::WorkInfo&);
template void to_json(nlohmann::json&, const YContact::Category&);
template void to_json(nlohmann::ordered_json&, const YContact::Category&);
template void from_json(const nlohmann::json&, YContact::Category&);
template void from_json(const nlohmann::ordered_json&, YContact::Category&);
template void to_json(nlohmann::json&, const YContact&);
template void to_json(nlohmann::ordered_json&, const YContact&);
template void from_json(const nlohmann::json&, YContact&);
template void from_json(const nlohmann::ordered_json&, YContact&);

}  // namespace ycontacts

#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"

#include <utility>

namespace ycontacts {

using jsoncoding::decodeIfPresent;
using jsoncoding::decodeRequired;
using jsoncoding::encodeIfPresent;

YSuggestionContact::YSuggestionContact(std::string contactId, std::string email, std::string firstName, bool isOrg)
    : email(std::move(email)), contactId(std::move(contactId)), firstName(std::move(firstName)), isOrg(isOrg) {}

template <JsonDocument J>
void to_json(J& json, const YSuggestionContact& value) {
    json = J::object();
    json["email"] = value.email;
    json["contactId"] = value.contactId;
    encodeIfPresent(json, "yuid", value.yuid);
    json["firstName"] = value.firstName;
    encodeIfPresent(json, "middleName", value.middleName);
    encodeIfPresent(json, "lastName", value.lastName);
    encodeIfPresent(json, "nickName", value.nickName);
    json["type"] = value.type;
    json["hasPhoto"] = value.hasPhoto;
    json["isOrg"] = value.isOrg;
}

template <JsonDocument J>
void from_json(const J& json, YSuggestionContact& value) {
    jsoncoding::requireObject(json, "YSuggestionContact");
    YSuggestionContact decoded;
    decoded.email = decodeRequired<std::string>(json, "email");
    decoded.contactId = decodeRequired<std::string>(json, "contactId");
    decoded.yuid = decodeIfPresent<std::string>(json, "yuid");
    decoded.firstName = decodeRequired<std::string>(json, "firstName");
    decoded.middleName = decodeIfPresent<std::string>(json, "middleName");
    decoded.lastName = decodeIfPresent<std::string>(json, "lastName");
    decoded.nickName = decodeIfPresent<std::string>(json, "nickName");
    decoded.type = decodeRequired<YContactType>(json, "type");
    decoded.hasPhoto = decodeRequired<bool>(json, "hasPhoto");
    decoded.isOrg = decodeRequired<bool>(json, "isOrg");
    value = std::move(decoded);
}

template void to_json(nlohmann::json&, const YSuggestionContact&);
template void to_json(nlohmann::ordered_json&, const YSuggestionContact&);
template void from_json(const nlohmann::json&, YSuggestionContact&);
template void from_json(const nlohmann::ordered_json&, YSuggestionContact&);

}  // namespace ycontacts

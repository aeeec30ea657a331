#include "sample_server/SampleWireJson.h"

#include <cctype>
#include <sstream>

namespace sample_server {
namespace {

std::string percentEncode(const std::string& text) {
    static const char* hex = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (std::isalnum(byte) != 0 || c == '-' || c == '_' || c == '.' || c == '~') {
            encoded += c;
        } else {
            encoded += '%';
            encoded += hex[byte >> 4];
            encoded += hex[byte & 0x0F];
        }
    }
    return encoded;
}

void putOptional(WireJson& json, const char* key, const std::optional<std::string>& value) {
    if (value) json[key] = *value;
}

WireJson addressToWire(const SampleAddress& address) {
    WireJson json = WireJson::object();
    const std::pair<const char*, const std::string*> fields[] = {
        {"street1", &address.street1}, {"street2", &address.street2},   {"city", &address.city},
        {"state", &address.state},     {"country", &address.country}, {"postal_code", &address.postalCode},
    };
    // Empty parts are left out, as a server that stores only what was entered would do.
    for (const auto& [key, value] : fields)
        if (!value->empty()) json[key] = *value;
    return json;
}

WireJson typedValuesToWire(const std::vector<SampleTypedValue>& values, const char* valueKey) {
    WireJson list = WireJson::array();
    for (const SampleTypedValue& value : values) list.push_back({{valueKey, value.value}, {"type", value.type}});
    return list;
}

std::string photoURL(const SampleContact& contact, const std::string& baseURL) {
    if (contact.yuid)
        return baseURL + "/file/download?ID=" + percentEncode(*contact.yuid) + "&t=" + contact.contactType +
               "&API=true&fs=medium";
    return baseURL + "/syncapi/contact/photo?contactId=" + percentEncode(contact.contactId) +
           "&isOrg=" + (contact.isOrg ? "true" : "false") + "&photosize=normal";
}

// Readers for contactFromWire: each returns false when the key is present with the wrong type.
bool readText(const nlohmann::json& object, const char* key, std::optional<std::string>& out) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_string()) return false;
    out = found->get<std::string>();
    return true;
}

bool readText(const nlohmann::json& object, const char* key, std::string& out) {
    std::optional<std::string> value;
    if (!readText(object, key, value)) return false;
    if (value) out = *value;
    return true;
}

bool readBool(const nlohmann::json& object, const char* key, bool& out) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_boolean()) return false;
    out = found->get<bool>();
    return true;
}

template <typename Integer>
bool readInteger(const nlohmann::json& object, const char* key, Integer& out) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_number_integer()) return false;
    out = found->get<Integer>();
    return true;
}

bool readTypedValues(const nlohmann::json& object, const char* key, const char* valueKey,
                     std::vector<SampleTypedValue>& out) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_array()) return false;
    for (const nlohmann::json& entry : *found) {
        if (!entry.is_object()) return false;
        SampleTypedValue value;
        if (!readText(entry, valueKey, value.value) || !readText(entry, "type", value.type)) return false;
        out.push_back(std::move(value));
    }
    return true;
}

bool readAddress(const nlohmann::json& object, const char* key, std::optional<SampleAddress>& out) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_object()) return false;
    SampleAddress address;
    if (!readText(*found, "street1", address.street1) || !readText(*found, "street2", address.street2) ||
        !readText(*found, "city", address.city) || !readText(*found, "state", address.state) ||
        !readText(*found, "country", address.country) || !readText(*found, "postal_code", address.postalCode))
        return false;
    out = address;
    return true;
}

bool readEmails(const nlohmann::json& object, std::vector<SampleEmail>& out) {
    const auto found = object.find("emails");
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_array()) return false;
    for (const nlohmann::json& entry : *found) {
        if (!entry.is_object()) return false;
        SampleEmail email;
        if (!readText(entry, "email_id", email.address) || !readBool(entry, "is_primary", email.isPrimary))
            return false;
        out.push_back(std::move(email));
    }
    return true;
}

bool readCategories(const nlohmann::json& object, std::vector<std::string>& out) {
    const auto found = object.find("categories");
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_array()) return false;
    for (const nlohmann::json& entry : *found) {
        if (!entry.is_string()) return false;
        out.push_back(entry.get<std::string>());
    }
    return true;
}

bool readBirthday(const nlohmann::json& object, std::optional<SampleBirthday>& out) {
    const auto found = object.find("birthday");
    if (found == object.end() || found->is_null()) return true;
    if (!found->is_object()) return false;
    SampleBirthday birthday;
    int year = 0;
    if (!readInteger(*found, "date", birthday.date) || !readInteger(*found, "month", birthday.month) ||
        !readInteger(*found, "year", year))
        return false;
    if (found->contains("year") && !(*found)["year"].is_null()) birthday.year = year;
    out = birthday;
    return true;
}

}  // namespace

WireSections WireSections::fromInclude(const std::optional<std::string>& include) {
    WireSections sections;
    if (!include) return sections;
    sections = WireSections{false, false, false, false, false, false};
    std::stringstream stream(*include);
    std::string name;
    while (std::getline(stream, name, ',')) {
        if (name == "emails") sections.emails = true;
        else if (name == "phones") sections.phones = true;
        else if (name == "urls") sections.urls = true;
        else if (name == "usage_count") sections.usageCount = true;
        else if (name == "categories") sections.categories = true;
        else if (name == "show_deleted") sections.showDeleted = true;
    }
    return sections;
}

WireJson contactToWire(const SampleContact& contact, const std::string& baseURL, const WireSections& sections) {
    WireJson json = WireJson::object();
    json["contact_id"] = contact.contactId;
    json["first_name"] = contact.firstName;
    putOptional(json, "middle_name", contact.middleName);
    putOptional(json, "last_name", contact.lastName);
    putOptional(json, "nick_name", contact.nickName);
    putOptional(json, "display_name", contact.displayName);
    json["created_time"] = contact.createdTimeMs;
    json["updated_time"] = contact.updatedTimeMs;
    if (sections.usageCount) json["usage_count"] = contact.usageCount;
    json["contact_type"] = contact.contactType;
    putOptional(json, "yuid", contact.yuid);
    if (sections.emails) {
        WireJson emails = WireJson::array();
        for (const SampleEmail& email : contact.emails)
            emails.push_back({{"email_id", email.address}, {"is_primary", email.isPrimary}});
        json["emails"] = std::move(emails);
    }
    if (sections.phones) json["phones"] = typedValuesToWire(contact.phones, "number");
    if (sections.urls) json["urls"] = typedValuesToWire(contact.urls, "url");
    json["ims"] = typedValuesToWire(contact.ims, "im");
    json["has_photo"] = contact.hasPhoto;
    if (contact.hasPhoto) json["photo_url"] = photoURL(contact, baseURL);
    putOptional(json, "gender", contact.gender);
    putOptional(json, "notes", contact.notes);
    json["is_editable"] = contact.isEditable;
    putOptional(json, "company", contact.company);
    putOptional(json, "job_title", contact.jobTitle);
    putOptional(json, "designation", contact.designation);
    if (contact.address) json["address"] = addressToWire(*contact.address);
    if (contact.workAddress) json["work_address"] = addressToWire(*contact.workAddress);
    if (sections.categories) json["categories"] = contact.categories;
    if (contact.birthday) {
        WireJson birthday = {{"date", contact.birthday->date}, {"month", contact.birthday->month}};
        if (contact.birthday->year) birthday["year"] = *contact.birthday->year;
        json["birthday"] = std::move(birthday);
    }
    return json;
}

WireJson tombstoneToWire(const SampleTombstone& tombstone) {
    return {{"contact_id", tombstone.contactId}, {"is_deleted", true}};
}

WireJson pageToWire(const ContactPage& page, int pageNumber, int perPage, const std::string& baseURL,
                    const WireSections& sections) {
    WireJson contacts = WireJson::array();
    for (const auto& item : page.items) {
        if (const auto* contact = std::get_if<SampleContact>(&item))
            contacts.push_back(contactToWire(*contact, baseURL, sections));
        else
            contacts.push_back(tombstoneToWire(std::get<SampleTombstone>(item)));
    }
    WireJson json = WireJson::object();
    json["contacts"] = std::move(contacts);
    json["has_more"] = page.hasMore;
    json["page"] = pageNumber;
    json["per_page"] = perPage;
    json["total"] = page.total;
    return json;
}

std::optional<SampleContact> contactFromWire(const nlohmann::json& object) {
    if (!object.is_object()) return std::nullopt;
    SampleContact contact;
    std::optional<std::string> contactType;
    const bool readable =
        readText(object, "contact_id", contact.contactId) && readText(object, "first_name", contact.firstName) &&
        readText(object, "middle_name", contact.middleName) && readText(object, "last_name", contact.lastName) &&
        readText(object, "nick_name", contact.nickName) && readText(object, "display_name", contact.displayName) &&
        readInteger(object, "created_time", contact.createdTimeMs) &&
        readInteger(object, "usage_count", contact.usageCount) && readText(object, "contact_type", contactType) &&
        readText(object, "yuid", contact.yuid) && readEmails(object, contact.emails) &&
        readTypedValues(object, "phones", "number", contact.phones) &&
        readTypedValues(object, "urls", "url", contact.urls) && readTypedValues(object, "ims", "im", contact.ims) &&
        readBool(object, "has_photo", contact.hasPhoto) && readText(object, "gender", contact.gender) &&
        readText(object, "notes", contact.notes) && readBool(object, "is_editable", contact.isEditable) &&
        readText(object, "company", contact.company) && readText(object, "job_title", contact.jobTitle) &&
        readText(object, "designation", contact.designation) && readAddress(object, "address", contact.address) &&
        readAddress(object, "work_address", contact.workAddress) && readCategories(object, contact.categories) &&
        readBirthday(object, contact.birthday);
    if (!readable) return std::nullopt;
    if (contactType) {
        if (*contactType != "user" && *contactType != "group") return std::nullopt;
        contact.contactType = *contactType;
    }
    return contact;
}

WireJson errorBody(int statusCode, const std::string& message) {
    return {{"errors", WireJson::array({{{"message", message}}})}, {"status_code", statusCode}};
}

WireJson categoriesToWire(const std::vector<SampleCategory>& categories) {
    WireJson list = WireJson::array();
    for (const SampleCategory& category : categories)
        list.push_back({{"category_id", category.categoryId},
                        {"category_name", category.categoryName},
                        {"deleted", category.deleted ? "true" : "false"}});
    return {{"categories", std::move(list)}};
}

WireJson usageCountsToWire(const std::vector<std::pair<std::string, int>>& counts) {
    WireJson list = WireJson::array();
    for (const auto& [contactId, count] : counts) list.push_back({{"contact_id", contactId}, {"usage_count", count}});
    return {{"contacts", std::move(list)}};
}

}  // namespace sample_server

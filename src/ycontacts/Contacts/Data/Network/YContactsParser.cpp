#include "ycontacts/Contacts/Data/Network/YContactsParser.h"

#include <cmath>
#include <limits>
#include <new>
#include <string>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace {

using simdjson::dom::element;
using simdjson::dom::object;

// The body's top-level object. Reading needs buffers many times the body's size; a parser made per body
// takes them from the system and hands them back every time, and the page faults cost far more than the
// parse itself. So each thread keeps one parser and one padded copy of the body, sized for the largest body
// it has read. What this returns stays valid until the same thread reads its next body.
std::optional<object> readBody(const YContactsParserContract::Body& data) {
    if (!data || data->empty()) {
        Logger::shared().warning("JSON body not read: it is empty");
        return std::nullopt;
    }
    thread_local simdjson::dom::parser parser;
    thread_local std::vector<char> padded;
    try {
        padded.assign(data->begin(), data->end());
        padded.resize(data->size() + simdjson::SIMDJSON_PADDING);
    } catch (const std::bad_alloc&) {
        Logger::shared().error("JSON body not read: no memory for " + std::to_string(data->size()) + " bytes");
        return std::nullopt;
    }
    element root;
    if (const auto error = parser.parse(padded.data(), data->size(), false).get(root)) {
        Logger::shared().warning("JSON body not read (" + std::to_string(data->size()) +
                                 " bytes): " + simdjson::error_message(error));
        return std::nullopt;
    }
    object result;
    if (root.get_object().get(result)) {
        Logger::shared().warning("JSON body is not an object (" + std::to_string(data->size()) + " bytes)");
        return std::nullopt;
    }
    return result;
}

// Each reader gives the value only when it has the expected type; anything else counts as missing, so one
// odd key never costs the whole contact.
std::optional<std::string> asText(element value) {
    std::string_view text;
    if (value.get_string().get(text)) return std::nullopt;
    return std::string(text);
}

std::optional<std::int64_t> asInteger(element value) {
    std::int64_t number = 0;
    if (value.get_int64().get(number)) return std::nullopt;
    return number;
}

std::optional<int> asSmallInteger(element value) {
    const auto number = asInteger(value);
    if (!number || *number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(*number);
}

std::optional<bool> asBoolean(element value) {
    bool flag = false;
    if (value.get_bool().get(flag)) return std::nullopt;
    return flag;
}

// The same readers for one key of an object; a missing key is missing.
std::optional<std::string> text(object dict, std::string_view key) {
    element value;
    if (dict[key].get(value)) return std::nullopt;
    return asText(value);
}

std::optional<std::int64_t> integer(object dict, std::string_view key) {
    element value;
    if (dict[key].get(value)) return std::nullopt;
    return asInteger(value);
}

std::optional<bool> boolean(object dict, std::string_view key) {
    element value;
    if (dict[key].get(value)) return std::nullopt;
    return asBoolean(value);
}

// The entries of an array value that are objects; other entries are skipped.
template <class Read>
void forEachObject(element value, Read read) {
    simdjson::dom::array array;
    if (value.get_array().get(array)) return;
    for (element entry : array) {
        object item;
        if (!entry.get_object().get(item)) read(item);
    }
}

std::optional<YContact::Address> readAddress(element value) {
    object address;
    if (value.get_object().get(address)) return std::nullopt;
    YContact::Address result;
    for (const auto field : address) {
        const std::string_view key = field.key;
        if (key == "street1") result.streetAddress1 = asText(field.value);
        else if (key == "street2") result.streetAddress2 = asText(field.value);
        else if (key == "city") result.city = asText(field.value);
        else if (key == "state") result.state = asText(field.value);
        else if (key == "country") result.country = asText(field.value);
        else if (key == "postal_code") result.postalCode = asText(field.value);
    }
    return result;
}

void readEmails(element value, YContact& contact) {
    forEachObject(value, [&](object entry) {
        auto emailId = text(entry, "email_id");
        if (!emailId) return;
        YContact::Email email(std::move(*emailId));
        email.isPrimary = boolean(entry, "is_primary").value_or(false);
        if (email.isPrimary && !contact.primaryEmail) contact.primaryEmail = email;
        contact.emails.push_back(std::move(email));
    });
}

void readPhones(element value, YContact& contact) {
    forEachObject(value, [&](object entry) {
        auto number = text(entry, "number");
        if (!number) return;
        const auto word = text(entry, "type");
        const auto type = word ? fromRawValue<YContact::PhoneType>(*word) : std::nullopt;
        contact.phones.emplace_back(std::move(*number), type.value_or(YContact::PhoneType::others));
    });
}

void readURLs(element value, YContact& contact) {
    forEachObject(value, [&](object entry) {
        auto url = text(entry, "url");
        if (!url) return;
        contact.urls.emplace_back(std::move(*url), YContactsParser::getUrlType(text(entry, "type").value_or("")));
    });
}

void readIMs(element value, YContact& contact) {
    forEachObject(value, [&](object entry) {
        auto im = text(entry, "im");
        if (!im) return;
        contact.IMs.emplace_back(std::move(*im), YContactsParser::getImType(text(entry, "type").value_or("")));
    });
}

void readCategories(element value, YContact& contact) {
    simdjson::dom::array array;
    if (value.get_array().get(array)) return;
    for (element entry : array) {
        std::string_view id;
        if (!entry.get_string().get(id)) contact.categories->emplace_back(std::string(id));
    }
}

void readBirthday(element value, YContact& contact) {
    object birthday;
    if (value.get_object().get(birthday)) return;
    for (const auto field : birthday) {
        const std::string_view key = field.key;
        if (key == "date") contact.birthDate = asSmallInteger(field.value);
        else if (key == "month") contact.birthMonth = asSmallInteger(field.value);
        else if (key == "year") contact.birthYear = asSmallInteger(field.value);
    }
}

// A contact object read so far.
struct ContactReading {
    YContact contact;
    YContact::WorkInfo work;
    bool hasId = false;
    bool isDeleted = false;
};

// Fills the field that `key` names; unknown keys are ignored. Dispatching on the key's length first keeps
// this to one or two comparisons per key.
void readField(std::string_view key, element value, ContactReading& reading) {
    auto& contact = reading.contact;
    auto& work = reading.work;
    switch (key.size()) {
        case 3:
            if (key == "ims") readIMs(value, contact);
            break;
        case 4:
            if (key == "yuid") contact.contactYuid = asText(value);
            else if (key == "urls") readURLs(value, contact);
            break;
        case 5:
            if (key == "notes") contact.notes = asText(value);
            break;
        case 6:
            if (key == "emails") readEmails(value, contact);
            else if (key == "phones") readPhones(value, contact);
            else if (key == "gender") {
                const auto word = asText(value);
                contact.gender = word ? fromRawValue<YContact::Gender>(*word) : std::nullopt;
            }
            break;
        case 7:
            if (key == "company") work.company = asText(value);
            else if (key == "address") contact.address = readAddress(value);
            break;
        case 8:
            if (key == "birthday") readBirthday(value, contact);
            break;
        case 9:
            if (key == "last_name") contact.lastName = asText(value);
            else if (key == "nick_name") contact.nickName = asText(value);
            else if (key == "photo_url") contact.photoURL = asText(value);
            else if (key == "job_title") work.jobTitle = asText(value);
            else if (key == "has_photo") contact.hasPhoto = asBoolean(value).value_or(contact.hasPhoto);
            break;
        case 10:
            if (key == "contact_id") {
                if (auto id = asText(value)) {
                    contact.contactId = std::move(*id);
                    reading.hasId = true;
                }
            } else if (key == "first_name") {
                contact.firstName = asText(value).value_or("");
            } else if (key == "categories") {
                readCategories(value, contact);
            } else if (key == "is_deleted") {
                reading.isDeleted = asBoolean(value).value_or(false);
            }
            break;
        case 11:
            if (key == "middle_name") contact.middleName = asText(value);
            else if (key == "usage_count") contact.weightage = asSmallInteger(value).value_or(0);
            else if (key == "is_editable") contact.isEditable = asBoolean(value).value_or(false);
            else if (key == "designation") work.designation = asText(value);
            break;
        case 12:
            if (key == "display_name") {
                contact.displayName = asText(value);
            } else if (key == "created_time") {
                contact.createdTime = asInteger(value).value_or(0);
            } else if (key == "contact_type") {
                const auto word = asText(value);
                if (const auto type = word ? fromRawValue<YContactType>(*word) : std::nullopt) contact.type = *type;
            } else if (key == "work_address") {
                work.address = readAddress(value);
            }
            break;
        default:
            break;
    }
}

// One pass over the fields: looking each key up instead would scan the object once per key.
ContactReading readContact(object item) {
    ContactReading reading;
    reading.contact.categories.emplace();
    for (const auto field : item) readField(field.key, field.value, reading);
    auto& work = reading.work;
    if (work.company || work.jobTitle || work.designation || work.address) reading.contact.workInfo = std::move(work);
    return reading;
}

// An add or delete reply: "status" "success" is an accepted change; an error reply carries its status code.
YUpdateContactNetworkResponse readUpdateReply(const YContactsParserContract::Body& data, bool withIds) {
    auto body = readBody(data);
    if (!body) return YUpdateContactNetworkResponse::getResponse(YContactError::parserError);
    const object root = *body;
    const auto status = text(root, "status");
    if (status != "success") {
        const auto code = integer(root, "status_code");
        Logger::shared().warning("Contact change refused, status: " + status.value_or("none") +
                                 " code: " + std::to_string(code.value_or(0)));
        return YUpdateContactNetworkResponse::getResponse(code == 401 || code == 403
                                                              ? YContactError::authorizationError
                                                              : YContactError::unknownError);
    }
    YUpdateContactNetworkResponse response;
    response.successResponse = status;
    if (withIds) {
        std::vector<std::string> ids;
        simdjson::dom::array array;
        if (!root["contact_ids"].get_array().get(array)) {
            for (element entry : array) {
                std::string_view id;
                if (!entry.get_string().get(id)) ids.emplace_back(id);
            }
        }
        response.contactIds = std::move(ids);
    }
    return response;
}

}  // namespace

YContactsParser::ContactsDict YContactsParser::getContactsDict(object root) {
    element errors;
    if (!root["errors"].get(errors)) {
        if (integer(root, "status_code") == 404) return ContactsDict{false, std::nullopt};
    }
    ContactsDict result;
    simdjson::dom::array contacts;
    if (root["contacts"].get_array().get(contacts)) {
        Logger::shared().warning("Contacts reply not read: it has no \"contacts\" list");
        return result;
    }
    result.hasMore = boolean(root, "has_more").value_or(false);
    result.contacts.emplace();
    for (element entry : contacts) result.contacts->push_back(entry);
    return result;
}

std::optional<YContact> YContactsParser::getContact(element dict) {
    object item;
    if (dict.get_object().get(item)) return std::nullopt;
    auto reading = readContact(item);
    if (!reading.hasId) return std::nullopt;
    return std::move(reading.contact);
}

std::optional<std::vector<YContact>> YContactsParser::getContacts(const std::vector<element>& contactsDict,
                                                                  bool isOrg) {
    std::vector<YContact> contacts;
    contacts.reserve(contactsDict.size());
    for (element entry : contactsDict) {
        if (auto contact = getContact(entry)) {
            contact->isOrg = isOrg;
            contacts.push_back(std::move(*contact));
        }
    }
    return contacts;
}

YContactsParser::SplitContacts YContactsParser::getSplitedContacts(const std::vector<element>& contactsDict,
                                                                   bool isOrg, double syncTime) {
    const auto threshold = static_cast<std::int64_t>(syncTime);
    SplitContacts split{std::vector<YContact>{}, std::vector<YContact>{}, std::vector<std::string>{}};
    // Either list may take the whole page; reserving both spares moving large records while they grow.
    split.newContacts->reserve(contactsDict.size());
    split.updatedContacts->reserve(contactsDict.size());
    for (element entry : contactsDict) {
        object item;
        if (entry.get_object().get(item)) continue;
        auto reading = readContact(item);
        if (!reading.hasId) continue;
        // A tombstone gives only its id.
        if (reading.isDeleted) {
            split.deletedContacts->push_back(std::move(reading.contact.contactId));
            continue;
        }
        reading.contact.isOrg = isOrg;
        auto& target = reading.contact.createdTime > threshold ? *split.newContacts : *split.updatedContacts;
        target.push_back(std::move(reading.contact));
    }
    return split;
}

std::optional<YContactNetworkResponse> YContactsParser::parseSyncContacts(const YContactsHost&, const Body& data,
                                                                          bool isOrg,
                                                                          std::optional<double> syncTime) const {
    auto body = readBody(data);
    if (!body) return std::nullopt;
    auto dict = getContactsDict(*body);
    if (!dict.hasMore) return std::nullopt;
    YContactNetworkResponse response;
    if (!dict.contacts) return response;
    response.hasMore = *dict.hasMore;
    if (!syncTime) {
        response.newContacts = getContacts(*dict.contacts, isOrg);
    } else {
        // The conversion to whole milliseconds must be exact enough to compare with; anything else is a
        // caller's fault, reported rather than guessed at.
        if (!std::isfinite(*syncTime) || std::abs(*syncTime) >= 9223372036854775808.0) {
            Logger::shared().error("Contacts page not split: sync time out of range " + std::to_string(*syncTime));
            return std::nullopt;
        }
        auto split = getSplitedContacts(*dict.contacts, isOrg, *syncTime);
        response.newContacts = std::move(split.newContacts);
        response.updatedContacts = std::move(split.updatedContacts);
        response.deletedContacts = std::move(split.deletedContacts);
    }
    const auto size = [](const auto& list) { return list ? static_cast<int>(list->size()) : 0; };
    response.count = size(response.newContacts) + size(response.updatedContacts) + size(response.deletedContacts);
    return response;
}

std::optional<std::vector<YContact>> YContactsParser::parseContacts(const YContactsHost&, const Body& data,
                                                                    bool isOrg) const {
    auto body = readBody(data);
    if (!body) return std::nullopt;
    auto dict = getContactsDict(*body);
    if (!dict.contacts) return std::nullopt;
    return getContacts(*dict.contacts, isOrg);
}

std::optional<YContactUsageCountNetworkResponse> YContactsParser::parseContactUsageCount(const Body& data) const {
    auto body = readBody(data);
    if (!body) return std::nullopt;
    simdjson::dom::array entries;
    if ((*body)["contacts"].get_array().get(entries)) {
        Logger::shared().warning("Usage-count reply not read: it has no \"contacts\" list");
        return std::nullopt;
    }
    std::map<std::string, std::string> counts;
    for (element entry : entries) {
        object item;
        if (entry.get_object().get(item)) continue;
        auto contactId = text(item, "contact_id");
        auto count = integer(item, "usage_count");
        if (contactId && count) counts[*contactId] = std::to_string(*count);
    }
    YContactUsageCountNetworkResponse response;
    response.usageCountDetails = std::move(counts);
    return response;
}

YCategoryNetworkResponse YContactsParser::parseFetchCategories(const Body& data) const {
    auto body = readBody(data);
    simdjson::dom::array entries;
    if (!body || (*body)["categories"].get_array().get(entries)) {
        Logger::shared().warning("Categories reply not read: it has no \"categories\" list");
        return YCategoryNetworkResponse::get(YContactError::parserError);
    }
    std::vector<YContactCategory> categories;
    for (element entry : entries) {
        object item;
        if (entry.get_object().get(item)) continue;
        auto categoryId = text(item, "category_id");
        if (!categoryId) continue;
        YContactCategory category(std::move(categoryId));
        category.categoryName = text(item, "category_name");
        category.isDeleted = text(item, "deleted");
        categories.push_back(std::move(category));
    }
    YCategoryNetworkResponse response;
    response.categories = std::move(categories);
    return response;
}

YUpdateContactNetworkResponse YContactsParser::parseUpdateContacts(const Body& data) const {
    return readUpdateReply(data, true);
}

YUpdateContactNetworkResponse YContactsParser::parseDeleteContacts(const Body& data) const {
    return readUpdateReply(data, false);
}

YContact::URLType YContactsParser::getUrlType(std::string_view value) {
    using T = YContact::URLType;
    if (value == "home") return T::personal;
    if (value == "work") return T::company;
    if (value == "blog") return T::blog;
    if (value == "linkedin") return T::linkedIn;
    if (value == "facebook") return T::facebook;
    if (value == "twitter") return T::twitter;
    if (value == "amazon") return T::amazon;
    if (value == "flickr") return T::flikr;
    if (value == "delicious") return T::delicious;
    return T::other;
}

YContact::IMType YContactsParser::getImType(std::string_view value) {
    using T = YContact::IMType;
    if (value == "google") return T::google;
    if (value == "yahoo") return T::yahoo;
    if (value == "skype") return T::skype;
    if (value == "aol") return T::aol;
    if (value == "icq") return T::icq;
    if (value == "msn") return T::msn;
    if (value == "jabber") return T::jabber;
    return T::others;
}

}  // namespace ycontacts

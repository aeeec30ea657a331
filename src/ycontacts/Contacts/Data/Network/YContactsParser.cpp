#include "ycontacts/Contacts/Data/Network/YContactsParser.h"

#include <cmath>
#include <limits>
#include <string>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/YJSONSerializer.h"

namespace ycontacts {

namespace {

using simdjson::dom::element;
using simdjson::dom::object;

std::optional<YJSONDictionary> readBody(const YContactsParserContract::Body& data) {
    if (!data) return std::nullopt;
    return YJSONSerializer::dictionary(
        std::string_view(reinterpret_cast<const char*>(data->data()), data->size()));
}

// Each reader gives the key's value only when it is there with the expected type; anything else counts as
// missing, so one odd key never costs the whole contact.
std::optional<std::string> text(object dict, std::string_view key) {
    std::string_view value;
    if (dict[key].get_string().get(value)) return std::nullopt;
    return std::string(value);
}

std::optional<std::int64_t> integer(object dict, std::string_view key) {
    std::int64_t value = 0;
    if (dict[key].get_int64().get(value)) return std::nullopt;
    return value;
}

std::optional<int> smallInteger(object dict, std::string_view key) {
    auto value = integer(dict, key);
    if (!value || *value < std::numeric_limits<int>::min() || *value > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(*value);
}

std::optional<bool> boolean(object dict, std::string_view key) {
    bool value = false;
    if (dict[key].get_bool().get(value)) return std::nullopt;
    return value;
}

std::optional<object> child(object dict, std::string_view key) {
    object value;
    if (dict[key].get_object().get(value)) return std::nullopt;
    return value;
}

// The objects of an array-valued key; other entries are skipped.
std::vector<object> objects(object dict, std::string_view key) {
    std::vector<object> result;
    simdjson::dom::array array;
    if (dict[key].get_array().get(array)) return result;
    for (element entry : array) {
        object item;
        if (!entry.get_object().get(item)) result.push_back(item);
    }
    return result;
}

std::optional<YContact::Address> readAddress(object dict, std::string_view key) {
    auto address = child(dict, key);
    if (!address) return std::nullopt;
    YContact::Address result;
    result.streetAddress1 = text(*address, "street1");
    result.streetAddress2 = text(*address, "street2");
    result.city = text(*address, "city");
    result.state = text(*address, "state");
    result.country = text(*address, "country");
    result.postalCode = text(*address, "postal_code");
    return result;
}

void readLists(object dict, YContact& contact) {
    for (object entry : objects(dict, "emails")) {
        auto emailId = text(entry, "email_id");
        if (!emailId) continue;
        YContact::Email email(*emailId);
        email.isPrimary = boolean(entry, "is_primary").value_or(false);
        if (email.isPrimary && !contact.primaryEmail) contact.primaryEmail = email;
        contact.emails.push_back(std::move(email));
    }
    for (object entry : objects(dict, "phones")) {
        auto number = text(entry, "number");
        if (!number) continue;
        const auto word = text(entry, "type");
        const auto type = word ? fromRawValue<YContact::PhoneType>(*word) : std::nullopt;
        contact.phones.emplace_back(*number, type.value_or(YContact::PhoneType::others));
    }
    for (object entry : objects(dict, "urls")) {
        auto url = text(entry, "url");
        if (!url) continue;
        contact.urls.emplace_back(*url, YContactsParser::getUrlType(text(entry, "type").value_or("")));
    }
    for (object entry : objects(dict, "ims")) {
        auto im = text(entry, "im");
        if (!im) continue;
        contact.IMs.emplace_back(*im, YContactsParser::getImType(text(entry, "type").value_or("")));
    }
    std::vector<YContact::Category> categories;
    simdjson::dom::array array;
    if (!dict["categories"].get_array().get(array)) {
        for (element entry : array) {
            std::string_view id;
            if (!entry.get_string().get(id)) categories.emplace_back(std::string(id));
        }
    }
    contact.categories = std::move(categories);
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
    auto contactId = text(item, "contact_id");
    if (!contactId) return std::nullopt;

    YContact contact(*contactId, text(item, "first_name").value_or(""), integer(item, "created_time").value_or(0));
    contact.middleName = text(item, "middle_name");
    contact.lastName = text(item, "last_name");
    contact.nickName = text(item, "nick_name");
    contact.displayName = text(item, "display_name");
    contact.weightage = smallInteger(item, "usage_count").value_or(0);
    if (auto word = text(item, "contact_type")) {
        if (auto type = fromRawValue<YContactType>(*word)) contact.type = *type;
    }
    contact.contactYuid = text(item, "yuid");
    readLists(item, contact);
    if (auto hasPhoto = boolean(item, "has_photo")) contact.hasPhoto = *hasPhoto;
    contact.photoURL = text(item, "photo_url");
    if (auto word = text(item, "gender")) contact.gender = fromRawValue<YContact::Gender>(*word);
    contact.notes = text(item, "notes");
    contact.isEditable = boolean(item, "is_editable").value_or(false);
    contact.address = readAddress(item, "address");

    YContact::WorkInfo work;
    work.company = text(item, "company");
    work.jobTitle = text(item, "job_title");
    work.designation = text(item, "designation");
    work.address = readAddress(item, "work_address");
    if (work.company || work.jobTitle || work.designation || work.address) contact.workInfo = std::move(work);

    if (auto birthday = child(item, "birthday")) {
        contact.birthDate = smallInteger(*birthday, "date");
        contact.birthMonth = smallInteger(*birthday, "month");
        contact.birthYear = smallInteger(*birthday, "year");
    }
    return contact;
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
    for (element entry : contactsDict) {
        object item;
        if (!entry.get_object().get(item) && boolean(item, "is_deleted") == true) {
            if (auto contactId = text(item, "contact_id")) split.deletedContacts->push_back(*contactId);
            continue;
        }
        auto contact = getContact(entry);
        if (!contact) continue;
        contact->isOrg = isOrg;
        auto& target = contact->createdTime > threshold ? *split.newContacts : *split.updatedContacts;
        target.push_back(std::move(*contact));
    }
    return split;
}

std::optional<YContactNetworkResponse> YContactsParser::parseSyncContacts(const YContactsHost&, const Body& data,
                                                                          bool isOrg,
                                                                          std::optional<double> syncTime) const {
    auto body = readBody(data);
    if (!body) return std::nullopt;
    auto dict = getContactsDict(body->root());
    if (!dict.hasMore) return std::nullopt;
    YContactNetworkResponse response;
    if (!dict.contacts) return response;
    response.hasMore = *dict.hasMore;
    if (!syncTime) {
        // Tombstones in a full listing hold the places of deleted contacts; they are deleted ids, never
        // contacts. An initial page carries deleted ids only when it has tombstones.
        std::vector<element> live;
        live.reserve(dict.contacts->size());
        std::vector<std::string> deleted;
        for (element entry : *dict.contacts) {
            object item;
            if (!entry.get_object().get(item) && boolean(item, "is_deleted") == true) {
                if (auto contactId = text(item, "contact_id")) deleted.push_back(*contactId);
                continue;
            }
            live.push_back(entry);
        }
        response.newContacts = getContacts(live, isOrg);
        if (!deleted.empty()) response.deletedContacts = std::move(deleted);
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
    auto dict = getContactsDict(body->root());
    if (!dict.contacts) return std::nullopt;
    return getContacts(*dict.contacts, isOrg);
}

std::optional<YContactUsageCountNetworkResponse> YContactsParser::parseContactUsageCount(const Body& data) const {
    auto body = readBody(data);
    if (!body) return std::nullopt;
    simdjson::dom::array entries;
    if (body->root()["contacts"].get_array().get(entries)) {
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

#include "ycontacts/Contacts/Data/DataManager/YContactsQueryMatching.h"

#include <algorithm>
#include <limits>
#include <unordered_set>

namespace ycontacts::querymatching {

std::string lowercased(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::size_t characterCount(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

namespace {

bool beginsWith(const std::string& text, const std::string& loweredPrefix) {
    return lowercased(text).starts_with(loweredPrefix);
}

}  // namespace

bool matches(const YContact& contact, const std::string& loweredSearch) {
    const std::string lastName = contact.lastName.value_or("");
    if (beginsWith(contact.firstName, loweredSearch) || beginsWith(lastName, loweredSearch)) return true;
    if (contact.nickName && beginsWith(*contact.nickName, loweredSearch)) return true;
    if (contact.lastName && beginsWith(contact.firstName + " " + lastName, loweredSearch)) return true;
    if (contact.primaryEmail && beginsWith(contact.primaryEmail->emailId, loweredSearch)) return true;
    return std::any_of(contact.emails.begin(), contact.emails.end(),
                       [&](const YContact::Email& email) { return beginsWith(email.emailId, loweredSearch); });
}

std::vector<YSuggestionContact> suggestionsFrom(const std::vector<YContact>& contacts, std::optional<int> limit) {
    const std::size_t most = limit ? static_cast<std::size_t>(std::max(*limit, 0)) : std::numeric_limits<std::size_t>::max();
    std::vector<YSuggestionContact> suggestions;
    std::unordered_set<std::string> seen;
    for (const YContact& contact : contacts) {
        std::vector<std::string> addresses;
        if (contact.primaryEmail) addresses.push_back(contact.primaryEmail->emailId);
        for (const YContact::Email& email : contact.emails) addresses.push_back(email.emailId);
        for (const std::string& address : addresses) {
            if (suggestions.size() >= most) return suggestions;
            if (address.empty() || !seen.insert(address).second) continue;
            YSuggestionContact suggestion(contact.contactId, address, contact.firstName, contact.isOrg);
            suggestion.yuid = contact.contactYuid;
            suggestion.middleName = contact.middleName;
            suggestion.lastName = contact.lastName;
            suggestion.nickName = contact.nickName;
            suggestion.type = contact.type;
            suggestion.hasPhoto = contact.hasPhoto;
            suggestions.push_back(std::move(suggestion));
        }
    }
    return suggestions;
}

YContact contactFrom(const YSuggestionContact& suggestion) {
    YContact contact;
    contact.contactId = suggestion.contactId;
    contact.firstName = suggestion.firstName;
    contact.middleName = suggestion.middleName;
    contact.lastName = suggestion.lastName;
    contact.nickName = suggestion.nickName;
    contact.primaryEmail = YContact::Email(suggestion.email);
    contact.contactYuid = suggestion.yuid;
    contact.type = suggestion.type;
    contact.hasPhoto = suggestion.hasPhoto;
    contact.isOrg = suggestion.isOrg;
    return contact;
}

}  // namespace ycontacts::querymatching

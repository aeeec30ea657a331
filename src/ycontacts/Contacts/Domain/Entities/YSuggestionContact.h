#pragma once
// YSuggestionContact: a light entry offered while the user types an address; its identity is the e-mail alone.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Domain/Entities/YContactType.h"
#include "ycontacts/Contacts/Domain/Entities/YJsonCoding.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YSuggestionContact {
    std::string email;
    std::string contactId;
    std::optional<std::string> yuid;
    std::string firstName;
    std::optional<std::string> middleName;
    std::optional<std::string> lastName;
    std::optional<std::string> nickName;
    YContactType type = YContactType::user;
    // Deliberately true, as for YContact.
    bool hasPhoto = true;
    bool isOrg = false;

    // An empty record for decoding into.
    YSuggestionContact() = default;
    YSuggestionContact(std::string contactId, std::string email, std::string firstName, bool isOrg);

    // One suggestion per address: two entries with the same e-mail are equal whatever their contact ids.
    bool operator==(const YSuggestionContact& other) const { return email == other.email; }
};

// Keys equal to the field names; a failed decode throws the JSON library's exception.
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YSuggestionContact& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YSuggestionContact& value);

}  // namespace ycontacts

template <>
struct std::hash<ycontacts::YSuggestionContact> {
    std::size_t operator()(const ycontacts::YSuggestionContact& suggestion) const noexcept {
        return std::hash<std::string>{}(suggestion.email);
    }
};

#pragma once
// YContactsQueryMatching: the text rules shared by the contact filter and the suggestion cache (lower-casing, prefix tests, one suggestion per address).

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"

namespace ycontacts::querymatching {

// ASCII letters lower-cased; every other byte (UTF-8 included) is kept as written.
std::string lowercased(std::string text);

// Characters in UTF-8 text: continuation bytes do not start a character.
std::size_t characterCount(const std::string& text);

// True when one of the contact's searchable texts, lower-cased, begins with `loweredSearch`: first name,
// last name, nick name, "first last" (so "ann s" finds Ann Smith) or any e-mail address.
bool matches(const YContact& contact, const std::string& loweredSearch);

// One suggestion per e-mail address (primary address first, then the others in order), each address once
// over the whole list; contacts without an address give none. Cut to `limit` when given.
std::vector<YSuggestionContact> suggestionsFrom(const std::vector<YContact>& contacts,
                                                std::optional<int> limit = std::nullopt);

// A suggestion as a one-address contact, so the suggestion cache can be narrowed with `matches` and
// turned back into the same suggestion by `suggestionsFrom`.
YContact contactFrom(const YSuggestionContact& suggestion);

}  // namespace ycontacts::querymatching

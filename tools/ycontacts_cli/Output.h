#pragma once
// Output: how the tool shows contacts and suggestions to a person, and how it writes them as JSON.

#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include <ycontacts/YContacts.h>

namespace ycontacts_cli::output {

// One line per contact: id, name, primary address, population.
std::string contactLines(const std::vector<ycontacts::YContact>& contacts);
// One line per suggestion: address, name, contact id, population.
std::string suggestionLines(const std::vector<ycontacts::YSuggestionContact>& suggestions);
// Every field a person may want of one contact, one per line.
std::string contactDetails(const ycontacts::YContact& contact);

// Records in their JSON coding, keys in field order; an absent list is null.
nlohmann::ordered_json contactsJson(const std::optional<std::vector<ycontacts::YContact>>& contacts);
nlohmann::ordered_json suggestionsJson(const std::optional<std::vector<ycontacts::YSuggestionContact>>& suggestions);

}  // namespace ycontacts_cli::output

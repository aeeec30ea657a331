#pragma once
// Search matching of the sample server: case-insensitive prefix match on names and e-mail addresses.

#include <string>

#include "sample_server/SampleContact.h"

namespace sample_server {

// Lower-cases ASCII letters and the Latin-1 letters À–Þ of UTF-8 text; other bytes are kept.
std::string foldCase(const std::string& text);

// True when the first, last, nick or display name or an e-mail address starts with the query, ignoring case.
bool matchesSearch(const SampleContact& contact, const std::string& query);

}  // namespace sample_server

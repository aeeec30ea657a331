#pragma once
// Photo payloads and HTTP dates of the sample server's photo endpoints.

#include <cstdint>
#include <optional>
#include <string>

namespace sample_server {

// A deterministic PNG-like byte string for a contact: the PNG signature, then bytes derived from the contact
// id and the photo time. A thumbnail is much smaller than a normal-size photo.
std::string photoBytes(const std::string& contactId, std::int64_t photoModifiedMs, bool thumbnail);

// "EEE, dd MMM yyyy HH:mm:ss GMT" in English, whatever the process locale.
std::string formatHttpDate(std::int64_t epochMs);

// Seconds since 1970 for a date in the form above; absent for anything else.
std::optional<std::int64_t> parseHttpDate(const std::string& text);

}  // namespace sample_server

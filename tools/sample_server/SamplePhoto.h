#pragma once
// Photo payloads and HTTP dates of the sample server's photo endpoints.

#include <cstdint>
#include <optional>
#include <string>

namespace sample_server {

// A valid PNG image for a contact (8-bit RGB, uncompressed deflate blocks): a checkerboard whose colours and
// square size follow from the contact id and the photo time, so every contact and every new photo of it
// looks different. A thumbnail is 16x16 pixels, a normal-size photo 64x64.
std::string photoBytes(const std::string& contactId, std::int64_t photoModifiedMs, bool thumbnail);

// "EEE, dd MMM yyyy HH:mm:ss GMT" in English, whatever the process locale.
std::string formatHttpDate(std::int64_t epochMs);

// Seconds since 1970 for a date in the form above; absent for anything else.
std::optional<std::int64_t> parseHttpDate(const std::string& text);

}  // namespace sample_server

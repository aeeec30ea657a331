#pragma once
// Format: the small text helpers of the tool's human-readable output (numbers, durations, times, columns).

#include <cstdint>
#include <optional>
#include <string>

namespace ycontacts_cli::format {

// 30000 -> "30,000".
std::string count(std::int64_t value);
// Seconds for a person: "0.4 s", "12 s", "3 min 05 s", "2 h 04 min".
std::string duration(double seconds);
// A latency in milliseconds with sensible precision: "0.42 ms", "3.1 ms", "125 ms".
std::string milliseconds(double ms);
// Milliseconds since 1970 as "2024-05-01 12:00:03 UTC".
std::string utcTime(double millisecondsSince1970);
// Pads (or cuts, with "…") UTF-8 text to `width` characters; a character is counted per code point.
std::string column(const std::string& text, std::size_t width);

}  // namespace ycontacts_cli::format

#pragma once
// HttpHeaderDate: formats and parses the HTTP header dates of photo requests ("Sun, 22 Nov 2026 18:45:00 GMT").

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace ycontacts {

// Pattern "EEE, dd MMM yyyy HH:mm:ss z" in GMT with English names, independent of the process locale.
class HttpHeaderDateFormatter {
public:
    // Whole seconds; any fraction is dropped.
    std::string format(std::chrono::system_clock::time_point date) const;

    // Accepts exactly the form format() writes, zone "GMT", with a real calendar date whose day name
    // matches; anything else, including dates the clock cannot represent, gives no value.
    std::optional<std::chrono::system_clock::time_point> parse(std::string_view text) const;
};

// The process-wide formatter; it holds no state, so sharing it across threads is safe.
inline constexpr HttpHeaderDateFormatter httpHeaderDate{};

}  // namespace ycontacts

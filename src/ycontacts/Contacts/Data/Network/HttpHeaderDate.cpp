#include "ycontacts/Contacts/Data/Network/HttpHeaderDate.h"

#include <array>
#include <cstdio>

namespace ycontacts {

using namespace std::chrono;

namespace {

// English names, written out so that neither the C locale nor the C++ locale can change them.
constexpr std::array<std::string_view, 7> dayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<std::string_view, 12> monthNames{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                      "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

// "Sun, 22 Nov 2026 18:45:00 GMT"
constexpr std::string_view layout = "EEE, dd MMM yyyy HH:mm:ss GMT";

std::optional<unsigned> indexOf(const auto& names, std::string_view name) {
    for (unsigned index = 0; index < names.size(); ++index) {
        if (names[index] == name) return index;
    }
    return std::nullopt;
}

std::optional<int> digits(std::string_view text) {
    int value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        value = value * 10 + (c - '0');
    }
    return value;
}

}  // namespace

std::string HttpHeaderDateFormatter::format(system_clock::time_point date) const {
    const auto second = floor<seconds>(date);
    const auto day = floor<days>(second);
    const year_month_day ymd{day};
    const hh_mm_ss time{second - day};
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%s, %02u %s %04d %02d:%02d:%02d GMT",
                  dayNames[weekday{day}.c_encoding()].data(), static_cast<unsigned>(ymd.day()),
                  monthNames[static_cast<unsigned>(ymd.month()) - 1].data(), static_cast<int>(ymd.year()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return buffer;
}

std::optional<system_clock::time_point> HttpHeaderDateFormatter::parse(std::string_view text) const {
    if (text.size() != layout.size()) return std::nullopt;
    for (const std::size_t at : {3u, 4u, 7u, 11u, 16u, 19u, 22u, 25u}) {
        if (text[at] != layout[at]) return std::nullopt;
    }
    if (text.substr(26) != "GMT") return std::nullopt;

    const auto dayName = indexOf(dayNames, text.substr(0, 3));
    const auto monthIndex = indexOf(monthNames, text.substr(8, 3));
    const auto dayOfMonth = digits(text.substr(5, 2));
    const auto yearNumber = digits(text.substr(12, 4));
    const auto hour = digits(text.substr(17, 2));
    const auto minute = digits(text.substr(20, 2));
    const auto second = digits(text.substr(23, 2));
    if (!dayName || !monthIndex || !dayOfMonth || !yearNumber || !hour || !minute || !second) return std::nullopt;
    if (*hour > 23 || *minute > 59 || *second > 59) return std::nullopt;

    const year_month_day date{year{*yearNumber}, month{*monthIndex + 1}, day{static_cast<unsigned>(*dayOfMonth)}};
    if (!date.ok()) return std::nullopt;
    const sys_days dayPoint{date};
    if (weekday{dayPoint}.c_encoding() != *dayName) return std::nullopt;

    // The clock counts nanoseconds in 64 bits (about the years 1678 to 2262); refuse what it cannot hold.
    const auto total = sys_seconds{dayPoint} + hours{*hour} + minutes{*minute} + seconds{*second};
    const auto earliest = ceil<seconds>(system_clock::time_point::min());
    const auto latest = floor<seconds>(system_clock::time_point::max());
    if (total < earliest || total > latest) return std::nullopt;
    return time_point_cast<system_clock::duration>(total);
}

}  // namespace ycontacts

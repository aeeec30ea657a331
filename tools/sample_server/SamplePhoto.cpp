#include "sample_server/SamplePhoto.h"

#include <array>
#include <cstdio>
#include <ctime>

#include "sample_server/SampleRandom.h"

namespace sample_server {
namespace {

constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

}  // namespace

std::string photoBytes(const std::string& contactId, std::int64_t photoModifiedMs, bool thumbnail) {
    std::uint64_t seed = static_cast<std::uint64_t>(photoModifiedMs);
    for (const char c : contactId) seed = seed * 131 + static_cast<unsigned char>(c);
    SampleRandom random(seed);
    std::string bytes = "\x89PNG\r\n\x1a\n";
    bytes += std::string("\0\0\0\x0dIHDR", 8);
    const std::size_t size = thumbnail ? 256 : 4096;
    while (bytes.size() < size) bytes += static_cast<char>(random.next() & 0xFF);
    return bytes;
}

std::string formatHttpDate(std::int64_t epochMs) {
    const std::time_t seconds = static_cast<std::time_t>(epochMs / 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    std::snprintf(text, sizeof text, "%s, %02d %s %04d %02d:%02d:%02d GMT", kDays[static_cast<std::size_t>(parts.tm_wday)],
                  parts.tm_mday, kMonths[static_cast<std::size_t>(parts.tm_mon)], parts.tm_year + 1900, parts.tm_hour,
                  parts.tm_min, parts.tm_sec);
    return text;
}

std::optional<std::int64_t> parseHttpDate(const std::string& text) {
    char day[4] = {};
    char month[4] = {};
    char zone[4] = {};
    int date = 0, year = 0, hour = 0, minute = 0, second = 0;
    int consumed = 0;
    if (std::sscanf(text.c_str(), "%3s, %d %3s %d %d:%d:%d %3s%n", day, &date, month, &year, &hour, &minute, &second,
                    zone, &consumed) != 8 ||
        static_cast<std::size_t>(consumed) != text.size() || std::string(zone) != "GMT")
        return std::nullopt;
    std::tm parts{};
    parts.tm_mon = -1;
    for (std::size_t i = 0; i < kMonths.size(); ++i)
        if (std::string(month) == kMonths[i]) parts.tm_mon = static_cast<int>(i);
    if (parts.tm_mon < 0 || date < 1 || date > 31 || hour > 23 || minute > 59 || second > 60) return std::nullopt;
    parts.tm_mday = date;
    parts.tm_year = year - 1900;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    return static_cast<std::int64_t>(timegm(&parts));
}

}  // namespace sample_server

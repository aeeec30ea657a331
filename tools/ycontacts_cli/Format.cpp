#include "ycontacts_cli/Format.h"

#include <cmath>
#include <cstdio>
#include <ctime>

namespace ycontacts_cli::format {

std::string count(std::int64_t value) {
    const std::string digits = std::to_string(value);
    const std::size_t first = value < 0 ? 1 : 0;
    // Built by appending: inserting into the string trips a false GCC 12 -Wrestrict warning at -O2.
    std::string text(digits, 0, first);
    for (std::size_t i = first; i < digits.size(); ++i) {
        if (i > first && (digits.size() - i) % 3 == 0) text += ',';
        text += digits[i];
    }
    return text;
}

std::string duration(double seconds) {
    char text[32];
    if (!std::isfinite(seconds) || seconds < 0) return "?";
    if (seconds < 10) {
        std::snprintf(text, sizeof(text), "%.1f s", seconds);
    } else if (seconds < 60) {
        std::snprintf(text, sizeof(text), "%.0f s", seconds);
    } else if (seconds < 3600) {
        const auto whole = static_cast<long>(seconds);
        std::snprintf(text, sizeof(text), "%ld min %02ld s", whole / 60, whole % 60);
    } else {
        const auto minutes = static_cast<long>(seconds / 60);
        std::snprintf(text, sizeof(text), "%ld h %02ld min", minutes / 60, minutes % 60);
    }
    return text;
}

std::string milliseconds(double ms) {
    char text[32];
    if (ms < 1)
        std::snprintf(text, sizeof(text), "%.2f ms", ms);
    else if (ms < 100)
        std::snprintf(text, sizeof(text), "%.1f ms", ms);
    else
        std::snprintf(text, sizeof(text), "%.0f ms", ms);
    return text;
}

std::string utcTime(double millisecondsSince1970) {
    const auto seconds = static_cast<std::time_t>(millisecondsSince1970 / 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    std::strftime(text, sizeof(text), "%Y-%m-%d %H:%M:%S UTC", &parts);
    return text;
}

std::string column(const std::string& text, std::size_t width) {
    std::string result;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size();) {
        std::size_t length = 1;
        const auto lead = static_cast<unsigned char>(text[i]);
        if (lead >= 0xF0) length = 4;
        else if (lead >= 0xE0) length = 3;
        else if (lead >= 0xC0) length = 2;
        if (characters + 1 == width && i + length < text.size()) {
            result += "\u2026";
            ++characters;
            break;
        }
        result.append(text, i, length);
        ++characters;
        i += length;
    }
    if (characters < width) result.append(width - characters, ' ');
    return result;
}

}  // namespace ycontacts_cli::format

#include "sample_server/SamplePhoto.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "sample_server/SampleRandom.h"

namespace sample_server {
namespace {

constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

void appendBigEndian(std::string& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((value >> shift) & 0xFF);
}

std::uint32_t crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFFu;
    for (const char c : bytes) {
        crc ^= static_cast<unsigned char>(c);
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return crc ^ 0xFFFFFFFFu;
}

// Length, type, data, and the CRC of type and data.
void appendChunk(std::string& png, std::string_view type, std::string_view data) {
    appendBigEndian(png, static_cast<std::uint32_t>(data.size()));
    const std::string typed = std::string(type) + std::string(data);
    png += typed;
    appendBigEndian(png, crc32(typed));
}

// A zlib stream of "stored" deflate blocks (no compression), which every PNG reader accepts.
std::string storedZlib(std::string_view data) {
    std::string out = "\x78\x01";
    std::size_t at = 0;
    do {
        const std::size_t length = std::min<std::size_t>(data.size() - at, 65535);
        const bool last = at + length == data.size();
        out += static_cast<char>(last ? 1 : 0);
        for (const std::size_t value : {length, length ^ 0xFFFF}) {
            out += static_cast<char>(value & 0xFF);
            out += static_cast<char>((value >> 8) & 0xFF);
        }
        out += data.substr(at, length);
        at += length;
    } while (at < data.size());
    std::uint32_t a = 1, b = 0;  // Adler-32 of the uncompressed data
    for (const char c : data) {
        a = (a + static_cast<unsigned char>(c)) % 65521;
        b = (b + a) % 65521;
    }
    appendBigEndian(out, (b << 16) | a);
    return out;
}

}  // namespace

std::string photoBytes(const std::string& contactId, std::int64_t photoModifiedMs, bool thumbnail) {
    std::uint64_t seed = static_cast<std::uint64_t>(photoModifiedMs);
    for (const char c : contactId) seed = seed * 131 + static_cast<unsigned char>(c);
    SampleRandom random(seed);
    const std::uint64_t colours[2] = {random.next(), random.next()};
    const std::uint32_t side = thumbnail ? 16 : 64;
    const std::uint32_t square = 2 + static_cast<std::uint32_t>(random.below(6));

    std::string pixels;  // Each row: filter type 0, then R, G, B per pixel.
    for (std::uint32_t y = 0; y < side; ++y) {
        pixels += '\0';
        for (std::uint32_t x = 0; x < side; ++x) {
            const std::uint64_t colour = colours[(x / square + y / square) % 2];
            for (int channel = 0; channel < 3; ++channel) pixels += static_cast<char>(colour >> (8 * channel));
        }
    }
    std::string header;
    appendBigEndian(header, side);
    appendBigEndian(header, side);
    header += std::string("\x08\x02\x00\x00\x00", 5);  // 8 bits per channel, RGB, no interlace
    std::string png = "\x89PNG\r\n\x1a\n";
    appendChunk(png, "IHDR", header);
    appendChunk(png, "IDAT", storedZlib(pixels));
    appendChunk(png, "IEND", "");
    return png;
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

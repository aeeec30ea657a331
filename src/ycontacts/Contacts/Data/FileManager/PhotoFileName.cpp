#include "ycontacts/Contacts/Data/FileManager/PhotoFileName.h"

#include <cstdint>

namespace ycontacts {

namespace {

constexpr char hexDigits[] = "0123456789ABCDEF";

bool needsEscape(unsigned char byte) {
    return byte < 0x20 || byte == 0x7F || byte == '/' || byte == '\\' || byte == '.' || byte == '%';
}

// FNV-1a: stable across runs and builds, which std::hash does not promise; names must survive restarts.
std::uint64_t stableHash(std::string_view text) {
    std::uint64_t hash = 14695981039346656037ull;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 1099511628211ull;
    }
    return hash;
}

}  // namespace

std::string photoFileName(std::string_view id) {
    if (id.empty()) return "%";
    std::string name;
    name.reserve(id.size());
    for (const char c : id) {
        const auto byte = static_cast<unsigned char>(c);
        if (!needsEscape(byte)) {
            name += c;
            continue;
        }
        name += '%';
        name += hexDigits[byte >> 4];
        name += hexDigits[byte & 0xF];
    }
    if (name.size() <= maxPhotoFileNameLength) return name;

    // Room for "%-" and 16 hex digits; step back over a cut escape so that the prefix stays well formed.
    std::size_t keep = maxPhotoFileNameLength - 18;
    if (name[keep - 1] == '%') {
        keep -= 1;
    } else if (name[keep - 2] == '%') {
        keep -= 2;
    }
    name.resize(keep);
    name += "%-";
    const std::uint64_t hash = stableHash(id);
    for (int shift = 60; shift >= 0; shift -= 4) name += hexDigits[(hash >> shift) & 0xF];
    return name;
}

}  // namespace ycontacts

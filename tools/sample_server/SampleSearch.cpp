#include "sample_server/SampleSearch.h"

#include <optional>

namespace sample_server {

std::string foldCase(const std::string& text) {
    std::string folded = text;
    for (std::size_t i = 0; i < folded.size(); ++i) {
        const auto byte = static_cast<unsigned char>(folded[i]);
        if (byte >= 'A' && byte <= 'Z') {
            folded[i] = static_cast<char>(byte + 32);
        } else if (byte == 0xC3 && i + 1 < folded.size()) {
            // U+00C0..U+00DE are C3 80..C3 9E; their lower-case forms are 0x20 higher, except × (C3 97).
            const auto next = static_cast<unsigned char>(folded[i + 1]);
            if (next >= 0x80 && next <= 0x9E && next != 0x97) folded[i + 1] = static_cast<char>(next + 0x20);
            ++i;
        }
    }
    return folded;
}

namespace {

bool startsWithFolded(const std::optional<std::string>& field, const std::string& foldedQuery) {
    return field && foldCase(*field).starts_with(foldedQuery);
}

}  // namespace

bool matchesSearch(const SampleContact& contact, const std::string& query) {
    const std::string folded = foldCase(query);
    if (startsWithFolded(contact.firstName, folded) || startsWithFolded(contact.lastName, folded) ||
        startsWithFolded(contact.nickName, folded) || startsWithFolded(contact.displayName, folded))
        return true;
    for (const SampleEmail& email : contact.emails)
        if (foldCase(email.address).starts_with(folded)) return true;
    return false;
}

}  // namespace sample_server

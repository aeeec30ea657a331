#pragma once
// PhotoFileName: turns a yuid or a photo identifier, as the server sends it, into one safe file name.

#include <string>
#include <string_view>

namespace ycontacts {

// Names longer than this (after encoding) are shortened; with "_thumbnail" or ".png" added they stay well
// under the 255 bytes most file systems allow for one name.
inline constexpr std::size_t maxPhotoFileNameLength = 200;

// Ids come from the server, so any byte may be in them. The result is one path component that cannot leave
// its folder: '/', '\\', '.', '%', control bytes (NUL included) and DEL become "%XX" (upper-case hex), every
// other byte stays; "" becomes "%". Distinct ids give distinct names, and a short name decodes back to its
// id. An encoded name longer than maxPhotoFileNameLength keeps its first bytes (never cutting an escape) and
// ends with "%-" and a 64-bit hash of the whole id: "%-" never appears in an unshortened name, so the two
// kinds cannot meet, and two long ids share a name only if their prefixes and hashes both match.
std::string photoFileName(std::string_view id);

}  // namespace ycontacts

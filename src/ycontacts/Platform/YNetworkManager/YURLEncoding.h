#pragma once
// YURLEncoding: percent-encoding of request parameters for URL queries and form bodies.

#include <map>
#include <string>
#include <string_view>

namespace ycontacts {

// Every byte except the unreserved ones (letters, digits, '-', '.', '_', '~') becomes %XX, so a space
// is "%20", '&' is "%26" and UTF-8 text is encoded byte by byte. "%20" rather than '+' for spaces: every
// decoder reads it the same way, in a query and in a form body alike.
std::string percentEncode(std::string_view text);

// "k1=v1&k2=v2" with keys and values percent-encoded, in the map's (sorted) key order.
std::string formEncode(const std::map<std::string, std::string>& params);

// `url` with `query` added to its query: after '?' when it has none yet, after '&' otherwise, and always
// before a "#fragment". An empty `query` leaves the URL unchanged.
std::string appendQuery(const std::string& url, const std::string& query);

}  // namespace ycontacts

#pragma once
// YHTTPMethod: the HTTP method of a request sent through YNetworkManager.

#include <optional>
#include <string_view>

namespace ycontacts {

// GET comes first: it is the method the contacts calls use.
enum class YHTTPMethod { GET, POST, PUT, DELETE, PATCH, HEAD };

// The method's token as written on the request line ("GET", "POST", ...).
std::string_view rawValue(YHTTPMethod method);
// The method for a request-line token; case-sensitive, as the tokens are. Unknown text gives no value.
std::optional<YHTTPMethod> httpMethodFromRawValue(std::string_view raw);

}  // namespace ycontacts

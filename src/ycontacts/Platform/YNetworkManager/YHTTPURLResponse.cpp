#include "ycontacts/Platform/YNetworkManager/YHTTPURLResponse.h"

#include <algorithm>
#include <cctype>

namespace ycontacts {

namespace {

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

}  // namespace

std::optional<std::string> YHTTPURLResponse::header(std::string_view name) const {
    for (const auto& [headerName, value] : headers) {
        if (equalsIgnoringCase(headerName, name)) return value;
    }
    return std::nullopt;
}

}  // namespace ycontacts

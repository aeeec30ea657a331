#pragma once
// YURLRequest: a request prepared by the caller (URL, method, headers, body), sent with YNetworkManager::send.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Platform/YNetworkManager/YHTTPMethod.h"

namespace ycontacts {

struct YURLRequest {
    std::string url;
    YHTTPMethod method = YHTTPMethod::GET;
    // Sent as given, in this order (for example "If-Modified-Since").
    std::vector<std::pair<std::string, std::string>> headers;
    // Sent for POST, PUT, PATCH and DELETE; GET and HEAD carry no body.
    std::vector<std::uint8_t> body;
};

}  // namespace ycontacts

#pragma once
// YHTTPURLResponse: the status line and headers of an HTTP answer, as delivered to a request's completion.

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ycontacts {

struct YHTTPURLResponse {
    // The URL that answered: the request's URL, or the last one after redirects.
    std::string url;
    int statusCode = 0;
    // Headers of the final answer in arrival order, names as the server wrote them.
    std::vector<std::pair<std::string, std::string>> headers;

    // Value of the first header called `name`, compared without regard to case (HTTP header names are
    // case-insensitive, and HTTP/2 servers send them in lower case).
    std::optional<std::string> header(std::string_view name) const;
};

}  // namespace ycontacts

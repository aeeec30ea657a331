#include "ycontacts/Platform/YNetworkManager/YHTTPMethod.h"

#include <array>
#include <utility>

namespace ycontacts {

namespace {

constexpr std::array<std::pair<YHTTPMethod, std::string_view>, 6> kMethods{{
    {YHTTPMethod::GET, "GET"},
    {YHTTPMethod::POST, "POST"},
    {YHTTPMethod::PUT, "PUT"},
    {YHTTPMethod::DELETE, "DELETE"},
    {YHTTPMethod::PATCH, "PATCH"},
    {YHTTPMethod::HEAD, "HEAD"},
}};

}  // namespace

std::string_view rawValue(YHTTPMethod method) {
    for (const auto& [value, raw] : kMethods) {
        if (value == method) return raw;
    }
    return "GET";
}

std::optional<YHTTPMethod> httpMethodFromRawValue(std::string_view raw) {
    for (const auto& [value, text] : kMethods) {
        if (text == raw) return value;
    }
    return std::nullopt;
}

}  // namespace ycontacts

#include "ycontacts/Platform/YNetworkManager/YURLEncoding.h"

namespace ycontacts {

namespace {

bool isUnreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '.' || c == '_' || c == '~';
}

}  // namespace

std::string percentEncode(std::string_view text) {
    static constexpr char kHex[] = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size() * 3);
    for (const char ch : text) {
        const auto c = static_cast<unsigned char>(ch);
        if (isUnreserved(c)) {
            encoded.push_back(ch);
        } else {
            encoded.push_back('%');
            encoded.push_back(kHex[c >> 4]);
            encoded.push_back(kHex[c & 0x0F]);
        }
    }
    return encoded;
}

std::string formEncode(const std::map<std::string, std::string>& params) {
    std::string encoded;
    for (const auto& [key, value] : params) {
        if (!encoded.empty()) encoded.push_back('&');
        encoded += percentEncode(key);
        encoded.push_back('=');
        encoded += percentEncode(value);
    }
    return encoded;
}

std::string appendQuery(const std::string& url, const std::string& query) {
    if (query.empty()) return url;
    const auto fragmentStart = url.find('#');
    std::string base = url.substr(0, fragmentStart);
    const std::string fragment = fragmentStart == std::string::npos ? std::string() : url.substr(fragmentStart);
    if (base.find('?') == std::string::npos) {
        base.push_back('?');
    } else if (base.back() != '?' && base.back() != '&') {
        base.push_back('&');
    }
    return base + query + fragment;
}

}  // namespace ycontacts

#include "ycontacts_cli/ServerAddress.h"

#include <algorithm>
#include <cctype>

namespace ycontacts_cli {

namespace {

ServerAddressParse rejected(std::string problem) { return {std::nullopt, std::move(problem)}; }

bool isHostCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '.' || c == '-' || c == '_';
}

}  // namespace

std::string ServerAddress::base() const {
    const bool defaultPort = (scheme == "http" && port == 80) || (scheme == "https" && port == 443);
    return scheme + "://" + host + (defaultPort ? "" : ":" + std::to_string(port)) + path;
}

std::string ServerAddress::origin() const { return scheme + "://" + host + ":" + std::to_string(port); }

ServerAddressParse ServerAddress::parse(const std::string& url) {
    if (url.empty()) return rejected("the server URL is empty");
    if (std::any_of(url.begin(), url.end(), [](char c) { return std::isspace(static_cast<unsigned char>(c)); }))
        return rejected("the server URL contains a space");
    const auto schemeEnd = url.find("://");
    if (schemeEnd == std::string::npos) return rejected("the server URL must start with http:// or https://");
    ServerAddress address;
    address.scheme = url.substr(0, schemeEnd);
    std::transform(address.scheme.begin(), address.scheme.end(), address.scheme.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (address.scheme != "http" && address.scheme != "https")
        return rejected("the server URL must start with http:// or https://");
    if (url.find_first_of("?#") != std::string::npos)
        return rejected("the server URL must not carry a query or fragment");

    const std::string rest = url.substr(schemeEnd + 3);
    const auto pathStart = rest.find('/');
    const std::string authority = rest.substr(0, pathStart);
    address.path = pathStart == std::string::npos ? std::string() : rest.substr(pathStart);
    while (!address.path.empty() && address.path.back() == '/') address.path.pop_back();
    if (authority.find('@') != std::string::npos) return rejected("the server URL must not carry user information");

    std::string portText;
    if (!authority.empty() && authority.front() == '[') {
        const auto close = authority.find(']');
        if (close == std::string::npos) return rejected("the server URL has an unclosed IPv6 address");
        address.host = authority.substr(0, close + 1);
        if (close + 1 < authority.size()) {
            if (authority[close + 1] != ':') return rejected("the server URL has text after its IPv6 address");
            portText = authority.substr(close + 2);
            if (portText.empty()) return rejected("the server URL has an empty port");
        }
    } else {
        const auto colon = authority.find(':');
        address.host = authority.substr(0, colon);
        if (colon != std::string::npos) {
            portText = authority.substr(colon + 1);
            if (portText.empty()) return rejected("the server URL has an empty port");
        }
        if (!std::all_of(address.host.begin(), address.host.end(), isHostCharacter))
            return rejected("the server URL's host '" + address.host + "' is not a host name or address");
    }
    if (address.host.empty()) return rejected("the server URL has no host");

    if (portText.empty()) {
        address.port = address.scheme == "https" ? 443 : 80;
    } else {
        if (portText.size() > 5 ||
            !std::all_of(portText.begin(), portText.end(), [](unsigned char c) { return std::isdigit(c); }))
            return rejected("the server URL's port '" + portText + "' is not a number");
        address.port = std::stoi(portText);
        if (address.port < 1 || address.port > 65535)
            return rejected("the server URL's port " + portText + " is outside 1-65535");
    }
    return {address, {}};
}

}  // namespace ycontacts_cli

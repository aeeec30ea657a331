#pragma once
// ServerAddress: a contacts server base URL as a person types it, checked before any request is made.

#include <optional>
#include <string>

namespace ycontacts_cli {

struct ServerAddressParse;

struct ServerAddress {
    std::string scheme;  // "http" or "https"
    std::string host;
    int port = 0;        // the scheme's default when the URL names none
    std::string path;    // a path prefix without trailing slash, often empty

    // scheme://host[:port][/path], without a trailing slash: what every endpoint path is appended to.
    std::string base() const;
    // scheme://host:port, what an HTTP client connects to.
    std::string origin() const;

    // Accepts http:// and https:// URLs with a host, an optional port (1-65535) and an optional path; a trailing
    // slash is dropped. Anything else (another scheme, a query, a fragment, spaces, user info) gives the reason.
    static ServerAddressParse parse(const std::string& url);
};

// The address, or why the text is not one.
struct ServerAddressParse {
    std::optional<ServerAddress> address;
    std::string problem;
};

}  // namespace ycontacts_cli

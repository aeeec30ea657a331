// The checks of a server URL typed on the command line.

#include <gtest/gtest.h>

#include <array>

#include "ycontacts_cli/ServerAddress.h"

namespace {

using ycontacts_cli::ServerAddress;

TEST(CliServerAddressTest, AcceptsHttpUrlsWithoutTheTrailingSlashAndRejectsWhatPathsCannotBeAppendedTo) {
    using Accepted = std::array<const char*, 3>;  // typed, base, origin
    for (const auto& [url, base, origin] :
         {Accepted{"http://127.0.0.1:8080/", "http://127.0.0.1:8080", "http://127.0.0.1:8080"},
          Accepted{"HTTPS://contacts.example.net/prefix//", "https://contacts.example.net/prefix",
                   "https://contacts.example.net:443"},
          Accepted{"http://[::1]:9000", "http://[::1]:9000", "http://[::1]:9000"}}) {
        SCOPED_TRACE(url);
        const auto parsed = ServerAddress::parse(url);
        ASSERT_TRUE(parsed.address) << parsed.problem;
        EXPECT_EQ(parsed.address->base(), base);
        EXPECT_EQ(parsed.address->origin(), origin);
    }
    for (const std::string url : {"", "localhost:80", "ftp://host", "http://", "http://:80", "http://host:",
                                  "http://host:0", "http://host:65536", "http://host:8o", "http://user@host",
                                  "http://host/?x=1", "http://host#top", "http://ho st", "http://[::1"}) {
        const auto parsed = ServerAddress::parse(url);
        EXPECT_FALSE(parsed.address) << url;
        EXPECT_FALSE(parsed.problem.empty()) << url;
    }
}

}  // namespace

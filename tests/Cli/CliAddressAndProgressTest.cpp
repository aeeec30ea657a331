// What a person sees of the tool before and during a sync: the checks of a typed server URL and the progress line.

#include <gtest/gtest.h>

#include <array>

#include "ycontacts_cli/ProgressLine.h"
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

TEST(CliProgressLineTest, ShowsTheBarRateAndTimeLeftWithATotalAndEveryKindOfChangeWithout) {
    ycontacts_cli::SyncProgress progress;
    progress.pages = 3;
    progress.added.personal = 3000;
    progress.elapsedSeconds = 2.0;
    const auto line = ycontacts_cli::ProgressLine::render(progress, 12000);
    for (const char* part :
         {"[######------------------]  25%", "3 pages", "3,000/12,000 contacts", "1,500/s", "~6.0 s left"}) {
        EXPECT_NE(line.find(part), std::string::npos) << part << " is not in " << line;
    }
    progress.completed = true;
    progress.added.org = 9000;
    const auto done = ycontacts_cli::ProgressLine::render(progress, 12000);
    EXPECT_NE(done.find("100%"), std::string::npos) << done;
    EXPECT_EQ(done.find("left"), std::string::npos) << done;

    ycontacts_cli::SyncProgress changes;
    changes.pages = 1;
    changes.added.org = 2;
    changes.updated.personal = 3;
    changes.deleted.personal = 1;
    changes.elapsedSeconds = 0.5;
    const auto counted = ycontacts_cli::ProgressLine::render(changes, std::nullopt);
    EXPECT_EQ(counted.find('['), std::string::npos) << counted;
    EXPECT_NE(counted.find("1 page  6 contacts  12/s"), std::string::npos) << counted;
}

}  // namespace

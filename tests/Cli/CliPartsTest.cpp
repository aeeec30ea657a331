// The tool's own pieces that decide what a person sees: server URL checks and the progress line.

#include <gtest/gtest.h>

#include "ycontacts_cli/ProgressLine.h"
#include "ycontacts_cli/ServerAddress.h"

namespace {

using ycontacts_cli::ServerAddress;

TEST(CliServerAddressTest, AcceptsHttpUrlsAndDropsTheTrailingSlash) {
    const auto plain = ServerAddress::parse("http://127.0.0.1:8080/");
    ASSERT_TRUE(plain.address) << plain.problem;
    EXPECT_EQ(plain.address->base(), "http://127.0.0.1:8080");
    EXPECT_EQ(plain.address->origin(), "http://127.0.0.1:8080");

    const auto withPath = ServerAddress::parse("HTTPS://contacts.example.net/prefix//");
    ASSERT_TRUE(withPath.address) << withPath.problem;
    EXPECT_EQ(withPath.address->base(), "https://contacts.example.net/prefix");
    EXPECT_EQ(withPath.address->origin(), "https://contacts.example.net:443");

    const auto ipv6 = ServerAddress::parse("http://[::1]:9000");
    ASSERT_TRUE(ipv6.address) << ipv6.problem;
    EXPECT_EQ(ipv6.address->base(), "http://[::1]:9000");
}

TEST(CliServerAddressTest, RejectsWhatTheLibraryCouldNotAppendPathsTo) {
    for (const std::string url : {"", "localhost:80", "ftp://host", "http://", "http://:80", "http://host:",
                                  "http://host:0", "http://host:65536", "http://host:8o", "http://user@host",
                                  "http://host/?x=1", "http://host#top", "http://ho st", "http://[::1"}) {
        const auto parsed = ServerAddress::parse(url);
        EXPECT_FALSE(parsed.address) << url;
        EXPECT_FALSE(parsed.problem.empty()) << url;
    }
}

TEST(CliProgressLineTest, WithATotalShowsTheBarRateAndTimeLeft) {
    ycontacts_cli::SyncProgress progress;
    progress.pages = 3;
    progress.added.personal = 3000;
    progress.elapsedSeconds = 2.0;
    const auto line = ycontacts_cli::ProgressLine::render(progress, 12000);
    EXPECT_NE(line.find("[######------------------]  25%"), std::string::npos) << line;
    EXPECT_NE(line.find("3 pages"), std::string::npos) << line;
    EXPECT_NE(line.find("3,000/12,000 contacts"), std::string::npos) << line;
    EXPECT_NE(line.find("1,500/s"), std::string::npos) << line;
    EXPECT_NE(line.find("~6.0 s left"), std::string::npos) << line;

    progress.completed = true;
    progress.added.org = 9000;
    const auto done = ycontacts_cli::ProgressLine::render(progress, 12000);
    EXPECT_NE(done.find("100%"), std::string::npos) << done;
    EXPECT_EQ(done.find("left"), std::string::npos) << done;
}

TEST(CliProgressLineTest, WithoutATotalCountsEveryKindOfChange) {
    ycontacts_cli::SyncProgress progress;
    progress.pages = 1;
    progress.added.org = 2;
    progress.updated.personal = 3;
    progress.deleted.personal = 1;
    progress.elapsedSeconds = 0.5;
    const auto line = ycontacts_cli::ProgressLine::render(progress, std::nullopt);
    EXPECT_EQ(line.find('['), std::string::npos) << line;
    EXPECT_NE(line.find("1 page  6 contacts  12/s"), std::string::npos) << line;
}

}  // namespace

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

#include "EndToEnd/EndToEndFixture.h"

namespace ycontacts::endtoend {
namespace {

using ::testing::ElementsAre;

TEST_F(EndToEndTest, UsersSyncingAtTheSameTimeEachGetTheirOwnContacts) {
    // u1 and u2 share an organisation, so both store its contacts under their own yuid.
    auto sync = harness->sync();
    sync->start("u1", "o1");
    sync->start("u2", "o1");
    sync->start("u3", std::nullopt);
    for (const char* yuid : {"u1", "u2", "u3"}) {
        ASSERT_TRUE(waitForFinish(yuid, 1)) << yuid;
        EXPECT_EQ(count(yuid, "downloadComplete initial"), 1u) << yuid;
        EXPECT_TRUE(storeMatchesServer(*harness, server, yuid));
    }
}

TEST_F(EndToEndTest, RemovingAUsersDataDuringASyncCancelsItsRequestAndNoRowOfTheUserComesBack) {
    ASSERT_TRUE(startAndWait("u2", "o1"));

    // u1's second page is held back far longer than the test waits for it.
    sample_server::Fault slow;
    slow.pathContains = "/self/contacts";
    slow.page = 2;
    slow.delay = std::chrono::milliseconds(60000);
    server.injectFault(slow);
    harness->sync()->start("u1", "o1");
    ASSERT_TRUE(harness->network().log.waitForCount("u1", "sent personal page 2", 1));
    ASSERT_GT(rowsOfUser(harness->databasePath(), "u1"), 0);

    harness->service().removeAllData("u1");
    ASSERT_TRUE(harness->preference().log.waitForCount("u1", "removed", 1));
    // Only the cancellation can answer the held request this soon.
    ASSERT_TRUE(harness->network().log.waitForCount("u1", "reply personal page 2", 1, std::chrono::seconds(20)));

    EXPECT_EQ(rowsOfUser(harness->databasePath(), "u1"), 0);
    EXPECT_EQ(count("u1", "downloadFailed"), 0u);
    EXPECT_EQ(count("u1", "downloadComplete"), 0u);
    EXPECT_FALSE(harness->sync()->isSyncInProgress("u1"));
    EXPECT_EQ(harness->sync()->lastUpdatedTime("u1").value_or(0.0), 0.0);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u2"));

    // Nothing of the old download is kept: the next start begins again at page 1.
    server.clearFaults();
    const auto lineCount = harness->network().log.texts("u1").size();
    ASSERT_TRUE(startAndWait("u1", "o1"));
    EXPECT_EQ(requestsSince("u1", lineCount).front(), "personal page 1");
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

TEST_F(EndToEndTest, RemovingAUsersDataWhileAPageIsBeingStoredEndsTheDownloadThere) {
    std::atomic<bool> removed{false};
    // Runs on the download's thread between storing page 1 and asking for page 2; the removal itself runs on
    // a use-case thread and is complete when the hook returns.
    harness->observer().hook = [&](const LogLine& line) {
        if (line.yuid != "u1" || !line.text.starts_with("contactsAdded personal") || removed.exchange(true)) return;
        harness->service().removeAllData("u1");
        EXPECT_TRUE(harness->preference().log.waitForCount("u1", "removed", 1));
    };
    harness->sync()->start("u1", "o1");
    ASSERT_TRUE(harness->network().log.waitForCount("u1", "reply personal page 1", 1));
    harness->observer().hook = nullptr;

    // Neither rows nor progress of the old download come back, and it asks for nothing more.
    EXPECT_EQ(rowsOfUser(harness->databasePath(), "u1"), 0);
    EXPECT_EQ(harness->network().log.count("u1", "request"), 1u);
    EXPECT_FALSE(harness->sync()->isSyncInProgress("u1"));

    ASSERT_TRUE(startAndWait("u1", "o1"));
    EXPECT_THAT(requestsSince("u1", 0), ElementsAre("personal page 1", "personal page 1", "personal page 2",
                                                    "personal page 3", "personal page 4", "org page 1", "org page 2",
                                                    "org page 3"));
    EXPECT_EQ(count("u1", "downloadComplete"), 1u);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

TEST_F(EndToEndTest, RemovingAUsersDataEndsAResetUnderWaySoTheUserCanBeResetAgain) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    sample_server::Fault slow;
    slow.pathContains = "/self/contacts";
    slow.page = 2;
    slow.delay = std::chrono::milliseconds(60000);
    server.injectFault(slow);
    harness->sync()->resetAndStart("u1", "o1");
    ASSERT_TRUE(harness->network().log.waitForCount("u1", "sent personal page 2", 2));

    harness->service().removeAllData("u1");
    ASSERT_TRUE(harness->preference().log.waitForCount("u1", "removed", 2));
    ASSERT_TRUE(harness->network().log.waitForCount("u1", "reply personal page 2", 2, std::chrono::seconds(20)));
    server.clearFaults();

    harness->sync()->resetAndStart("u1", "o1");
    ASSERT_TRUE(harness->observer().log.waitForCount("u1", "contactDataReset", 2));
    ASSERT_TRUE(waitForFinish("u1", 2));
    EXPECT_EQ(count("u1", "downloadComplete initial"), 2u);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

TEST_F(EndToEndTest, AUserCanBeResetAgainOnceTheFreshDownloadHasCompletedOrFailed) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    auto sync = harness->sync();

    sync->resetAndStart("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 2));
    EXPECT_EQ(count("u1", "contactDataReset"), 1u);
    EXPECT_EQ(count("u1", "downloadComplete initial"), 2u);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    const auto lines = harness->observer().log.texts("u1");
    const auto reset = std::find(lines.begin(), lines.end(), "contactDataReset");
    ASSERT_NE(reset, lines.end());
    // The counts reported right after the reset are those of an empty store.
    EXPECT_THAT(std::vector<std::string>(reset, reset + 3),
                ElementsAre("contactDataReset", "countUpdate org=0 personal=0", "downloadStarted initial"));

    // A reset whose download fails ...
    sample_server::Fault failure;
    failure.pathContains = "/self/contacts";
    failure.page = 2;
    failure.status = 503;
    server.injectFault(failure);
    sync->resetAndStart("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 3));
    EXPECT_EQ(count("u1", "contactDataReset"), 2u);
    EXPECT_EQ(count("u1", "downloadFailed"), 1u);
    const auto personal = serverContacts(server, "u1", false);
    EXPECT_TRUE(storeHolds(*harness, server, "u1", false, {personal.begin(), personal.begin() + 50}));
    EXPECT_TRUE(storeHolds(*harness, server, "u1", true, {}));

    // ... does not keep the user from being reset again.
    const auto lineCount = harness->network().log.texts("u1").size();
    sync->resetAndStart("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 4));
    EXPECT_EQ(count("u1", "contactDataReset"), 3u);
    EXPECT_EQ(count("u1", "downloadComplete initial"), 3u);
    EXPECT_EQ(requestsSince("u1", lineCount).front(), "personal page 1");
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

}  // namespace
}  // namespace ycontacts::endtoend

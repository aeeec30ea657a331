// A page that fails, on the server or in the store, ends the download with a failure and keeps what was stored
// before it; the next download goes on from that page (an initial one) or since the last sync (a later one).

#include <gtest/gtest.h>

#include <algorithm>

#include "EndToEnd/EndToEndFixture.h"
#include "Support/StoreRefusal.h"

namespace ycontacts::endtoend {
namespace {

using sample_server::Fault;
using sample_server::SampleContact;

// How the failing download starts: the first one, an incremental sync after it, or a reset after it.
enum class Run { initial, incremental, reset };

struct FaultCase {
    const char* name;
    Run run;
    bool isOrg;
    int page;
    Fault fault;
    // Instead of a server fault: the store refuses the 8th contact of the page, as a full disk would.
    bool storeRefuses = false;
};

const FaultCase faultCases[] = {
    {"ServerErrorOnPersonalPage3", Run::initial, false, 3, {.status = 500}},
    {"TruncatedBodyOnPersonalPage2", Run::initial, false, 2, {.truncateBody = true}},
    {"MalformedBodyOnOrgPage1", Run::initial, true, 1, {.malformedBody = true}},
    // A client may retry a request whose reused connection died without a byte, so the fault lasts.
    {"DroppedConnectionOnOrgPage2", Run::initial, true, 2, {.times = 3, .dropConnection = true}},
    {"TimeOutOnPersonalPage2", Run::initial, false, 2, {.delay = std::chrono::milliseconds(15000)}},
    {"StoreRefusesAContactOfPersonalPage2", Run::initial, false, 2, {}, true},
    // The personal part of the sync is applied, the organisation part fails.
    {"IncrementalServerErrorOnOrgPage1", Run::incremental, true, 1, {.status = 500}},
    {"IncrementalStoreRefusesAChangedContact", Run::incremental, false, 1, {}, true},
    // A reset whose download fails does not keep the user from being reset again.
    {"ResetServerErrorOnPersonalPage2", Run::reset, false, 2, {.status = 503}},
};

class SyncFaultTest : public EndToEndTest, public ::testing::WithParamInterface<FaultCase> {
protected:
    // A time-out needs a client that gives up sooner than the server's delay.
    std::chrono::milliseconds transferTimeout() override {
        return GetParam().fault.delay.count() > 0 ? std::chrono::milliseconds(2000) : EndToEndTest::transferTimeout();
    }
};

std::vector<SampleContact> firstPages(const std::vector<SampleContact>& contacts, int pages) {
    return {contacts.begin(), contacts.begin() + std::min<long>(static_cast<long>(contacts.size()), pages * 50L)};
}

TEST_P(SyncFaultTest, AFailedPageEndsTheDownloadKeepsWhatWasStoredAndTheNextDownloadResumes) {
    const auto& faultCase = GetParam();
    const auto personal = serverContacts(server, "u1", false);
    const auto org = serverContacts(server, "u1", true);
    const bool incremental = faultCase.run == Run::incremental;
    const std::size_t earlier = faultCase.run == Run::initial ? 0 : 1;
    if (earlier) {
        ASSERT_TRUE(startAndWait("u1", "o1"));
    }
    std::optional<double> synced;
    if (incremental) {
        synced = harness->sync()->lastUpdatedTime("u1");
        auto renamed = personal[7];
        renamed.firstName = "Renamed";
        ASSERT_TRUE(server.updateContact("u1", false, renamed));
        ASSERT_TRUE(server.deleteContact("o1", true, org[2].contactId));
    }
    const auto& refused = (faultCase.isOrg ? org : personal).at(static_cast<std::size_t>(faultCase.page - 1) * 50 + 7);
    if (faultCase.storeRefuses) {
        ASSERT_TRUE(testsupport::refuseContact(harness->databasePath(), refused.contactId));
    } else {
        auto fault = faultCase.fault;
        fault.pathContains = faultCase.isOrg ? "/org/contacts" : "/self/contacts";
        fault.page = faultCase.page;
        server.injectFault(fault);
    }
    const auto restart = [&] {
        if (faultCase.run == Run::initial) harness->sync()->start("u1", "o1");
        if (faultCase.run == Run::incremental) harness->sync()->syncContacts("u1", "o1");
        if (faultCase.run == Run::reset) harness->sync()->resetAndStart("u1", "o1");
    };

    restart();
    ASSERT_TRUE(waitForFinish("u1", earlier + 1));
    EXPECT_EQ(count("u1", faultCase.storeRefuses ? "downloadFailed storageError" : "downloadFailed"), 1u);
    EXPECT_FALSE(harness->sync()->isSyncInProgress("u1"));
    if (incremental) {
        // The last sync time stays, so the next sync asks for the same changes again.
        EXPECT_EQ(harness->sync()->lastUpdatedTime("u1"), synced);
        EXPECT_EQ(count("u1", "contactsUpdated personal " + personal[7].contactId), faultCase.storeRefuses ? 0u : 1u);
    } else {
        // Everything before the failed page stays stored, and nothing of that page is announced.
        const auto lines = harness->observer().log.texts("u1");
        const auto started = std::find(lines.rbegin(), lines.rend(), "downloadStarted initial").base();
        EXPECT_EQ(
            std::count_if(started, lines.end(), [](const auto& line) { return line.starts_with("contactsAdded"); }),
            (faultCase.isOrg ? 4 : 0) + faultCase.page - 1);
        EXPECT_TRUE(storeHolds(*harness, server, "u1", false,
                               faultCase.isOrg ? personal : firstPages(personal, faultCase.page - 1)));
        EXPECT_TRUE(storeHolds(*harness, server, "u1", true,
                               faultCase.isOrg ? firstPages(org, faultCase.page - 1) : std::vector<SampleContact>{}));
    }

    server.clearFaults();
    ASSERT_TRUE(testsupport::acceptEveryContact(harness->databasePath()));
    const auto retried = networkLines("u1");
    restart();
    ASSERT_TRUE(waitForFinish("u1", earlier + 2));
    EXPECT_EQ(count("u1", incremental ? "downloadComplete sync" : "downloadComplete initial"),
              earlier + (incremental ? 0 : 1));
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    if (!incremental) {
        // An initial download goes on at the failed page, a reset starts again at the first.
        const int page = faultCase.run == Run::reset ? 1 : faultCase.page;
        EXPECT_EQ(requestsSince("u1", retried).at(0),
                  std::string(faultCase.isOrg ? "org" : "personal") + " page " + std::to_string(page));
    }
}

INSTANTIATE_TEST_SUITE_P(Faults, SyncFaultTest, ::testing::ValuesIn(faultCases),
                         [](const ::testing::TestParamInfo<FaultCase>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace ycontacts::endtoend

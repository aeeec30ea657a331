#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/EndToEndFixture.h"
#include "Support/StoreRefusal.h"

namespace ycontacts::endtoend {
namespace {

using ::testing::ElementsAre;

struct FaultCase {
    const char* name;
    bool isOrg;
    int page;
    sample_server::Fault fault;
    // Instead of the server's fault: the store refuses a contact of the page, as a full disk would.
    bool storeRefuses = false;
};

void PrintTo(const FaultCase& faultCase, std::ostream* stream) { *stream << faultCase.name; }

// A time-out needs a client that gives up sooner than the server's delay.
HarnessSettings settingsFor(const FaultCase& faultCase) {
    HarnessSettings settings;
    if (faultCase.fault.delay.count() > 0) settings.network.transferTimeout = std::chrono::milliseconds(2000);
    return settings;
}

sample_server::Fault fault(auto&& configure) {
    sample_server::Fault value;
    configure(value);
    return value;
}

const FaultCase faultCases[] = {
    {"ServerErrorOnPersonalPage3", false, 3, fault([](auto& f) { f.status = 500; })},
    {"TruncatedBodyOnPersonalPage2", false, 2, fault([](auto& f) { f.truncateBody = true; })},
    {"MalformedBodyOnOrgPage1", true, 1, fault([](auto& f) { f.malformedBody = true; })},
    // A client may retry a request whose reused connection died without a byte, so the fault lasts.
    {"DroppedConnectionOnOrgPage2", true, 2, fault([](auto& f) {
         f.dropConnection = true;
         f.times = 3;
     })},
    {"TimeOutOnPersonalPage2", false, 2, fault([](auto& f) { f.delay = std::chrono::milliseconds(15000); })},
    {"StoreRefusesAContactOfPersonalPage2", false, 2, {}, true},
};

class SyncFaultTest : public EndToEndTest, public ::testing::WithParamInterface<FaultCase> {
protected:
    HarnessSettings harnessSettings() override { return settingsFor(GetParam()); }
};

TEST_P(SyncFaultTest, AFailedPageEndsTheDownloadKeepsWhatWasStoredAndALaterStartResumesThere) {
    const auto& faultCase = GetParam();
    const auto personal = serverContacts(server, "u1", false);
    const auto org = serverContacts(server, "u1", true);
    auto injected = faultCase.fault;
    injected.pathContains = faultCase.isOrg ? "/org/contacts" : "/self/contacts";
    injected.page = faultCase.page;
    const auto& refused = (faultCase.isOrg ? org : personal).at(static_cast<std::size_t>(faultCase.page - 1) * 50 + 7);
    if (faultCase.storeRefuses) {
        ASSERT_TRUE(testsupport::refuseContact(harness->databasePath(), refused.contactId));
    } else {
        server.injectFault(injected);
    }

    EXPECT_FALSE(startAndWait("u1", "o1"));
    EXPECT_EQ(count("u1", faultCase.storeRefuses ? "downloadFailed storageError" : "downloadFailed"), 1u);
    EXPECT_EQ(count("u1", "downloadComplete"), 0u);
    EXPECT_FALSE(harness->sync()->isSyncInProgress("u1"));

    // Everything before the failed page stays stored, and nothing of that page is announced.
    const auto personalPages = faultCase.isOrg ? expectedPages(idsOf(personal), 50).size() : 0;
    EXPECT_EQ(count("u1", "contactsAdded"), personalPages + static_cast<std::size_t>(faultCase.page - 1));
    const auto before = [](const std::vector<sample_server::SampleContact>& contacts, int page) {
        const auto end = std::min(contacts.size(), static_cast<std::size_t>((page - 1) * 50));
        return std::vector<sample_server::SampleContact>(contacts.begin(), contacts.begin() + static_cast<long>(end));
    };
    EXPECT_TRUE(storeHolds(*harness, server, "u1", false, faultCase.isOrg ? personal : before(personal, faultCase.page)));
    EXPECT_TRUE(storeHolds(*harness, server, "u1", true, 
                           faultCase.isOrg ? before(org, faultCase.page) : std::vector<sample_server::SampleContact>{}));

    server.clearFaults();
    ASSERT_TRUE(testsupport::acceptEveryContact(harness->databasePath()));
    const auto lineCount = harness->network().log.texts("u1").size();
    ASSERT_TRUE(startAndWait("u1", "o1"));
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    const auto requests = requestsSince("u1", lineCount);
    ASSERT_FALSE(requests.empty());
    EXPECT_EQ(requests.front(), std::string(faultCase.isOrg ? "org" : "personal") + " page " +
                                    std::to_string(faultCase.page));
    EXPECT_EQ(count("u1", "downloadComplete initial"), 1u);
}

INSTANTIATE_TEST_SUITE_P(Faults, SyncFaultTest, ::testing::ValuesIn(faultCases),
                         [](const ::testing::TestParamInfo<FaultCase>& info) { return std::string(info.param.name); });

TEST_F(EndToEndTest, AFailedIncrementalSyncKeepsTheLastSyncTimeSoTheNextSyncStillBringsItsChanges) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    const auto synced = harness->sync()->lastUpdatedTime("u1");
    const auto personal = serverContacts(server, "u1", false);
    const auto org = serverContacts(server, "u1", true);
    auto renamed = personal[3];
    renamed.firstName = "Renamed";
    ASSERT_TRUE(server.updateContact("u1", false, renamed));
    ASSERT_TRUE(server.deleteContact("o1", true, org[2].contactId));

    // The personal part of the sync is applied, the organisation part fails.
    sample_server::Fault failure;
    failure.pathContains = "/sync/org/contacts";
    failure.status = 500;
    server.injectFault(failure);
    harness->sync()->syncContacts("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 2));
    EXPECT_EQ(count("u1", "downloadFailed"), 1u);
    EXPECT_EQ(harness->sync()->lastUpdatedTime("u1"), synced);
    EXPECT_FALSE(harness->sync()->isSyncInProgress("u1"));

    harness->sync()->syncContacts("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 3));
    EXPECT_EQ(count("u1", "downloadComplete sync"), 1u);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

// The store refuses a contact of an incremental page: the last sync time stays, so the next sync asks again.
TEST_F(EndToEndTest, AnIncrementalPageTheStoreRefusesKeepsTheLastSyncTimeSoTheNextSyncBringsItAgain) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    const auto synced = harness->sync()->lastUpdatedTime("u1");
    auto renamed = serverContacts(server, "u1", false)[60];
    renamed.firstName = "Renamed";
    ASSERT_TRUE(server.updateContact("u1", false, renamed));
    ASSERT_TRUE(testsupport::refuseContact(harness->databasePath(), renamed.contactId));

    harness->sync()->syncContacts("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 2));
    EXPECT_EQ(count("u1", "downloadFailed storageError"), 1u);
    EXPECT_EQ(count("u1", "contactsUpdated"), 0u);
    EXPECT_EQ(harness->sync()->lastUpdatedTime("u1"), synced);

    ASSERT_TRUE(testsupport::acceptEveryContact(harness->databasePath()));
    harness->sync()->syncContacts("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 3));
    EXPECT_EQ(count("u1", "downloadComplete sync"), 1u);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

TEST_F(EndToEndTest, ANotFoundEnvelopeInMidDownloadEndsThatPartAsCompleteAndAResetFetchesTheRest) {
    sample_server::Fault envelope;
    envelope.pathContains = "/self/contacts";
    envelope.page = 2;
    envelope.error404Envelope = true;
    server.injectFault(envelope);

    // The envelope reads as an empty last page: no failure, the personal part ends after page 1.
    ASSERT_TRUE(startAndWait("u1", "o1"));
    EXPECT_EQ(count("u1", "downloadFailed"), 0u);
    const auto personal = serverContacts(server, "u1", false);
    EXPECT_TRUE(storeHolds(*harness, server, "u1", false, {personal.begin(), personal.begin() + 50}));
    EXPECT_TRUE(storeHolds(*harness, server, "u1", true, serverContacts(server, "u1", true)));
    EXPECT_THAT(requestsSince("u1", 0), ElementsAre("personal page 1", "personal page 2", "org page 1", "org page 2",
                                                    "org page 3"));

    harness->sync()->resetAndStart("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 2));
    EXPECT_EQ(count("u1", "contactDataReset"), 1u);
    EXPECT_EQ(count("u1", "downloadComplete initial"), 2u);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

}  // namespace
}  // namespace ycontacts::endtoend

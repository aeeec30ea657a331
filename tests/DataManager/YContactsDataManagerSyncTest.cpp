#include <algorithm>

#include "DataManager/DataManagerTestSupport.h"

namespace ycontacts::dmtest {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Return;

struct PageEnd {
    int count;
    bool hasMore;
    bool asksForNextPage;
};

class PageLoopEndTest : public DataManagerTest, public ::testing::WithParamInterface<PageEnd> {};

// A page short of the limit by 1 to 49 contacts is taken as cut short: the next page is asked for even
// though the server says there is no more.
TEST_P(PageLoopEndTest, TheLoopEndsOnlyOnAFullOrClearlyShortLastPage) {
    const auto [count, hasMore, asksForNextPage] = GetParam();
    manager->runInitialFetch("u1", std::nullopt);
    const auto first = network->nextPage();
    ASSERT_EQ(asked(first), "u1 nil personal page 1 of 1000 since nil");
    first->reply(page(count, hasMore));

    if (asksForNextPage) {
        ASSERT_EQ(network->pendingPages(), 1u);
        EXPECT_EQ(asked(network->nextPage()), "u1 nil personal page 2 of 1000 since nil");
        // The next page index is stored before it is asked for, so a failure resumes there.
        EXPECT_EQ(preference->startIndex("u1", false), 2);
        EXPECT_TRUE(manager->isSyncInProgress("u1"));
    } else {
        EXPECT_EQ(network->pendingPages(), 0u);
        EXPECT_FALSE(manager->isSyncInProgress("u1"));
        EXPECT_THAT(observer->events(), ::testing::Contains("downloadComplete u1 nil initial"));
    }
}

INSTANTIATE_TEST_SUITE_P(LimitOf1000, PageLoopEndTest,
                         ::testing::Values(PageEnd{1000, true, true}, PageEnd{1000, false, false},
                                           PageEnd{990, false, true}, PageEnd{500, false, false},
                                           PageEnd{951, false, true}, PageEnd{950, false, false},
                                           PageEnd{999, false, true}, PageEnd{0, false, false},
                                           PageEnd{1200, false, false}),
                         [](const ::testing::TestParamInfo<PageEnd>& info) {
                             return "count" + std::to_string(info.param.count) +
                                    (info.param.hasMore ? "_hasMore" : "_noMore");
                         });

TEST_F(DataManagerTest, ASecondInitialFetchWhileOneIsInFlightDoesNothing) {
    manager->runInitialFetch("u1", "o1");
    manager->runInitialFetch("u1", "o1");
    manager->start("u1", "o1");
    EXPECT_TRUE(network->nextPage());
    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_THAT(observer->events(), ElementsAre("downloadStarted u1 o1 initial"));
}

TEST_F(DataManagerTest, AFailedPageEndsTheDownloadAndALaterFetchResumesAtThatPage) {
    manager->runInitialFetch("u1", "o1");
    network->nextPage()->reply(page(1000, true));
    const auto second = network->nextPage();
    ASSERT_EQ(asked(second), "u1 nil personal page 2 of 1000 since nil");
    second->reply(YContactNetworkResponse::getResponse(YContactError::authorizationError));

    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_EQ(observer->events().back(), "downloadFailed u1 o1 authorizationError");
    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_FALSE(preference->completeState("u1", false));

    manager->start("u1", "o1");
    const auto resumed = network->nextPage();
    ASSERT_EQ(asked(resumed), "u1 nil personal page 2 of 1000 since nil");

    // No reply at all counts as a failure as well.
    resumed->reply(std::nullopt);
    EXPECT_EQ(observer->events().back(), "downloadFailed u1 o1 unknownError");
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
}

TEST_F(DataManagerTest, WithoutANetworkServiceADownloadFailsAtOnce) {
    manager = std::make_shared<YContactsDataManager>(database, nullptr, preference, fileService);
    manager->runInitialFetch("u1", std::nullopt);
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_THAT(observer->events(),
                ElementsAre("downloadStarted u1 nil initial", "downloadFailed u1 nil networkFailure"));
}

TEST_F(DataManagerTest, WithoutAYoidTheOrganisationDownloadIsMarkedCompleteWithoutAnyRequest) {
    LogCapture log;
    EXPECT_CALL(*preference, setCompleteState("u1", true, false));
    EXPECT_CALL(*preference, setCompleteState("u1", true, true));
    manager->runInitialFetch("u1", std::nullopt);
    network->nextPage()->reply(page(3, false));

    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_TRUE(manager->wasInitialDownloadCompleted("u1", std::nullopt));
    ASSERT_EQ(observer->completionTimes().size(), 1u);
    EXPECT_EQ(manager->lastUpdatedTime("u1"), observer->completionTimes().front());

    const auto messages = log.messages();
    const auto logged = [&](const std::string& line) {
        return std::find(messages.begin(), messages.end(), line) != messages.end();
    };
    EXPECT_TRUE(logged("Initial Fetch started u1 nil"));
    EXPECT_TRUE(logged("Download contacts yuid: u1 yoid: nil isOrg: false startIndex: 1 limit: 1000 syncTime: nil"));
    EXPECT_TRUE(logged("Contacts fetch complete yuid: u1 yoid: nil isOrg: false final index: 1 syncTime: nil"));
    EXPECT_TRUE(logged("No yoid found for user u1"));
    EXPECT_TRUE(logged("Initial download complete yuid: u1 isOrg: true"));
    EXPECT_TRUE(logged("update contact count for u1"));
    EXPECT_TRUE(logged("Sync contacts complete"));
}

TEST_F(DataManagerTest, AnInitialFetchAppliesPagesInOrderAndReportsEachStep) {
    ON_CALL(*database, getContactByContactId("u1", "b")).WillByDefault(Return(contacts({"b"}).front()));
    {
        InSequence order;
        EXPECT_CALL(*database, save("u1", contacts({"a"})));
        EXPECT_CALL(*database, getContactByContactId("u1", "b"));
        EXPECT_CALL(*database, updateContacts("u1", contacts({"b"})));
        EXPECT_CALL(*database, deleteContacts("u1", std::vector<std::string>{"c"}));
        EXPECT_CALL(*database, save("u1", contacts({"d"})));
    }
    manager->runInitialFetch("u1", "o1");
    auto personal = page(3, false);
    personal.newContacts = contacts({"a"});
    personal.updatedContacts = contacts({"b"});
    personal.deletedContacts = std::vector<std::string>{"c"};
    network->nextPage()->reply(personal);

    const auto organisation = network->nextPage();
    ASSERT_EQ(asked(organisation), "u1 o1 org page 1 of 1000 since nil");
    EXPECT_TRUE(manager->isSyncInProgress("u1"));
    auto orgPage = page(1, false);
    orgPage.newContacts = contacts({"d"});
    organisation->reply(orgPage);

    EXPECT_THAT(observer->events(),
                ElementsAre("downloadStarted u1 o1 initial", "contactsAdded u1 personal a",
                            "contactsUpdated u1 personal b", "contactsDeleted u1 personal c", "countUpdate u1 2 3",
                            "countUpdate u1 2 3", "contactsAdded u1 org d", "countUpdate u1 2 3",
                            "countUpdate u1 2 3", "downloadComplete u1 o1 initial"));
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
}

TEST_F(DataManagerTest, UpdatedContactsTheStoreDoesNotKnowAreSavedAllTheSame) {
    ON_CALL(*database, getContactByContactId("u1", "known")).WillByDefault(Return(contacts({"known"}).front()));
    EXPECT_CALL(*database, updateContacts("u1", contacts({"known"})));
    EXPECT_CALL(*database, save("u1", contacts({"new1", "new2"})));
    manager->runInitialFetch("u1", std::nullopt);
    auto update = page(3, false);
    update.updatedContacts = contacts({"new1", "known", "new2"});
    network->nextPage()->reply(update);
    EXPECT_THAT(observer->events(), ::testing::Contains("contactsUpdated u1 personal new1 known new2"));
}

TEST_F(DataManagerTest, AnIncrementalSyncAsksForChangesSinceTheLastSyncAndReportsCompletion) {
    preference->seed("u1", true, true, 1234.0);
    EXPECT_CALL(*preference, setStartIndex(_, _, _)).Times(0);
    manager->syncContacts("u1", "o1");

    // A full personal page, the short last one, then the organisation's: all since the stored time.
    const std::pair<const char*, YContactNetworkResponse> steps[] = {
        {"u1 nil personal page 1 of 1000 since 1234", page(1000, true)},
        {"u1 nil personal page 2 of 1000 since 1234", page(0, false)},
        {"u1 o1 org page 1 of 1000 since 1234", page(0, false)}};
    for (const auto& [expected, reply] : steps) {
        const auto request = network->nextPage();
        ASSERT_EQ(asked(request), expected);
        request->reply(reply);
    }

    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    const auto stored = manager->lastUpdatedTime("u1");
    ASSERT_TRUE(stored);
    EXPECT_GT(*stored, 1234.0);
    EXPECT_EQ(observer->completionTimes(), std::vector<double>{*stored});
    EXPECT_EQ(observer->events().front(), "downloadStarted u1 o1 sync");
    EXPECT_EQ(observer->events().back(), "downloadComplete u1 o1 sync");
}

TEST_F(DataManagerTest, AReplyArrivingAfterTheDataManagerIsGoneIsDropped) {
    EXPECT_CALL(*database, save(_, _)).Times(0);
    EXPECT_CALL(*preference, setCompleteState(_, _, _)).Times(0);
    manager->runInitialFetch("u1", std::nullopt);
    const auto request = network->nextPage();
    ASSERT_TRUE(request);
    observer->clear();
    manager.reset();

    auto late = page(1, false);
    late.newContacts = contacts({"a"});
    request->reply(late);
    EXPECT_TRUE(observer->events().empty());
    EXPECT_EQ(network->pendingPages(), 0u);
}

TEST_F(DataManagerTest, TheScheduledSyncVisitsEveryStartedUserWithItsYoid) {
    preference->seed("u1", true, true, 10.0);
    preference->seed("u2", true, true, 20.0);
    manager->start("u1", "o1");
    manager->start("u2", std::nullopt);
    manager->start("u3", std::nullopt);
    manager->removeAllData("u3");
    // Finish the syncs that start began, so the scheduled sync finds both users idle.
    // The stale page of u3, whose data was removed, is dropped.
    while (network->pendingPages() > 0) network->nextPage()->reply(page(0, false));
    ASSERT_FALSE(manager->isSyncInProgress("u1"));
    ASSERT_FALSE(manager->isSyncInProgress("u2"));
    observer->clear();

    manager->startScheduledSync();
    const auto first = network->nextPage();
    const auto second = network->nextPage();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->yuid, "u1");
    EXPECT_EQ(second->yuid, "u2");
    EXPECT_EQ(network->pendingPages(), 0u);
    first->reply(page(0, false));
    const auto organisation = network->nextPage();
    ASSERT_TRUE(organisation);
    EXPECT_EQ(organisation->yoid, "o1");
    const auto events = observer->events();
    ASSERT_GE(events.size(), 2u);
    EXPECT_EQ(events[0], "downloadStarted u1 o1 sync");
    EXPECT_EQ(events[1], "downloadStarted u2 nil sync");
}

}  // namespace
}  // namespace ycontacts::dmtest

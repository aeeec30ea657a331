// The data manager's downloads: where a download starts, the page loop, how pages are stored and announced,
// failures, resets, removals, and the two timers.

#include <algorithm>
#include <future>
#include <mutex>
#include <thread>

#include "DataManager/DataManagerTestSupport.h"

namespace ycontacts::dmtest {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::InSequence;

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
        return;
    }
    // Without a yoid the organisation part is marked complete without a request.
    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_TRUE(manager->wasInitialDownloadCompleted("u1", std::nullopt));
    EXPECT_EQ(events().back(), "downloadComplete u1 nil initial");
    ASSERT_EQ(observer->completionTimes.values().size(), 1u);
    EXPECT_EQ(manager->lastUpdatedTime("u1"), observer->completionTimes.values().front());
}

INSTANTIATE_TEST_SUITE_P(
    LimitOf1000, PageLoopEndTest,
    ::testing::Values(PageEnd{1000, true, true}, PageEnd{1000, false, false}, PageEnd{990, false, true},
                      PageEnd{500, false, false}, PageEnd{951, false, true}, PageEnd{950, false, false},
                      PageEnd{999, false, true}, PageEnd{0, false, false}, PageEnd{1200, false, false}),
    [](const ::testing::TestParamInfo<PageEnd>& info) {
        return "count" + std::to_string(info.param.count) + (info.param.hasMore ? "_hasMore" : "_noMore");
    });

// Where a download begins, by the progress stored for the user and the operation asked for.
TEST_F(DataManagerTest, EachOperationStartsWhereTheStoredProgressSays) {
    struct Row {
        const char* yuid;
        bool orgComplete, personalComplete;
        double lastUpdated;
        int storedPage;
        void (YContactsDataManager::*operation)(const std::string&, const std::optional<std::string>&);
        const char* firstRequest;
        const char* started;
    };
    const Row rows[] = {
        // Organisation complete, personal not: the initial fetch again, from the stored page.
        {"u1", true, false, 5000, 3, &YContactsDataManager::start, "u1 nil personal page 3 of 1000 since nil",
         "downloadStarted u1 o1 initial"},
        // Personal complete, organisation not: straight to the organisation part.
        {"u2", false, true, 0, 0, &YContactsDataManager::start, "u2 o1 org page 1 of 1000 since nil",
         "downloadStarted u2 o1 initial"},
        // Both complete: an incremental sync from page 1, changes since the stored time.
        {"u3", true, true, 7000, 4, &YContactsDataManager::start, "u3 nil personal page 1 of 1000 since 7000",
         "downloadStarted u3 o1 sync"},
        // An incomplete user asked to sync gets the initial fetch.
        {"u4", false, false, 0, 0, &YContactsDataManager::syncContacts, "u4 nil personal page 1 of 1000 since nil",
         "downloadStarted u4 o1 initial"},
        // A complete user asked for the initial fetch is handed to the sync, which finds the user busy.
        {"u5", true, true, 7000, 0, &YContactsDataManager::runInitialFetch, "none", "downloadStarted u5 o1 initial"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.yuid);
        seed(row.yuid, row.orgComplete, row.personalComplete, row.lastUpdated);
        if (row.storedPage) preference->setStartIndex(row.yuid, row.storedPage, false);
        observer->events.clear();
        ((*manager).*row.operation)(row.yuid, "o1");
        EXPECT_EQ(asked(network->pendingPages() ? network->nextPage() : std::nullopt), row.firstRequest);
        EXPECT_EQ(events(), Ids{row.started});
        EXPECT_EQ(network->pendingPages(), 0u);
    }
}

TEST_F(DataManagerTest, ASecondInitialFetchWhileOneIsInFlightDoesNothing) {
    manager->runInitialFetch("u1", "o1");
    manager->runInitialFetch("u1", "o1");
    manager->start("u1", "o1");
    EXPECT_TRUE(network->nextPage());
    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_THAT(events(), ElementsAre("downloadStarted u1 o1 initial"));
}

TEST_F(DataManagerTest, AnInitialFetchStoresEachPageBeforeAnnouncingItAndCountsAfter) {
    ON_CALL(*database, getContactByContactId("u1", "b")).WillByDefault(Return(contacts({"b"}).front()));
    {
        InSequence order;
        EXPECT_CALL(*database, save("u1", contacts({"a"})));
        EXPECT_CALL(*database, getContactByContactId("u1", "b"));
        EXPECT_CALL(*database, getContactByContactId("u1", "n"));
        // Updated contacts the store does not know are saved all the same.
        EXPECT_CALL(*database, updateContacts("u1", contacts({"b"})));
        EXPECT_CALL(*database, save("u1", contacts({"n"})));
        EXPECT_CALL(*database, deleteContacts("u1", Ids{"c"}));
        EXPECT_CALL(*database, save("u1", contacts({"d"})));
    }
    manager->runInitialFetch("u1", "o1");
    auto personal = page(4, false);
    personal.newContacts = contacts({"a"});
    personal.updatedContacts = contacts({"b", "n"});
    personal.deletedContacts = Ids{"c"};
    network->nextPage()->reply(personal);

    const auto organisation = network->nextPage();
    ASSERT_EQ(asked(organisation), "u1 o1 org page 1 of 1000 since nil");
    EXPECT_TRUE(manager->isSyncInProgress("u1"));
    auto orgPage = page(1, false);
    orgPage.newContacts = contacts({"d"});
    organisation->reply(orgPage);

    EXPECT_THAT(events(), ElementsAre("downloadStarted u1 o1 initial", "contactsAdded u1 personal a",
                                      "contactsUpdated u1 personal b n", "contactsDeleted u1 personal c",
                                      "countUpdate u1 2 3", "countUpdate u1 2 3", "contactsAdded u1 org d",
                                      "countUpdate u1 2 3", "countUpdate u1 2 3", "downloadComplete u1 o1 initial"));
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_TRUE(preference->completeState("u1", true) && preference->completeState("u1", false));
}

TEST_F(DataManagerTest, AnIncrementalSyncAsksForChangesSinceTheLastSyncAndReportsCompletion) {
    seed("u1", true, true, 1234.0);
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
    // A sync keeps no page index: the next one starts at page 1 again.
    EXPECT_EQ(preference->startIndex("u1", false), 1);
    const auto stored = manager->lastUpdatedTime("u1");
    ASSERT_TRUE(stored);
    EXPECT_GT(*stored, 1234.0);
    EXPECT_EQ(observer->completionTimes.values(), std::vector<double>{*stored});
    EXPECT_EQ(events().front(), "downloadStarted u1 o1 sync");
    EXPECT_EQ(events().back(), "downloadComplete u1 o1 sync");
}

// The second page fails in one of several ways: the download ends with the error, nothing of the page is
// announced, and the next start asks for that page again.
TEST_F(DataManagerTest, AFailedPageEndsTheDownloadAndTheNextStartResumesAtIt) {
    struct Row {
        const char* name;
        std::function<std::optional<YContactNetworkResponse>(NiceMock<FakeContactsDatabaseService>&)> failure;
        const char* reported;
    };
    const auto withContacts = [](auto&& refuse) {
        return [refuse](NiceMock<FakeContactsDatabaseService>& store) -> std::optional<YContactNetworkResponse> {
            refuse(store);
            auto response = page(1, false);
            response.newContacts = contacts({"x"});
            response.updatedContacts = contacts({"y"});
            response.deletedContacts = Ids{"z"};
            ON_CALL(store, getContactByContactId(_, "y")).WillByDefault(Return(contacts({"y"}).front()));
            return response;
        };
    };
    const Row rows[] = {
        {"server error", [](auto&) { return YContactNetworkResponse::getResponse(YContactError::authorizationError); },
         "downloadFailed u1 o1 authorizationError"},
        {"no reply", [](auto&) { return std::nullopt; }, "downloadFailed u1 o1 unknownError"},
        {"save refused", withContacts([](auto& store) { ON_CALL(store, save).WillByDefault(Return(false)); }),
         "downloadFailed u1 o1 storageError"},
        {"update refused",
         withContacts([](auto& store) { ON_CALL(store, updateContacts).WillByDefault(Return(false)); }),
         "downloadFailed u1 o1 storageError"},
        {"deletion refused",
         withContacts([](auto& store) { ON_CALL(store, deleteContacts).WillByDefault(Return(false)); }),
         "downloadFailed u1 o1 storageError"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        database = std::make_shared<NiceMock<FakeContactsDatabaseService>>();
        preference->removeAllPreferences("u1");
        manager = std::make_shared<YContactsDataManager>(database, network, preference, fileService);
        manager->start("u1", "o1");
        network->nextPage()->reply(page(1000, true));
        const auto second = network->nextPage();
        ASSERT_EQ(asked(second), "u1 nil personal page 2 of 1000 since nil");
        observer->events.clear();
        second->reply(row.failure(*database));

        EXPECT_FALSE(manager->isSyncInProgress("u1"));
        EXPECT_EQ(events(), Ids{row.reported});
        EXPECT_FALSE(preference->completeState("u1", false));
        manager->start("u1", "o1");
        EXPECT_EQ(asked(network->nextPage()), "u1 nil personal page 2 of 1000 since nil");
    }
}

TEST_F(DataManagerTest, AReplyArrivingAfterTheDataManagerIsGoneIsDropped) {
    EXPECT_CALL(*database, save(_, _)).Times(0);
    manager->runInitialFetch("u1", std::nullopt);
    const auto request = network->nextPage();
    ASSERT_TRUE(request);
    observer->events.clear();
    manager.reset();

    auto late = page(1, false);
    late.newContacts = contacts({"a"});
    request->reply(late);
    EXPECT_TRUE(events().empty());
    EXPECT_FALSE(preference->completeState("u1", false));
    EXPECT_EQ(network->pendingPages(), 0u);
}

TEST_F(DataManagerTest, TheScheduledSyncVisitsEveryStartedUserWithItsYoid) {
    seed("u1", true, true, 10.0);
    seed("u2", true, true, 20.0);
    manager->start("u1", "o1");
    manager->start("u2", std::nullopt);
    manager->start("u3", std::nullopt);
    manager->removeAllData("u3");
    // Finish the syncs that start began (u3's stale page is dropped), so the scheduled sync finds all idle.
    while (network->pendingPages() > 0) network->nextPage()->reply(page(0, false));
    observer->events.clear();

    manager->startScheduledSync();
    const auto first = network->nextPage();
    const auto second = network->nextPage();
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->yuid, "u1");
    EXPECT_EQ(second->yuid, "u2");
    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_THAT(events(), ElementsAre("downloadStarted u1 o1 sync", "downloadStarted u2 nil sync"));
    first->reply(page(0, false));
    const auto organisation = network->nextPage();
    ASSERT_TRUE(organisation);
    EXPECT_EQ(organisation->yoid, "o1");
}

// With short periods both timers fire on the queue: the sync timer syncs a started user unasked, and the
// destroy timer drops the server-search caches once searches stop.
TEST_F(DataManagerTest, TheSyncTimerSyncsStartedUsersAndTheDestroyTimerDropsTheSearchCaches) {
    seed("u1", true, true, 10.0);
    auto timed = std::make_shared<YContactsDataManager>(database, network, preference, fileService,
                                                        YContactsDataManager::Intervals{0.05, 0.05});
    timed->getContacts({.yuid = "u1", .searchStr = "a", .requestType = RequestType::server}, nullptr);
    ASSERT_TRUE(network->waitForSearches(1));
    network->answerSearch(0, contacts({"1"}));
    ASSERT_EQ(timed->queries()->inMemoryState().currentNetworkCache.count("u1"), 1u);
    EXPECT_TRUE(eventually([&] { return timed->queries()->inMemoryState().currentNetworkCache.empty(); }))
        << "the search cache outlived the destroy timer";

    timed->start("u1", "o1");
    const auto started = network->nextPage();
    ASSERT_TRUE(started);
    started->reply(page(0, false));
    const auto organisation = network->nextPage();
    ASSERT_TRUE(organisation);
    organisation->reply(page(0, false));
    const auto unasked = network->nextPage();
    ASSERT_TRUE(unasked) << "the sync timer did not sync the started user";
    EXPECT_EQ(unasked->yuid, "u1");
    EXPECT_TRUE(unasked->updatedTime) << "a scheduled sync of a complete user asks for changes only";
}

TEST_F(DataManagerTest, RemovingAUsersDataClearsEachCollaboratorAndEndsItsDownload) {
    seed("u1", true, false, 99.0);
    preference->setStartIndex("u1", 5, false);
    manager->start("u1", "o1");
    const auto stale = network->nextPage();
    ASSERT_EQ(asked(stale), "u1 nil personal page 5 of 1000 since nil");
    ASSERT_TRUE(manager->isSyncInProgress("u1"));
    {
        InSequence order;
        EXPECT_CALL(*database, deleteAllDetails("u1"));
        EXPECT_CALL(*network, cancelTasks("u1"));
        EXPECT_CALL(*fileService, deleteAllImages("u1"));
    }
    manager->removeAllData("u1");
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_FALSE(manager->userState("u1").started);
    // The progress goes; the yoid stays recorded.
    EXPECT_EQ(preference->startIndex("u1", false), 1);
    EXPECT_FALSE(preference->completeState("u1", true));
    EXPECT_EQ(preference->lastUpdatedTime("u1"), std::nullopt);
    EXPECT_EQ(manager->userState("u1").yoid, "o1");

    // The cancelled page is not stored when it comes back after all.
    EXPECT_CALL(*database, save(_, _)).Times(0);
    auto late = page(1000, true);
    late.newContacts = contacts({"a"});
    stale->reply(late);
    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_EQ(preference->startIndex("u1", false), 1);
}

// A host may remove the user's data from inside a notification about the page being stored: nothing of that
// download is written afterwards, neither the next page index nor the completion.
TEST_F(DataManagerTest, ARemovalDuringAPageStopsEveryLaterWriteOfItsDownload) {
    struct Remover : YContactsNotification {
        std::weak_ptr<YContactsDataManager> manager;
        void contactsAdded(const std::string& yuid, bool, const std::vector<YContact>&) override {
            if (const auto owner = manager.lock()) owner->removeAllData(yuid);
        }
    };
    const auto remover = std::make_shared<Remover>();
    remover->manager = manager;
    YNotificationCenter::shared().addObserver<YContactsNotification>(remover);
    for (const bool hasMore : {true, false}) {
        SCOPED_TRACE(hasMore);
        manager->runInitialFetch("u1", std::nullopt);
        auto response = page(hasMore ? 1000 : 1, hasMore);
        response.newContacts = contacts({"a"});
        network->nextPage()->reply(response);
        EXPECT_EQ(preference->startIndex("u1", false), 1);
        EXPECT_FALSE(preference->completeState("u1", false) || preference->completeState("u1", true));
        EXPECT_EQ(network->pendingPages(), 0u);
    }
    EXPECT_THAT(events(), ::testing::Not(Contains("downloadComplete u1 nil initial")));
    YNotificationCenter::shared().removeObserver<YContactsNotification>(remover.get());
}

TEST_F(DataManagerTest, AResetRunsOnceUntilItsFreshDownloadEnds) {
    manager->start("u1", std::nullopt);
    const auto stale = network->nextPage();
    EXPECT_CALL(*database, deleteAllDetails("u1")).Times(3);
    manager->resetAndStart("u1", std::nullopt);
    EXPECT_TRUE(manager->userState("u1").resetting);
    manager->resetAndStart("u1", std::nullopt);  // still marked: nothing happens
    EXPECT_THAT(events(), ElementsAre("downloadStarted u1 nil initial", "contactDataReset u1", "countUpdate u1 2 3",
                                      "downloadStarted u1 nil initial"));
    auto fresh = network->nextPage();
    ASSERT_TRUE(fresh);
    EXPECT_EQ(network->pendingPages(), 0u);

    // The cancelled request fails late; the fresh download is not touched by it.
    observer->events.clear();
    stale->reply(YContactNetworkResponse::getResponse(YContactError::networkFailure));
    EXPECT_TRUE(manager->isSyncInProgress("u1"));
    EXPECT_TRUE(manager->userState("u1").resetting);
    EXPECT_TRUE(events().empty());

    // The fresh download finishes: the marker goes and a later reset runs in full; a failed one clears it too.
    fresh->reply(page(10, false));
    EXPECT_FALSE(manager->userState("u1").resetting);
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    manager->resetAndStart("u1", std::nullopt);
    fresh = network->nextPage();
    ASSERT_EQ(asked(fresh), "u1 nil personal page 1 of 1000 since nil");
    fresh->reply(YContactNetworkResponse::getResponse(YContactError::networkFailure));
    EXPECT_FALSE(manager->userState("u1").resetting);
    manager->resetAndStart("u1", std::nullopt);
    EXPECT_TRUE(network->nextPage());
}

TEST_F(DataManagerTest, AResetWithAYoidKeepsItsMarkerUntilTheOrganisationDownloadEnds) {
    manager->resetAndStart("u1", "o1");
    network->nextPage()->reply(page(0, false));
    EXPECT_TRUE(manager->userState("u1").resetting);
    auto organisation = network->nextPage();
    ASSERT_EQ(asked(organisation), "u1 o1 org page 1 of 1000 since nil");
    organisation->reply(page(0, false));
    EXPECT_FALSE(manager->userState("u1").resetting);
}

TEST_F(DataManagerTest, WithCollaboratorsAbsentEveryOperationCompletes) {
    // A store but no server: a download fails at once.
    manager = std::make_shared<YContactsDataManager>(database, nullptr, preference, nullptr);
    manager->runInitialFetch("u9", std::nullopt);
    EXPECT_FALSE(manager->isSyncInProgress("u9"));
    EXPECT_THAT(events(), ElementsAre("downloadStarted u9 nil initial", "downloadFailed u9 nil networkFailure"));
    manager->removeAllData("u9");

    manager = std::make_shared<YContactsDataManager>(nullptr, nullptr, nullptr, nullptr);
    observer->events.clear();
    manager->start("u1", "o1");
    manager->syncContacts("u2", std::nullopt);
    manager->resetAndStart("u3", std::nullopt);
    manager->startScheduledSync();
    manager->removeAllData("u1");

    EXPECT_FALSE(manager->wasInitialDownloadCompleted("u1", "o1") || manager->lastUpdatedTime("u1") ||
                 manager->isSyncInProgress("u1") || manager->getContactCount("u1"));
    EXPECT_THAT(events(), Contains("downloadStarted u1 o1 initial"));
    EXPECT_THAT(events(), Contains("contactDataReset u3"));
}

TEST_F(DataManagerTest, UsageCountsAreStoredPostedAndAnswered) {
    YContactsNetworkContract::UsageCountCallback reply;
    EXPECT_CALL(*network, getContactUsageCount("u1", _)).Times(4).WillRepeatedly([&](auto, auto callback) {
        reply = std::move(callback);
    });
    const std::map<std::string, std::string> counts{{"c1", "4"}, {"c2", "9"}};
    EXPECT_CALL(*database, updateContactsUsageCount("u1", counts)).WillOnce(Return(true)).WillOnce(Return(false));
    Received<std::optional<std::map<std::string, std::string>>> answers;
    YContactUsageCountNetworkResponse success;
    success.usageCountDetails = counts;

    const std::optional<YContactUsageCountNetworkResponse> replies[] = {
        success, success, YContactUsageCountNetworkResponse::getResponse(YContactError::authorizationError)};
    for (const auto& each : replies) {
        manager->getUsageCount("u1", [&](auto map) { answers.add(map); });
        reply(each);
    }
    // A reply after the data manager is gone still answers, with nothing, and stores nothing.
    manager->getUsageCount("u1", [&](auto map) { answers.add(map); });
    manager.reset();
    reply(success);

    EXPECT_EQ(answers.values(), (std::vector<std::optional<std::map<std::string, std::string>>>{
                                    counts, std::nullopt, std::nullopt, std::nullopt}));
    EXPECT_THAT(events(), ElementsAre("usageCountUpdated u1 c1=4 c2=9"));
}

// The timers, seen through what they do: the scheduled sync announces downloads from the data manager's own
// thread, and the in-memory timer empties the search state some time after a search.
// Notes the threads, other than the test's, that announce a download; the first one's end fulfils `ended`.
class QueueThreadObserver : public YContactsNotification {
public:
    void downloadStarted(const std::string&, const std::optional<std::string>&, bool) override {
        if (std::this_thread::get_id() == test_) return;
        std::call_once(once_, [this] { fulfilWhenThreadEnds(ended); });
        threads.add(std::this_thread::get_id());
    }
    Received<std::thread::id> threads;
    const std::shared_ptr<std::promise<void>> ended = std::make_shared<std::promise<void>>();

private:
    const std::thread::id test_ = std::this_thread::get_id();
    std::once_flag once_;
};

}  // namespace
}  // namespace ycontacts::dmtest

#include "DataManager/DataManagerTestSupport.h"

namespace ycontacts::dmtest {
namespace {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Return;

TEST_F(DataManagerTest, StartRunsTheInitialFetchUntilBothPopulationsAreComplete) {
    // Organisation complete, personal not: the initial fetch runs again, from the stored page.
    preference->seed("u1", true, false, 5000.0);
    preference->setStartIndex("u1", 3, false);
    manager->start("u1", "o1");
    EXPECT_EQ(asked(network->nextPage()), "u1 nil personal page 3 of 1000 since nil");

    // Personal complete, organisation not: the initial fetch goes straight to the organisation part.
    preference->seed("u2", false, true);
    manager->start("u2", "o2");
    EXPECT_EQ(asked(network->nextPage()), "u2 o2 org page 1 of 1000 since nil");

    // Both complete: an incremental sync from page 1, changes since the stored time.
    preference->seed("u3", true, true, 7000.0);
    manager->start("u3", "o3");
    EXPECT_EQ(asked(network->nextPage()), "u3 nil personal page 1 of 1000 since 7000");

    EXPECT_THAT(observer->events(), ElementsAre("downloadStarted u1 o1 initial", "downloadStarted u2 o2 initial",
                                                "downloadStarted u3 o3 sync"));
    for (const char* yuid : {"u1", "u2", "u3"}) EXPECT_TRUE(manager->isSyncInProgress(yuid)) << yuid;
}

TEST_F(DataManagerTest, SyncAndInitialFetchHandOverToEachOther) {
    // An incomplete user asked to sync gets the initial fetch.
    manager->syncContacts("u1", std::nullopt);
    EXPECT_EQ(asked(network->nextPage()), "u1 nil personal page 1 of 1000 since nil");

    // A complete user asked for the initial fetch is marked as syncing, then handed to the sync, which finds
    // the user busy and downloads nothing.
    preference->seed("u2", true, true, 7000.0);
    manager->runInitialFetch("u2", "o2");
    EXPECT_EQ(network->pendingPages(), 0u);
    EXPECT_TRUE(manager->isSyncInProgress("u2"));
    EXPECT_THAT(observer->events(), ElementsAre("downloadStarted u1 nil initial", "downloadStarted u2 o2 initial"));
}

TEST_F(DataManagerTest, StartRecordsTheYoidAndForgetsItWhenStartedWithout) {
    manager->start("u1", "o1");
    EXPECT_EQ(manager->userState("u1").yoid, "o1");
    manager->start("u1", std::nullopt);
    EXPECT_EQ(manager->userState("u1").yoid, std::nullopt);
    EXPECT_TRUE(manager->userState("u1").started);
}

TEST_F(DataManagerTest, RemoveAllDataRunsItsStepsInOrderWhetherOrNotTheUserIsSyncing) {
    // The organisation map is left alone.
    manager->start("u3", "o3");
    manager->removeAllData("u3");
    EXPECT_EQ(manager->userState("u3").yoid, "o3");

    manager->start("u1", std::nullopt);
    ASSERT_TRUE(manager->isSyncInProgress("u1"));
    {
        InSequence order;
        for (const char* yuid : {"u1", "u2"}) {
            EXPECT_CALL(*database, deleteAllDetails(yuid));
            EXPECT_CALL(*network, cancelTasks(yuid));
            EXPECT_CALL(*fileService, deleteAllImages(yuid));
            EXPECT_CALL(*preference, removeAllPreferences(yuid));
        }
    }
    manager->removeAllData("u1");
    manager->removeAllData("u2");
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_FALSE(manager->userState("u1").started);
}

TEST_F(DataManagerTest, RemoveAllDataSkipsAbsentCollaborators) {
    manager = std::make_shared<YContactsDataManager>(nullptr, nullptr, preference, nullptr);
    EXPECT_CALL(*preference, removeAllPreferences("u1"));
    manager->removeAllData("u1");

    manager = std::make_shared<YContactsDataManager>(database, nullptr, nullptr, fileService);
    EXPECT_CALL(*database, deleteAllDetails("u1"));
    EXPECT_CALL(*fileService, deleteAllImages("u1"));
    manager->removeAllData("u1");
}

TEST_F(DataManagerTest, ResetRunsOnceWhileMarkedAndAgainOnceTheFreshDownloadEnds) {
    EXPECT_CALL(*database, deleteAllDetails("u1")).Times(3);
    manager->resetAndStart("u1", std::nullopt);
    EXPECT_TRUE(manager->userState("u1").resetting);
    EXPECT_THAT(observer->events(), ElementsAre("contactDataReset u1", "countUpdate u1 2 3",
                                                "downloadStarted u1 nil initial"));

    manager->resetAndStart("u1", std::nullopt);
    EXPECT_EQ(observer->events().size(), 3u);
    auto request = network->nextPage();
    ASSERT_TRUE(request);
    EXPECT_EQ(network->pendingPages(), 0u);

    // The fresh download finishes: the marker goes and a later reset runs in full.
    request->reply(page(10, false));
    EXPECT_FALSE(manager->userState("u1").resetting);
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    manager->resetAndStart("u1", std::nullopt);
    request = network->nextPage();
    ASSERT_EQ(asked(request), "u1 nil personal page 1 of 1000 since nil");

    // A failed fresh download clears the marker too.
    request->reply(YContactNetworkResponse::getResponse(YContactError::networkFailure));
    EXPECT_FALSE(manager->userState("u1").resetting);
    manager->resetAndStart("u1", std::nullopt);
    EXPECT_TRUE(network->nextPage());
}

TEST_F(DataManagerTest, ResetWithAYoidKeepsItsMarkerUntilTheOrganisationDownloadEnds) {
    manager->resetAndStart("u1", "o1");
    auto personal = network->nextPage();
    ASSERT_TRUE(personal);
    personal->reply(page(0, false));
    EXPECT_TRUE(manager->userState("u1").resetting);
    auto organisation = network->nextPage();
    ASSERT_EQ(asked(organisation), "u1 o1 org page 1 of 1000 since nil");
    organisation->reply(page(0, false));
    EXPECT_FALSE(manager->userState("u1").resetting);
}

TEST_F(DataManagerTest, AReplyToADownloadCancelledByAResetIsDropped) {
    manager->start("u1", std::nullopt);
    auto stale = network->nextPage();
    ASSERT_TRUE(stale);
    manager->resetAndStart("u1", std::nullopt);
    auto fresh = network->nextPage();
    ASSERT_TRUE(fresh);
    observer->clear();

    // The cancelled request fails late; the fresh download must not be touched by it.
    stale->reply(YContactNetworkResponse::getResponse(YContactError::networkFailure));
    EXPECT_TRUE(manager->isSyncInProgress("u1"));
    EXPECT_TRUE(manager->userState("u1").resetting);
    EXPECT_TRUE(observer->events().empty());

    fresh->reply(page(0, false));
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
}

TEST_F(DataManagerTest, WithEveryCollaboratorAbsentEveryOperationCompletes) {
    manager = std::make_shared<YContactsDataManager>(nullptr, nullptr, nullptr, nullptr);
    manager->start("u1", "o1");
    manager->syncContacts("u2", std::nullopt);
    manager->resetAndStart("u3", std::nullopt);
    manager->startScheduledSync();
    manager->removeAllData("u1");

    EXPECT_FALSE(manager->wasInitialDownloadCompleted("u1", "o1"));
    EXPECT_EQ(manager->lastUpdatedTime("u1"), std::nullopt);
    EXPECT_FALSE(manager->isSyncInProgress("u1"));
    EXPECT_EQ(manager->getContactCount("u1"), std::nullopt);

    int usageAnswers = 0;
    manager->getUsageCount("u1", [&](std::optional<std::map<std::string, std::string>> map) {
        ++usageAnswers;
        EXPECT_EQ(map, std::nullopt);
    });
    EXPECT_EQ(usageAnswers, 1);

    const auto events = observer->events();
    EXPECT_THAT(events, ::testing::Contains("downloadStarted u1 o1 initial"));
    EXPECT_THAT(events, ::testing::Contains("contactDataReset u3"));
}

TEST_F(DataManagerTest, UsageCountsAreStoredPostedAndAnswered) {
    YContactsNetworkContract::UsageCountCallback reply;
    EXPECT_CALL(*network, getContactUsageCount("u1", _)).Times(3).WillRepeatedly([&](auto, auto callback) {
        reply = std::move(callback);
    });
    const std::map<std::string, std::string> counts{{"c1", "4"}, {"c2", "9"}};
    EXPECT_CALL(*database, updateContactsUsageCount("u1", counts));

    std::vector<std::optional<std::map<std::string, std::string>>> answers;
    const auto collect = [&](std::optional<std::map<std::string, std::string>> map) { answers.push_back(map); };

    manager->getUsageCount("u1", collect);
    YContactUsageCountNetworkResponse success;
    success.usageCountDetails = counts;
    reply(success);

    manager->getUsageCount("u1", collect);
    reply(YContactUsageCountNetworkResponse::getResponse(YContactError::authorizationError));

    // A reply after the data manager is gone still answers, with nothing, and stores nothing.
    manager->getUsageCount("u1", collect);
    manager.reset();
    reply(success);

    ASSERT_EQ(answers.size(), 3u);
    EXPECT_EQ(answers[0], counts);
    EXPECT_EQ(answers[1], std::nullopt);
    EXPECT_EQ(answers[2], std::nullopt);
    EXPECT_THAT(observer->events(), ElementsAre("usageCountUpdated u1 c1=4 c2=9"));
}

TEST_F(DataManagerTest, DestroyInMemoryEmptiesTheSearchMapsButKeepsTheCurrentCache) {
    ON_CALL(*database, getSuggestionContacts(_))
        .WillByDefault(Return(std::vector<YSuggestionContact>{YSuggestionContact("c1", "ann@x.test", "Ann", false)}));
    ON_CALL(*network, searchContacts("u1", _, _, _, std::optional<std::string>("a"), _))
        .WillByDefault([](auto&&, auto&&, auto, auto, auto&&, YContactsNetworkContract::SearchCallback callback) {
            callback(contacts({"c2"}));
        });
    manager->getSuggestionContacts({.yuid = "u1", .searchStr = "an", .limit = 10, .requestType = RequestType::local},
                                   [](auto&&, auto&&) {});
    manager->getContacts({.yuid = "u1", .searchStr = "a", .requestType = RequestType::server}, [](auto&&) {});
    ASSERT_EQ(manager->queries()->inMemoryState().currentNetworkKeyword.count("u1"), 1u);

    // Which maps are emptied is pinned by the query tests; here, that the data manager reaches its queries.
    manager->destroyInMemory();
    const auto state = manager->queries()->inMemoryState();
    EXPECT_TRUE(state.currentNetworkKeyword.empty());
    ASSERT_TRUE(state.currentCache);
    EXPECT_EQ(state.currentSearchKeyword, "an");
}

}  // namespace
}  // namespace ycontacts::dmtest

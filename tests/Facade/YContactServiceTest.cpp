// How the facade builds its components from the config, once each, what it does without a data manager, and
// how its sync handler passes commands on.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "Support/FakeAuthentication.h"
#include "Support/FakeContactsDatabaseService.h"
#include "Support/FakeContactsFileService.h"
#include "Support/FakeContactsNetworkService.h"
#include "Support/FakeDataManagers.h"
#include "Support/LogCapture.h"
#include "Support/UsecaseSupport.h"
#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"
#include "ycontacts/Contacts/YContactService.h"

namespace ycontacts {
namespace {

using namespace testsupport;
using ::testing::Eq;
using ::testing::NiceMock;
using ::testing::Optional;
using ::testing::Return;
using ::testing::StrictMock;
using Calls = std::vector<std::string>;

// Builders that note each call with what it was given, and a data manager builder that notes whether it got
// exactly what the others made (database, network, preference, file).
struct Wiring {
    std::mutex mutex;
    Calls calls;
    std::shared_ptr<void> made[4];
    std::shared_ptr<YContactsAuthenticationContract> authenticator;
    std::shared_ptr<NiceMock<FakeContactsDataManager>> manager = std::make_shared<NiceMock<FakeContactsDataManager>>();

    template <class Made>
    std::shared_ptr<Made> note(std::string call, int slot, std::shared_ptr<Made> value) {
        std::lock_guard lock(mutex);
        calls.push_back(std::move(call));
        made[slot] = value;
        return value;
    }

    YContactService::Builders builders() {
        YContactService::Builders builders;
        builders.database = [this](const std::filesystem::path& url) -> std::shared_ptr<YContactsDatabaseContract> {
            return note("database " + url.filename().string(), 0, std::make_shared<FakeContactsDatabaseService>());
        };
        builders.network = [this](const auto& given) -> std::shared_ptr<YContactsNetworkContract> {
            return note(given == authenticator ? "network" : "network, other authenticator", 1,
                        std::make_shared<FakeContactsNetworkService>());
        };
        builders.preference = [this](const auto& url) -> std::shared_ptr<YContactsPreferenceContract> {
            return note("preference " + (url ? url->filename().string() : "none"), 2,
                        std::make_shared<YContactsPreferenceService>());
        };
        builders.file = [this](const std::filesystem::path& url) -> std::shared_ptr<YContactsFileServiceContract> {
            return note("file " + url.filename().string(), 3, std::make_shared<FakeContactsFileService>());
        };
        builders.dataManager = [this](auto database, auto network, auto preference, auto file) {
            const std::shared_ptr<void> given[] = {database, network, preference, file};
            std::lock_guard lock(mutex);
            calls.push_back(std::equal(given, given + 4, made) ? "data manager" : "data manager, other services");
            return std::shared_ptr<YContactsDataManagerContract>(manager);
        };
        return builders;
    }
};

TEST(YContactServiceTest, EachComponentIsBuiltOnceFromTheConfigItFindsAtFirstUse) {
    const auto authenticator = std::make_shared<FakeAuthentication>();
    const YContactService::Config full(authenticator, "/data/store.sqlite", "/data/photos");
    const YContactService::Config bare(authenticator, std::nullopt, std::nullopt);
    struct Row {
        const char* name;
        std::optional<YContactService::Config> before;  // the config at first use
        Calls calls;
    };
    const Row rows[] = {
        {"full", full, {"database store.sqlite", "network", "preference store.sqlite", "file photos", "data manager"}},
        {"no locations", bare, {"network", "preference none", "data manager"}},
        // A config set after first use changes nothing.
        {"no config", std::nullopt, {"preference none", "data manager"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Wiring wiring;
        wiring.authenticator = authenticator;
        YContactService service(wiring.builders());
        service.config = row.before;
        ASSERT_NE(service.syncHandler(), nullptr);
        service.config = full;
        EXPECT_CALL(*wiring.manager, removeAllData("u1"));
        service.removeAllData("u1");
        ASSERT_TRUE(drainUsecaseQueue());
        std::lock_guard lock(wiring.mutex);
        EXPECT_EQ(wiring.calls, row.calls);
    }
}

TEST(YContactServiceTest, WithoutADataManagerOperationsAreLoggedNoOps) {
    LogCapture warnings(Logger::Level::warning);
    YContactService service{YContactService::Builders{}};
    service.config = YContactService::Config(std::make_shared<FakeAuthentication>(), std::nullopt, std::nullopt);
    std::atomic<int> callbacks{0};

    service.getContacts("u1", std::nullopt, std::nullopt, std::nullopt, std::nullopt, RequestType::preferLocal,
                        [&](auto) { ++callbacks; });
    service.getContact("u1", "e@x", std::nullopt, std::nullopt, [&](auto) { ++callbacks; });
    service.removeAllData("u1");
    const auto handler = service.syncHandler();
    ASSERT_NE(handler, nullptr);
    handler->start("u1", std::nullopt);

    EXPECT_TRUE(warnings.waitForLinesContaining("YGetContacts has no data manager", 1));
    EXPECT_TRUE(warnings.waitForLinesContaining("YGetContact has no data manager", 1));
    EXPECT_TRUE(warnings.waitForLinesContaining("cannot remove the data of u1", 1));
    EXPECT_TRUE(warnings.waitForLinesContaining("dropped the sync command start", 1));
    EXPECT_FALSE(handler->getContactCount("u1") || handler->lastUpdatedTime("u1") || handler->isSyncInProgress("u1"));
    ASSERT_TRUE(drainUsecaseQueue());
    EXPECT_EQ(callbacks.load(), 0);
}

class YContactSyncHandlerTest : public ::testing::Test {
protected:
    std::shared_ptr<StrictMock<FakeContactsDataManager>> dataManager =
        std::make_shared<StrictMock<FakeContactsDataManager>>();
    std::shared_ptr<YContactService::YContactSyncHandler> handler =
        std::make_shared<YContactService::YContactSyncHandler>(dataManager);
};

// Commands run the data-manager operation of the same name, once per call, off the caller's thread; the
// queries answer at once with the data manager's answer.
TEST_F(YContactSyncHandlerTest, CommandsRunOffTheCallersThreadAndQueriesAnswerAtOnce) {
    Received<std::thread::id> ran;
    const auto record = [&] { ran.add(std::this_thread::get_id()); };
    EXPECT_CALL(*dataManager, start("u1", Optional(std::string("o1")))).Times(2).WillRepeatedly(record);
    EXPECT_CALL(*dataManager, runInitialFetch("u1", Eq(std::nullopt))).WillOnce(record);
    EXPECT_CALL(*dataManager, syncContacts("u2", Optional(std::string("o2")))).WillOnce(record);
    EXPECT_CALL(*dataManager, resetAndStart("u3", Eq(std::nullopt))).WillOnce(record);
    EXPECT_CALL(*dataManager, getContactCount("u1"))
        .WillOnce(Return(std::optional<YContactSyncHandlerContract::ContactCount>({12, 34})));
    EXPECT_CALL(*dataManager, lastUpdatedTime("u1")).WillOnce(Return(std::optional<double>(1700000000000.0)));
    EXPECT_CALL(*dataManager, isSyncInProgress("u1")).WillOnce(Return(true));

    handler->start("u1", "o1");
    handler->start("u1", "o1");
    handler->runInitialFetch("u1", std::nullopt);
    handler->syncContacts("u2", "o2");
    handler->resetAndStart("u3", std::nullopt);
    EXPECT_EQ(handler->getContactCount("u1"), (std::optional<YContactSyncHandlerContract::ContactCount>({12, 34})));
    EXPECT_EQ(handler->lastUpdatedTime("u1"), 1700000000000.0);
    EXPECT_TRUE(handler->isSyncInProgress("u1"));

    ASSERT_TRUE(ran.waitFor(5));
    ASSERT_TRUE(drainUsecaseQueue());
    for (const auto& thread : ran.values()) EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(YContactSyncHandlerTest, CommandsQueuedBeforeTheHandlerIsReleasedAreDropped) {
    QueueHold hold;
    ASSERT_TRUE(hold.allWorkersHeld());
    handler->start("u1", std::nullopt);
    handler->syncContacts("u1", std::nullopt);
    handler.reset();  // the strict mock fails the test if either command reaches the data manager

    hold.open();
    EXPECT_TRUE(drainUsecaseQueue());
}

}  // namespace
}  // namespace ycontacts

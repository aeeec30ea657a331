#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Support/FakeDataManagers.h"
#include "Support/UsecaseSupport.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/YContactService.h"

namespace ycontacts {
namespace {

using namespace testsupport;
using ::testing::Eq;
using ::testing::Optional;
using ::testing::Return;
using ::testing::StrictMock;
using Handler = YContactService::YContactSyncHandler;

class YContactSyncHandlerTest : public ::testing::Test {
protected:
    // Records which data-manager command ran, on which thread.
    void recordRun(const std::string& command) {
        std::lock_guard lock(mutex);
        threads.push_back(std::this_thread::get_id());
        ran.add(command);
    }

    std::shared_ptr<StrictMock<FakeContactsDataManager>> dataManager =
        std::make_shared<StrictMock<FakeContactsDataManager>>();
    std::shared_ptr<Handler> handler = std::make_shared<Handler>(dataManager);
    std::mutex mutex;
    std::vector<std::thread::id> threads;
    Received<std::string> ran;
};

TEST_F(YContactSyncHandlerTest, CommandsRunTheSameNamedOperationOffTheCallersThreadOncePerCall) {
    EXPECT_CALL(*dataManager, start("u1", Optional(std::string("o1")))).Times(2).WillRepeatedly([this] {
        recordRun("start");
    });
    EXPECT_CALL(*dataManager, runInitialFetch("u1", Eq(std::nullopt))).WillOnce([this] { recordRun("initial"); });
    EXPECT_CALL(*dataManager, syncContacts("u2", Optional(std::string("o2")))).WillOnce([this] { recordRun("sync"); });
    EXPECT_CALL(*dataManager, resetAndStart("u3", Eq(std::nullopt))).WillOnce([this] { recordRun("reset"); });

    handler->start("u1", "o1");
    handler->start("u1", "o1");
    handler->runInitialFetch("u1", std::nullopt);
    handler->syncContacts("u2", "o2");
    handler->resetAndStart("u3", std::nullopt);

    ASSERT_TRUE(ran.waitFor(5));
    std::lock_guard lock(mutex);
    for (const auto& thread : threads) EXPECT_NE(thread, std::this_thread::get_id());
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

TEST_F(YContactSyncHandlerTest, QueriesAnswerSynchronouslyWithTheDataManagersAnswer) {
    EXPECT_CALL(*dataManager, getContactCount("u1"))
        .WillOnce(Return(std::optional<YContactSyncHandlerContract::ContactCount>({12, 34})));
    EXPECT_CALL(*dataManager, lastUpdatedTime("u1")).WillOnce(Return(std::optional<double>(1700000000000.0)));
    EXPECT_CALL(*dataManager, isSyncInProgress("u1")).WillOnce(Return(true));
    EXPECT_CALL(*dataManager, getContactCount("u2")).WillOnce(Return(std::nullopt));

    EXPECT_EQ(handler->getContactCount("u1"), (std::optional<YContactSyncHandlerContract::ContactCount>({12, 34})));
    EXPECT_EQ(handler->lastUpdatedTime("u1"), 1700000000000.0);
    EXPECT_TRUE(handler->isSyncInProgress("u1"));
    EXPECT_FALSE(handler->getContactCount("u2").has_value());
}

}  // namespace
}  // namespace ycontacts

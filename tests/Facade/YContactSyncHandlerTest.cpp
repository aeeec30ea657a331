#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

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

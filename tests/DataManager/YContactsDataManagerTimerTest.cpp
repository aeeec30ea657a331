#include <set>
#include <thread>

#include "DataManager/DataManagerTestSupport.h"

namespace ycontacts::dmtest {
namespace {

using testsupport::becomesReady;

// Counts the firings of one timer action and where they ran.
class FireLog {
public:
    // Fulfilled when the thread of the first firing ends.
    explicit FireLog(std::shared_ptr<std::promise<void>> threadEnd = nullptr) : threadEnd_(std::move(threadEnd)) {}

    void record(bool onQueue) {
        std::lock_guard lock(mutex_);
        if (threadEnd_) testsupport::fulfilWhenThreadEnds(std::move(threadEnd_));
        ++count_;
        allOnQueue_ = allOnQueue_ && onQueue;
        threads_.insert(std::this_thread::get_id());
        fired_.notify_all();
    }
    bool waitFor(int count) {
        std::unique_lock lock(mutex_);
        return fired_.wait_for(lock, waitLimit, [&] { return count_ >= count; });
    }
    int count() const {
        std::lock_guard lock(mutex_);
        return count_;
    }
    bool allOnQueue() const {
        std::lock_guard lock(mutex_);
        return allOnQueue_;
    }
    std::set<std::thread::id> threads() const {
        std::lock_guard lock(mutex_);
        return threads_;
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable fired_;
    std::shared_ptr<std::promise<void>> threadEnd_;
    int count_ = 0;
    bool allOnQueue_ = true;
    std::set<std::thread::id> threads_;
};

// Records its two timer actions before doing what the data manager does.
class TimedDataManager : public YContactsDataManager {
public:
    TimedDataManager(Intervals intervals, std::shared_ptr<FireLog> syncFires, std::shared_ptr<FireLog> destroyFires,
                     std::shared_ptr<YContactsNetworkContract> network = nullptr)
        : YContactsDataManager(nullptr, std::move(network), nullptr, nullptr, intervals),
          syncFires_(std::move(syncFires)),
          destroyFires_(std::move(destroyFires)) {}

    using YContactsDataManager::restartInMemoryTimer;

    void startScheduledSync() override {
        syncFires_->record(isOnQueue());
        YContactsDataManager::startScheduledSync();
    }
    void destroyInMemory() override {
        destroyFires_->record(isOnQueue());
        YContactsDataManager::destroyInMemory();
    }

private:
    const std::shared_ptr<FireLog> syncFires_;
    const std::shared_ptr<FireLog> destroyFires_;
};

TEST(YContactsDataManagerTimerTest, TheSyncTimerRepeatsOnTheQueueThreadWhichEndsWithTheDataManager) {
    auto threadEnd = std::make_shared<std::promise<void>>();
    auto ended = threadEnd->get_future();
    const auto syncFires = std::make_shared<FireLog>(threadEnd);
    auto manager = std::make_shared<TimedDataManager>(YContactsDataManager::Intervals{0.002, 3600.0}, syncFires,
                                                      std::make_shared<FireLog>());
    manager->start("u1", std::nullopt);

    ASSERT_TRUE(syncFires->waitFor(3));
    EXPECT_TRUE(syncFires->allOnQueue());
    const auto threads = syncFires->threads();
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0u);
    EXPECT_FALSE(manager->isOnQueue());

    manager.reset();
    EXPECT_TRUE(becomesReady(ended));
}

TEST(YContactsDataManagerTimerTest, TheDestroyTimerFiresOnceOnTheQueueAfterEachRestart) {
    const auto syncFires = std::make_shared<FireLog>();
    const auto destroyFires = std::make_shared<FireLog>();
    auto manager = std::make_shared<TimedDataManager>(YContactsDataManager::Intervals{0.002, 0.010}, syncFires,
                                                      destroyFires);
    manager->start("u1", std::nullopt);

    // The second restart replaces the first timer rather than adding one.
    manager->restartInMemoryTimer();
    manager->restartInMemoryTimer();
    ASSERT_TRUE(destroyFires->waitFor(1));
    // Thirty more sync firings, 2 ms apart at the least, span several destroy periods: a destroy timer
    // left running, or a replaced one still alive, would have fired again by then.
    ASSERT_TRUE(syncFires->waitFor(syncFires->count() + 30));
    EXPECT_EQ(destroyFires->count(), 1);

    manager->restartInMemoryTimer();
    ASSERT_TRUE(destroyFires->waitFor(2));
    ASSERT_TRUE(syncFires->waitFor(syncFires->count() + 30));
    EXPECT_EQ(destroyFires->count(), 2);
    EXPECT_TRUE(destroyFires->allOnQueue());
    EXPECT_EQ(destroyFires->threads(), syncFires->threads());
}

TEST(YContactsDataManagerTimerTest, AServerSearchStartsTheDestroyTimer) {
    const auto destroyFires = std::make_shared<FireLog>();
    const auto network = std::make_shared<NiceMock<FakeContactsNetworkService>>();
    auto manager = std::make_shared<TimedDataManager>(YContactsDataManager::Intervals{3600.0, 0.005},
                                                      std::make_shared<FireLog>(), destroyFires, network);
    manager->getContacts("u1", std::nullopt, "a", std::nullopt, std::nullopt, std::nullopt, RequestType::server,
                         [](auto&&) {});
    ASSERT_TRUE(destroyFires->waitFor(1));
    EXPECT_TRUE(destroyFires->allOnQueue());
}

}  // namespace
}  // namespace ycontacts::dmtest

#include <algorithm>
#include <future>
#include <set>
#include <thread>
#include <utility>

#include "DataManager/DataManagerTestSupport.h"

namespace ycontacts::dmtest {
namespace {

// Where one firing of a timer action ran.
struct Firing {
    bool onQueue = false;
    std::thread::id thread;
};
using FireLog = Received<Firing>;

bool allOnQueue(FireLog& log) {
    const auto firings = log.values();
    return std::all_of(firings.begin(), firings.end(), [](const Firing& firing) { return firing.onQueue; });
}

std::set<std::thread::id> threadsOf(FireLog& log) {
    std::set<std::thread::id> threads;
    for (const auto& firing : log.values()) threads.insert(firing.thread);
    return threads;
}

// Records its two timer actions before doing what the data manager does.
class TimedDataManager : public YContactsDataManager {
public:
    TimedDataManager(Intervals intervals, std::shared_ptr<FireLog> syncFires, std::shared_ptr<FireLog> destroyFires,
                     std::shared_ptr<YContactsNetworkContract> network = nullptr)
        : YContactsDataManager(nullptr, std::move(network), nullptr, nullptr, intervals),
          syncFires_(std::move(syncFires)),
          destroyFires_(std::move(destroyFires)) {}

    using YContactsDataManager::restartInMemoryTimer;

    // Set before start(); fulfilled when the thread of the first sync firing ends.
    std::shared_ptr<std::promise<void>> queueThreadEnd;

    void startScheduledSync() override {
        if (auto end = std::exchange(queueThreadEnd, nullptr)) fulfilWhenThreadEnds(std::move(end));
        syncFires_->add({isOnQueue(), std::this_thread::get_id()});
        YContactsDataManager::startScheduledSync();
    }
    void destroyInMemory() override {
        destroyFires_->add({isOnQueue(), std::this_thread::get_id()});
        YContactsDataManager::destroyInMemory();
    }

private:
    const std::shared_ptr<FireLog> syncFires_;
    const std::shared_ptr<FireLog> destroyFires_;
};

TEST(YContactsDataManagerTimerTest, TheSyncTimerRepeatsOnTheQueueThreadWhichEndsWithTheDataManager) {
    const auto syncFires = std::make_shared<FireLog>();
    auto manager = std::make_shared<TimedDataManager>(YContactsDataManager::Intervals{0.002, 3600.0}, syncFires,
                                                      std::make_shared<FireLog>());
    manager->queueThreadEnd = std::make_shared<std::promise<void>>();
    auto ended = manager->queueThreadEnd->get_future();
    manager->start("u1", std::nullopt);

    ASSERT_TRUE(syncFires->waitFor(3));
    EXPECT_TRUE(allOnQueue(*syncFires));
    const auto threads = threadsOf(*syncFires);
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
    ASSERT_TRUE(syncFires->waitFor(syncFires->values().size() + 30));
    EXPECT_EQ(destroyFires->values().size(), 1u);

    manager->restartInMemoryTimer();
    ASSERT_TRUE(destroyFires->waitFor(2));
    ASSERT_TRUE(syncFires->waitFor(syncFires->values().size() + 30));
    EXPECT_EQ(destroyFires->values().size(), 2u);
    EXPECT_TRUE(allOnQueue(*destroyFires));
    EXPECT_EQ(threadsOf(*destroyFires), threadsOf(*syncFires));
}

TEST(YContactsDataManagerTimerTest, AServerSearchStartsTheDestroyTimer) {
    const auto destroyFires = std::make_shared<FireLog>();
    const auto network = std::make_shared<NiceMock<FakeContactsNetworkService>>();
    auto manager = std::make_shared<TimedDataManager>(YContactsDataManager::Intervals{3600.0, 0.005},
                                                      std::make_shared<FireLog>(), destroyFires, network);
    manager->getContacts({.yuid = "u1", .searchStr = "a", .requestType = RequestType::server}, [](auto&&) {});
    ASSERT_TRUE(destroyFires->waitFor(1));
    EXPECT_TRUE(allOnQueue(*destroyFires));
}

}  // namespace
}  // namespace ycontacts::dmtest

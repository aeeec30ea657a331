#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <memory>
#include <mutex>
#include <set>
#include <thread>

#include "Support/Waiting.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"
#include "ycontacts/Platform/MarloComponents/YWorkQueue.h"

namespace ycontacts {
namespace {

using namespace std::chrono_literals;
using testsupport::becomesReady;

TEST(YWorkQueueTest, RunsAsManyTasksAtOnceAsItHasWorkers) {
    YWorkQueue queue("test.pool", 3);
    EXPECT_EQ(queue.label(), "test.pool");
    ASSERT_EQ(queue.threadCount(), 3u);

    std::mutex mutex;
    std::condition_variable allArrived;
    int arrived = 0;
    std::set<std::thread::id> threads;
    std::atomic<int> metEveryone{0};
    std::promise<void> done;
    std::atomic<int> finished{0};

    for (int task = 0; task < 3; ++task) {
        queue.async([&] {
            {
                std::unique_lock lock(mutex);
                ++arrived;
                threads.insert(std::this_thread::get_id());
                allArrived.notify_all();
                // Only possible when all three run at the same time.
                if (allArrived.wait_for(lock, testsupport::waitLimit, [&] { return arrived == 3; })) ++metEveryone;
            }
            if (++finished == 3) done.set_value();
        });
    }
    ASSERT_TRUE(becomesReady(done.get_future()));
    EXPECT_EQ(metEveryone.load(), 3);
    std::lock_guard lock(mutex);
    EXPECT_EQ(threads.size(), 3u);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0u);
}

TEST(YWorkQueueTest, DestructionFinishesRunningTasksDiscardsPendingOnesAndJoins) {
    auto queue = std::make_unique<YWorkQueue>("test.single", 1);
    auto threadEnded = std::make_shared<std::promise<void>>();
    auto ended = threadEnded->get_future();
    std::promise<void> started;
    std::promise<void> gate;
    auto gateOpened = gate.get_future().share();
    std::atomic<bool> runningFinished{false};
    std::atomic<bool> pendingRan{false};

    queue->async([&, threadEnded] {
        testsupport::fulfilWhenThreadEnds(threadEnded);
        started.set_value();
        // Opens only when the destructor discards the pending task below.
        runningFinished = becomesReady(gateOpened);
    });
    auto opener = std::make_shared<testsupport::FulfilOnRelease>(std::move(gate));
    queue->async([&, opener] { pendingRan = true; });
    opener.reset();
    ASSERT_TRUE(becomesReady(started.get_future()));

    queue.reset();

    EXPECT_TRUE(runningFinished.load());
    EXPECT_FALSE(pendingRan.load());
    EXPECT_EQ(ended.wait_for(0s), std::future_status::ready) << "a worker outlived its queue";
}

TEST(YWorkQueueTest, QueueReleasedFromOneOfItsOwnTasksStopsWithoutDeadlock) {
    auto owner = std::make_unique<YWorkQueue>("test.self", 2);
    auto threadEnded = std::make_shared<std::promise<void>>();
    auto ended = threadEnded->get_future();
    owner->async([&, threadEnded] {
        testsupport::fulfilWhenThreadEnds(threadEnded);
        owner.reset();
    });
    EXPECT_TRUE(becomesReady(ended)) << "the releasing worker kept running";
}

}  // namespace
}  // namespace ycontacts

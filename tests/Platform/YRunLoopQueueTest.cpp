#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Support/LogCapture.h"
#include "Support/Waiting.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/YRunLoopQueue.h"

namespace ycontacts {
namespace {

using namespace std::chrono_literals;
using testsupport::becomesReady;

// Holds the queue's thread in a block until release() so that work can be lined up behind it.
class Hold {
public:
    explicit Hold(YRunLoopQueue& queue) {
        queue.async([gate = gate_.get_future().share(), entered = entered_] {
            entered->set_value();
            gate.wait_for(testsupport::waitLimit);
        });
        EXPECT_TRUE(becomesReady(entered_->get_future()));
    }
    void release() { gate_.set_value(); }

private:
    std::promise<void> gate_;
    std::shared_ptr<std::promise<void>> entered_ = std::make_shared<std::promise<void>>();
};

TEST(YRunLoopQueueTest, BlocksRunInSubmissionOrderOnTheQueueThread) {
    YRunLoopQueue queue("test.order");
    EXPECT_EQ(queue.label(), "test.order");
    EXPECT_FALSE(queue.isCurrent());

    // Touched only on the queue's thread until `done` is fulfilled.
    std::vector<int> order;
    std::vector<std::thread::id> threads;
    bool alwaysCurrent = true;
    std::promise<void> done;
    constexpr int count = 300;

    Hold hold(queue);
    for (int index = 0; index < count; ++index) {
        queue.async([&, index] {
            order.push_back(index);
            threads.push_back(std::this_thread::get_id());
            alwaysCurrent = alwaysCurrent && queue.isCurrent();
            // Submitted from the queue itself: it goes after everything already waiting.
            if (index == 0) queue.async([&] { order.push_back(-1); done.set_value(); });
        });
    }
    hold.release();
    ASSERT_TRUE(becomesReady(done.get_future()));

    ASSERT_EQ(order.size(), static_cast<std::size_t>(count + 1));
    for (int index = 0; index < count; ++index) EXPECT_EQ(order[static_cast<std::size_t>(index)], index);
    EXPECT_EQ(order.back(), -1);
    EXPECT_TRUE(alwaysCurrent);
    EXPECT_NE(threads.front(), std::this_thread::get_id());
    for (const auto& thread : threads) EXPECT_EQ(thread, threads.front());
}

TEST(YRunLoopQueueTest, OneShotTimerFiresOnceOnTheQueueThreadThenIsInvalid) {
    YRunLoopQueue queue("test.timer");
    std::promise<std::thread::id> blockThread;
    queue.async([&] { blockThread.set_value(std::this_thread::get_id()); });

    std::atomic<int> fires{0};
    std::promise<std::pair<std::thread::id, bool>> fired;
    auto timer = queue.scheduleTimer(1ms, false, [&] {
        if (fires.fetch_add(1) == 0) fired.set_value({std::this_thread::get_id(), queue.isCurrent()});
    });
    EXPECT_FALSE(timer->repeats());
    EXPECT_DOUBLE_EQ(timer->interval(), 0.001);

    auto firing = fired.get_future();
    ASSERT_TRUE(becomesReady(firing));
    const auto [thread, current] = firing.get();
    EXPECT_EQ(thread, blockThread.get_future().get());
    EXPECT_TRUE(current);
    EXPECT_FALSE(timer->isValid());

    // A later timer fires well after the first one's date; the one-shot must not have fired again.
    std::promise<void> later;
    queue.scheduleTimer(20ms, false, [&] { later.set_value(); });
    ASSERT_TRUE(becomesReady(later.get_future()));
    EXPECT_EQ(fires.load(), 1);
}

TEST(YRunLoopQueueTest, RepeatingTimerRepeatsUntilItInvalidatesItself) {
    YRunLoopQueue queue("test.repeat");
    int fires = 0;  // only touched on the queue's thread
    std::shared_ptr<YTimer> timer;
    std::promise<int> afterwards;

    Hold hold(queue);
    timer = queue.scheduleTimer(1ms, true, [&] {
        if (++fires < 3) return;
        timer->invalidate();
        // Had the invalidation not held, the 1 ms timer would fire many times before this one.
        queue.scheduleTimer(30ms, false, [&] { afterwards.set_value(fires); });
    });
    EXPECT_TRUE(timer->repeats());
    hold.release();

    auto count = afterwards.get_future();
    ASSERT_TRUE(becomesReady(count));
    EXPECT_EQ(count.get(), 3);
    EXPECT_FALSE(timer->isValid());
}

TEST(YRunLoopQueueTest, TimerInvalidatedFromAnotherThreadStopsFiring) {
    YRunLoopQueue queue("test.invalidate");
    std::atomic<int> early{0};
    std::atomic<int> repeating{0};
    std::promise<void> twice;

    // Invalidated before the queue's thread could ever look at it: never fires.
    Hold hold(queue);
    auto oneShot = queue.scheduleTimer(1ms, false, [&] { ++early; });
    oneShot->invalidate();
    oneShot->invalidate();
    EXPECT_FALSE(oneShot->isValid());

    auto timer = queue.scheduleTimer(1ms, true, [&] {
        if (++repeating == 2) twice.set_value();
    });
    hold.release();
    ASSERT_TRUE(becomesReady(twice.get_future()));
    timer->invalidate();
    const int seen = repeating.load();

    std::promise<void> later;
    queue.scheduleTimer(30ms, false, [&] { later.set_value(); });
    ASSERT_TRUE(becomesReady(later.get_future()));
    EXPECT_EQ(early.load(), 0);
    // A firing that had already begun when invalidate() was called may still finish; none starts later.
    EXPECT_LE(repeating.load(), seen + 1);
}

TEST(YRunLoopQueueTest, TimersFireInDeadlineOrderNotSchedulingOrder) {
    YRunLoopQueue queue("test.deadlines");
    std::vector<std::string> order;  // only touched on the queue's thread
    std::promise<void> last;

    queue.async([&] {
        queue.scheduleTimer(300ms, false, [&] {
            order.push_back("300");
            last.set_value();
        });
        queue.scheduleTimer(200ms, false, [&] { order.push_back("200"); });
        queue.scheduleTimer(1ms, false, [&] { order.push_back("1"); });
        queue.scheduleTimer(100ms, false, [&] { order.push_back("100"); });
    });
    ASSERT_TRUE(becomesReady(last.get_future()));
    EXPECT_EQ(order, (std::vector<std::string>{"1", "100", "200", "300"}));
}

TEST(YRunLoopQueueTest, WorkIsNotHeldUpByATimerWaitingForItsDate) {
    YRunLoopQueue queue("test.waiting");
    auto hourly = queue.scheduleTimer(1h, true, [] {});

    std::promise<void> ran;
    queue.async([&] { ran.set_value(); });
    EXPECT_TRUE(becomesReady(ran.get_future()));

    // A timer with an earlier date than the one the loop sleeps towards, scheduled from another thread.
    std::promise<void> fired;
    std::thread scheduler([&] { queue.scheduleTimer(1ms, false, [&] { fired.set_value(); }); });
    scheduler.join();
    EXPECT_TRUE(becomesReady(fired.get_future()));
    EXPECT_TRUE(hourly->isValid());
    EXPECT_DOUBLE_EQ(hourly->interval(), 3600.0);
}

TEST(YRunLoopQueueTest, DestructionFinishesTheRunningBlockDiscardsTheRestAndJoins) {
    auto queue = std::make_unique<YRunLoopQueue>("test.destroy");
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
        // Opens only when the destructor discards the pending block below.
        runningFinished = becomesReady(gateOpened);
    });
    auto opener = std::make_shared<testsupport::FulfilOnRelease>(std::move(gate));
    queue->async([&, opener] { pendingRan = true; });
    opener.reset();
    auto timer = queue->scheduleTimer(1h, true, [] {});
    ASSERT_TRUE(becomesReady(started.get_future()));

    queue.reset();

    EXPECT_TRUE(runningFinished.load());
    EXPECT_FALSE(pendingRan.load());
    EXPECT_EQ(ended.wait_for(0s), std::future_status::ready) << "the queue's thread outlived the queue";
    EXPECT_FALSE(timer->isValid());
}

TEST(YRunLoopQueueTest, QueueReleasedFromItsOwnTimerActionStopsWithoutDeadlock) {
    auto owner = std::make_unique<YRunLoopQueue>("test.self");
    auto threadEnded = std::make_shared<std::promise<void>>();
    auto ended = threadEnded->get_future();
    std::atomic<bool> pendingRan{false};
    std::weak_ptr<int> pendingCapture;  // written on the queue's thread before it ends

    owner->scheduleTimer(1ms, false, [&, threadEnded] {
        testsupport::fulfilWhenThreadEnds(threadEnded);
        auto capture = std::make_shared<int>(1);
        pendingCapture = capture;
        owner->async([&, capture] { pendingRan = true; });
        owner.reset();
    });

    ASSERT_TRUE(becomesReady(ended)) << "the queue's thread kept running after the queue was released";
    EXPECT_FALSE(pendingRan.load());
    EXPECT_TRUE(pendingCapture.expired());
}

TEST(YRunLoopQueueTest, ThrowingBlockIsLoggedAndTheLoopGoesOn) {
    testsupport::LogCapture errors(Logger::Level::error);
    YRunLoopQueue queue("test.throw");
    std::promise<void> after;
    queue.async([] { throw std::runtime_error("broken block"); });
    queue.scheduleTimer(1ms, false, [] { throw 7; });
    queue.scheduleTimer(5ms, false, [&] { queue.async([&] { after.set_value(); }); });

    EXPECT_TRUE(becomesReady(after.get_future()));
    const auto lines = errors.messages();
    ASSERT_EQ(lines.size(), 2u);
    for (const auto& line : lines) EXPECT_NE(line.find("test.throw"), std::string::npos) << line;
    EXPECT_TRUE(errors.contains("broken block"));
    EXPECT_TRUE(errors.contains("non-standard"));
}

}  // namespace
}  // namespace ycontacts

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "Support/LogCapture.h"
#include "Support/Waiting.h"
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

// A loop sleeping towards an hourly timer's date still wakes for work and for earlier timers scheduled from
// another thread. A repeating timer stops for good when invalidated by its own action or from another thread.
TEST(YRunLoopQueueTest, RepeatingTimersRepeatUntilInvalidated) {
    YRunLoopQueue queue("test.repeat");
    const auto hourly = queue.scheduleTimer(1h, true, [] {});
    std::promise<void> ran;
    queue.async([&] { ran.set_value(); });
    ASSERT_TRUE(becomesReady(ran.get_future()));

    std::atomic<int> selfFires{0}, otherFires{0};
    std::promise<void> selfDone, otherTwice;
    std::shared_ptr<YTimer> other, selfStopping;
    std::thread([&] {
        other = queue.scheduleTimer(1ms, true, [&] {
            if (++otherFires == 2) otherTwice.set_value();
        });
    }).join();
    ASSERT_TRUE(becomesReady(otherTwice.get_future()));
    EXPECT_TRUE(other->repeats());
    Hold hold(queue);
    selfStopping = queue.scheduleTimer(1ms, true, [&] {
        if (++selfFires < 3) return;
        selfStopping->invalidate();
        selfDone.set_value();
    });
    hold.release();
    ASSERT_TRUE(becomesReady(selfDone.get_future()));
    other->invalidate();
    const int seen = otherFires.load();

    // Had an invalidation not held, the 1 ms timers would fire many times before this one.
    std::promise<void> later;
    queue.scheduleTimer(30ms, false, [&] { later.set_value(); });
    ASSERT_TRUE(becomesReady(later.get_future()));
    EXPECT_EQ(selfFires.load(), 3);
    EXPECT_FALSE(selfStopping->isValid());
    // A firing that had already begun when invalidate() was called may still finish; none starts later.
    EXPECT_LE(otherFires.load(), seen + 1);
    EXPECT_TRUE(hourly->isValid());
    EXPECT_DOUBLE_EQ(hourly->interval(), 3600.0);
}

TEST(YRunLoopQueueTest, DestructionFinishesTheRunningBlockDiscardsTheRestAndJoins) {
    auto queue = std::make_unique<YRunLoopQueue>("test.destroy");
    auto threadEnded = std::make_shared<std::promise<void>>();
    auto ended = threadEnded->get_future();
    std::promise<void> started, gate;
    auto gateOpened = gate.get_future().share();
    std::atomic<bool> runningFinished{false}, pendingRan{false};

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

TEST(YRunLoopQueueTest, ThrowingBlockIsLoggedAndTheLoopGoesOn) {
    testsupport::LogCapture errors(Logger::Level::error);
    YRunLoopQueue queue("test.throw");
    std::promise<void> after;
    queue.async([] { throw std::runtime_error("broken block"); });
    queue.scheduleTimer(1ms, false, [] { throw 7; });
    queue.scheduleTimer(5ms, false, [&] { queue.async([&] { after.set_value(); }); });

    EXPECT_TRUE(becomesReady(after.get_future()));
    EXPECT_EQ(errors.messages().size(), 2u);
    EXPECT_TRUE(errors.contains(std::vector<std::string>{"test.throw", "broken block"}));
    EXPECT_TRUE(errors.contains(std::vector<std::string>{"test.throw", "non-standard"}));
}

}  // namespace
}  // namespace ycontacts

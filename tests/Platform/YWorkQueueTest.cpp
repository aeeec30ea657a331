#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <stdexcept>

#include "Support/LogCapture.h"
#include "Support/Waiting.h"
#include "ycontacts/Platform/MarloComponents/YWorkQueue.h"

namespace ycontacts {
namespace {

using namespace std::chrono_literals;
using testsupport::becomesReady;
using AtShutdown = YWorkQueue::AtShutdown;

// One worker runs a task while a second task waits behind it; then the queue is destroyed, by its owner or
// by the running task itself, which may also throw. The waiting task runs only when the queue drains.
TEST(YWorkQueueTest, DestructionDrainsOrDropsTheWaitingTaskAndEndsTheWorker) {
    struct Row {
        const char* name;
        AtShutdown atShutdown;
        bool destroyedByRunningTask;
        bool runningTaskThrows;
        bool waitingTaskRuns;
    };
    const Row rows[] = {
        {"drop, destroyed by its owner", AtShutdown::drop, false, false, false},
        {"drain, destroyed by its owner, running task throws", AtShutdown::drain, false, true, true},
        {"drop, destroyed by its running task, which then throws", AtShutdown::drop, true, true, false},
        {"drain, destroyed by its running task", AtShutdown::drain, true, false, true},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        testsupport::LogCapture errors(Logger::Level::error);
        auto queue = std::make_unique<YWorkQueue>("test.shutdown", 1, row.atShutdown);
        auto threadEnded = std::make_shared<std::promise<void>>();
        auto ended = threadEnded->get_future();
        std::promise<void> started;
        auto gate = std::make_shared<testsupport::FulfilOnRelease>(std::promise<void>());
        auto gateOpened = gate->promise.get_future().share();
        std::atomic<bool> runningFinished{false};
        std::atomic<bool> waitingRan{false};

        queue->async([&, threadEnded] {
            testsupport::fulfilWhenThreadEnds(threadEnded);
            started.set_value();
            runningFinished = becomesReady(gateOpened);
            if (row.destroyedByRunningTask) queue.reset();
            if (row.runningTaskThrows) throw std::runtime_error("boom");
        });
        // A dropping queue destroyed by its owner opens the gate as it discards the waiting task, so the
        // destruction surely begins while the first task runs. Every other row opens the gate below; with
        // drain and its owner, the waiting task may then start before the destruction, as it may anyway.
        const bool waitingTaskHoldsGate = !row.destroyedByRunningTask && row.atShutdown == AtShutdown::drop;
        queue->async([&waitingRan, held = waitingTaskHoldsGate ? gate : nullptr] { waitingRan = true; });
        ASSERT_TRUE(becomesReady(started.get_future()));
        gate.reset();

        if (row.destroyedByRunningTask) {
            EXPECT_TRUE(becomesReady(ended)) << "the worker that destroyed its queue kept running";
        } else {
            queue.reset();
            EXPECT_EQ(ended.wait_for(0s), std::future_status::ready) << "a worker outlived its queue";
        }
        EXPECT_TRUE(runningFinished.load());
        EXPECT_EQ(waitingRan.load(), row.waitingTaskRuns);
        EXPECT_EQ(errors.contains("Task on work queue test.shutdown threw: boom"), row.runningTaskThrows);
    }
}

}  // namespace
}  // namespace ycontacts

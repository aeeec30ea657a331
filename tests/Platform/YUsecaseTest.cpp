#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "Support/UsecaseSupport.h"
#include "Support/Waiting.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"
#include "ycontacts/Platform/MarloComponents/YRequest.h"
#include "ycontacts/Platform/MarloComponents/YResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"

namespace ycontacts {
namespace {

using testsupport::becomesReady;
using testsupport::drainUsecaseQueue;

struct EchoRequest : YRequest {
    using YRequest::YRequest;
    int value = 0;
};

struct EchoResponse : YResponse {
    std::string yuid;
    int value = 0;
};

// A data source that answers only when the test says so, on the test's thread.
class FakeSource {
public:
    void fetch(int value, std::function<void(int)> answer) {
        std::lock_guard lock(mutex_);
        pending_.push_back({value, std::move(answer)});
        changed_.notify_all();
    }

    bool waitForRequests(std::size_t count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, testsupport::waitLimit, [&] { return pending_.size() >= count; });
    }

    std::size_t requestCount() {
        std::lock_guard lock(mutex_);
        return pending_.size();
    }

    // Answers every pending request `times` times (a local answer, then a server one, ...).
    void answerAll(int times) {
        std::vector<Pending> answering;
        {
            std::lock_guard lock(mutex_);
            answering.swap(pending_);
        }
        for (auto& request : answering) {
            for (int round = 0; round < times; ++round) request.answer(request.value + 1000 * round);
        }
    }

private:
    struct Pending {
        int value;
        std::function<void(int)> answer;
    };
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Pending> pending_;
};

class EchoUsecase : public YUsecase<EchoRequest, EchoResponse> {
public:
    EchoUsecase(std::shared_ptr<FakeSource> source, std::shared_ptr<std::atomic<int>> runs)
        : source_(std::move(source)), runs_(std::move(runs)) {}

    std::promise<std::thread::id> runThread;

protected:
    void run(const EchoRequest& request, Callback callback) override {
        if (runs_->fetch_add(1) == 0) runThread.set_value(std::this_thread::get_id());
        source_->fetch(request.value, [this, weak = weakSelf(), yuid = request.yuid, callback](int value) {
            if (const auto alive = weak.lock()) {
                EchoResponse response;
                response.yuid = yuid;
                response.value = value;
                invoke(callback, response);
            }
        });
    }

private:
    std::shared_ptr<FakeSource> source_;
    std::shared_ptr<std::atomic<int>> runs_;
};

struct Delivered {
    std::mutex mutex;
    std::vector<EchoResponse> responses;
    std::vector<std::thread::id> threads;

    EchoUsecase::Callback callback() {
        return [this](const EchoResponse& response) {
            std::lock_guard lock(mutex);
            responses.push_back(response);
            threads.push_back(std::this_thread::get_id());
        };
    }
};

TEST(YUsecaseTest, ExecuteRunsOnTheUsecaseQueueAndDeliversEachInvokeOnceInOrder) {
    auto source = std::make_shared<FakeSource>();
    auto runs = std::make_shared<std::atomic<int>>(0);
    auto usecase = std::make_shared<EchoUsecase>(source, runs);
    auto runThread = usecase->runThread.get_future();
    Delivered delivered;

    EchoRequest request("user-1");
    request.value = 7;
    usecase->execute(request, delivered.callback());
    ASSERT_TRUE(source->waitForRequests(1));
    ASSERT_TRUE(becomesReady(runThread));
    EXPECT_NE(runThread.get(), std::this_thread::get_id());

    source->answerAll(2);
    source->answerAll(2);  // nothing is pending any more: no further delivery

    EXPECT_EQ(runs->load(), 1);
    std::lock_guard lock(delivered.mutex);
    ASSERT_EQ(delivered.responses.size(), 2u);
    EXPECT_EQ(delivered.responses[0].value, 7);
    EXPECT_EQ(delivered.responses[1].value, 1007);
    EXPECT_EQ(delivered.responses[0].yuid, "user-1");
    // invoke() calls back on the answering thread.
    EXPECT_EQ(delivered.threads[0], std::this_thread::get_id());
    EXPECT_EQ(delivered.threads[1], std::this_thread::get_id());
}

TEST(YUsecaseTest, UsecaseReleasedBeforeItsSourceAnswersNeverCallsBack) {
    auto source = std::make_shared<FakeSource>();
    auto usecase = std::make_shared<EchoUsecase>(source, std::make_shared<std::atomic<int>>(0));
    Delivered delivered;

    usecase->execute(EchoRequest("user-1"), delivered.callback());
    ASSERT_TRUE(source->waitForRequests(1));
    ASSERT_TRUE(drainUsecaseQueue());  // the queued task has let go of its temporary hold
    usecase.reset();
    source->answerAll(2);

    std::lock_guard lock(delivered.mutex);
    EXPECT_TRUE(delivered.responses.empty());
}

TEST(YUsecaseTest, UsecaseReleasedBeforeItsTaskStartsNeverRuns) {
    auto source = std::make_shared<FakeSource>();
    auto runs = std::make_shared<std::atomic<int>>(0);
    auto usecase = std::make_shared<EchoUsecase>(source, runs);
    Delivered delivered;

    // Every worker of the pool is busy, so the use case's task waits in line.
    testsupport::QueueHold hold;
    ASSERT_TRUE(hold.allWorkersHeld());
    usecase->execute(EchoRequest("user-1"), delivered.callback());
    usecase.reset();
    hold.open();
    ASSERT_TRUE(drainUsecaseQueue());

    EXPECT_EQ(runs->load(), 0);
    EXPECT_EQ(source->requestCount(), 0u);
}

}  // namespace
}  // namespace ycontacts

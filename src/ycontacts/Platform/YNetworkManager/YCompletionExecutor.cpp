#include "ycontacts/Platform/YNetworkManager/YCompletionExecutor.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <string>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

struct YCompletionExecutor::State {
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<std::function<void()>> jobs;
    bool stopping = false;
};

YCompletionExecutor::YCompletionExecutor(std::size_t threadCount) : state_(std::make_shared<State>()) {
    const std::size_t count = threadCount == 0 ? 1 : threadCount;
    threads_.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        threads_.emplace_back([state = state_] { runWorker(state); });
    }
}

YCompletionExecutor::~YCompletionExecutor() {
    {
        std::lock_guard lock(state_->mutex);
        state_->stopping = true;
    }
    state_->wake.notify_all();
    for (auto& thread : threads_) {
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

void YCompletionExecutor::post(std::function<void()> job) {
    {
        std::lock_guard lock(state_->mutex);
        state_->jobs.push_back(std::move(job));
    }
    state_->wake.notify_one();
}

void YCompletionExecutor::runWorker(const std::shared_ptr<State>& state) {
    for (;;) {
        std::function<void()> job;
        {
            std::unique_lock lock(state->mutex);
            state->wake.wait(lock, [&] { return state->stopping || !state->jobs.empty(); });
            if (state->jobs.empty()) return;
            job = std::move(state->jobs.front());
            state->jobs.pop_front();
        }
        // A throwing completion must not take the process down with it.
        try {
            job();
        } catch (const std::exception& error) {
            Logger::shared().error(std::string("network completion threw ") + error.what());
        } catch (...) {
            Logger::shared().error("network completion threw a non-standard exception");
        }
    }
}

}  // namespace ycontacts

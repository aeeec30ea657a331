#include "ycontacts/Platform/MarloComponents/YWorkQueue.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace detail {

// Shared by the queue and its workers so that a worker can outlive a queue destroyed from one of its tasks.
class YWorkPool {
public:
    YWorkPool(std::string label, YWorkQueue::AtShutdown atShutdown)
        : label_(std::move(label)), atShutdown_(atShutdown) {}

    void post(std::function<void()> task) {
        std::lock_guard lock(mutex_);
        // A draining pool still takes work while stopping: its workers run until nothing is left.
        if (stopping_ && atShutdown_ == YWorkQueue::AtShutdown::drop) return;  // released after the lock
        tasks_.push_back(std::move(task));
        wake_.notify_one();
    }

    void stop() {
        std::deque<std::function<void()>> discarded;
        std::lock_guard lock(mutex_);
        stopping_ = true;
        if (atShutdown_ == YWorkQueue::AtShutdown::drop) discarded.swap(tasks_);
        wake_.notify_all();
        // `discarded` is destroyed after the lock is released (reverse declaration order).
    }

    void work() {
        for (;;) {
            std::function<void()> task;
            {
                std::unique_lock lock(mutex_);
                wake_.wait(lock, [&] { return stopping_ || !tasks_.empty(); });
                if (tasks_.empty()) return;
                task = std::move(tasks_.front());
                tasks_.pop_front();
            }
            try {
                if (task) task();
            } catch (const std::exception& exception) {
                Logger::shared().error("Task on work queue " + label_ + " threw: " + exception.what());
            } catch (...) {
                Logger::shared().error("Task on work queue " + label_ + " threw a non-standard exception");
            }
        }
    }

private:
    const std::string label_;
    const YWorkQueue::AtShutdown atShutdown_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> tasks_;
    bool stopping_ = false;
};

}  // namespace detail

YWorkQueue::YWorkQueue(std::string label, std::size_t threadCount, AtShutdown atShutdown)
    : pool_(std::make_shared<detail::YWorkPool>(std::move(label), atShutdown)) {
    const auto count = std::max<std::size_t>(threadCount, 1);
    threads_.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        threads_.emplace_back([pool = pool_] { pool->work(); });
    }
}

YWorkQueue::~YWorkQueue() {
    pool_->stop();
    const auto self = std::this_thread::get_id();
    for (auto& thread : threads_) {
        if (thread.get_id() == self) {
            thread.detach();
        } else {
            thread.join();
        }
    }
}

std::size_t YWorkQueue::threadCount() const { return threads_.size(); }

void YWorkQueue::async(std::function<void()> task) { pool_->post(std::move(task)); }

}  // namespace ycontacts

#pragma once
// Answers: collects the callbacks of one library query with the time each took, for a bounded wait.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "ycontacts_cli/Interrupt.h"

namespace ycontacts_cli {

// Share it with the callback through a std::shared_ptr, so that an answer arriving after the wait gave up
// still has somewhere to go.
template <class Answer>
class Answers {
public:
    struct Timed {
        Answer answer;
        // From construction (made just before the call) to the callback.
        double milliseconds = 0;
    };

    void add(Answer answer) {
        const double elapsed =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - askedAt_).count();
        {
            std::lock_guard lock(mutex_);
            answers_.push_back(Timed{std::move(answer), elapsed});
        }
        arrived_.notify_all();
    }

    // Waits until `count` answers arrived; false when `timeout` passed or a stop signal arrived first.
    bool waitFor(std::size_t count, std::chrono::milliseconds timeout) {
        const auto deadline = std::chrono::steady_clock::now() + timeout;
        std::unique_lock lock(mutex_);
        while (answers_.size() < count) {
            if (Interrupt::requested() || std::chrono::steady_clock::now() >= deadline) return false;
            // Short slices, so that a signal is noticed within a tenth of a second.
            arrived_.wait_for(lock, std::chrono::milliseconds(100));
        }
        return true;
    }

    std::vector<Timed> taken() const {
        std::lock_guard lock(mutex_);
        return answers_;
    }

private:
    const std::chrono::steady_clock::time_point askedAt_ = std::chrono::steady_clock::now();
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<Timed> answers_;
};

}  // namespace ycontacts_cli

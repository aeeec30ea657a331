#pragma once
// Waiting: bounded waits for work on other threads, and ways to see threads or a closure end.

#include <dirent.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ycontacts::testsupport {

// Long enough never to trip on a loaded machine; only a hung test waits this long.
inline constexpr std::chrono::seconds waitLimit{20};

template <class Future>
bool becomesReady(const Future& future, std::chrono::milliseconds limit = waitLimit) {
    return future.wait_for(limit) == std::future_status::ready;
}

// Collects what a callback receives, from any thread.
template <class Value>
class Received {
public:
    void add(Value value) {
        std::lock_guard lock(mutex_);
        values_.push_back(std::move(value));
        changed_.notify_all();
    }

    bool waitFor(std::size_t count) {
        return waitUntil([count](const std::vector<Value>& values) { return values.size() >= count; });
    }

    template <class Predicate>
    bool waitUntil(Predicate predicate) {
        std::unique_lock lock(mutex_);
        const std::vector<Value>& values = values_;
        return changed_.wait_for(lock, waitLimit, [&] { return predicate(values); });
    }

    std::vector<Value> values() {
        std::lock_guard lock(mutex_);
        return values_;
    }

    void clear() {
        std::lock_guard lock(mutex_);
        values_.clear();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Value> values_;
};

// Fulfils `promise` when the calling thread ends: thread-local objects are destroyed at thread exit,
// before a join of that thread returns.
inline void fulfilWhenThreadEnds(std::shared_ptr<std::promise<void>> promise) {
    struct Probe {
        std::shared_ptr<std::promise<void>> onExit;
        ~Probe() {
            if (onExit) onExit->set_value();
        }
    };
    thread_local Probe probe;
    probe.onExit = std::move(promise);
}

// Fulfils its promise when the last copy of the holding closure is released.
struct FulfilOnRelease {
    explicit FulfilOnRelease(std::promise<void> promise) : promise(std::move(promise)) {}
    ~FulfilOnRelease() { promise.set_value(); }
    std::promise<void> promise;
};

// Threads of this process as the kernel lists them.
inline std::size_t processThreadCount() {
    std::size_t count = 0;
    if (DIR* tasks = ::opendir("/proc/self/task")) {
        while (const dirent* entry = ::readdir(tasks)) {
            if (entry->d_name[0] != '.') ++count;
        }
        ::closedir(tasks);
    }
    return count;
}

// Polls a condition that another thread or process makes true; false when it does not hold within the limit.
template <class Condition>
bool eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + waitLimit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

// A joined thread can stay listed for a moment after pthread_join returns, while the kernel reaps it.
inline bool threadCountFallsTo(std::size_t expected) {
    return eventually([&] { return processThreadCount() <= expected; });
}

}  // namespace ycontacts::testsupport

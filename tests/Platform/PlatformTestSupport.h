#pragma once
// Helpers shared by the platform tests: waiting with a timeout, and seeing a worker thread end.

#include <chrono>
#include <future>
#include <memory>
#include <optional>

namespace ycontacts::platformtest {

inline constexpr std::chrono::seconds waitLimit{20};

template <class Future>
bool becomesReady(const Future& future, std::chrono::milliseconds limit = waitLimit) {
    return future.wait_for(limit) == std::future_status::ready;
}

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

}  // namespace ycontacts::platformtest

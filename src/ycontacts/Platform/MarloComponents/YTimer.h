#pragma once
// YTimer: a one-shot or repeating timer attached to a YRunLoopQueue; its action runs on that queue's thread.

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace ycontacts {

namespace detail {
class YRunLoop;

// Lets a timer tell the loop holding it that it was invalidated, so the loop drops it without waiting
// for its next fire date.
class YTimerHost {
public:
    virtual ~YTimerHost() = default;
    virtual void timerInvalidated() = 0;
};
}  // namespace detail

// Made only by YRunLoopQueue::scheduleTimer. The loop keeps a scheduled timer alive until it is
// invalidated (a one-shot timer invalidates itself when it fires), so dropping the returned pointer does
// not stop the timer.
class YTimer {
public:
    YTimer(const YTimer&) = delete;
    YTimer& operator=(const YTimer&) = delete;

    // Stops the timer for good; safe from any thread and from inside the timer's own action. Called on
    // the queue's thread it is exact; called from another thread while a firing has already begun, that
    // one call runs to its end, and no later one starts.
    void invalidate();
    bool isValid() const;
    // The period in seconds, after clamping to the supported range.
    double interval() const;
    bool repeats() const;

private:
    friend class detail::YRunLoop;
    using Clock = std::chrono::steady_clock;

    YTimer(Clock::duration interval, bool repeats, std::function<void()> action,
           std::weak_ptr<detail::YTimerHost> host, bool valid);

    const Clock::duration interval_;
    const bool repeats_;
    std::atomic<bool> valid_;
    // Called and released only on the loop's thread once scheduled.
    std::function<void()> action_;
    // Guarded by the loop's mutex.
    Clock::time_point fireDate_;
    const std::weak_ptr<detail::YTimerHost> host_;
};

}  // namespace ycontacts

#include "ycontacts/Platform/MarloComponents/YRunLoopQueue.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <vector>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace detail {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double minimumIntervalSeconds = 1e-4;
constexpr double maximumIntervalSeconds = 1e9;

Clock::duration clampInterval(std::chrono::duration<double> interval) {
    double seconds = interval.count();
    if (!(seconds >= minimumIntervalSeconds)) seconds = minimumIntervalSeconds;  // NaN lands here too
    if (seconds > maximumIntervalSeconds) seconds = maximumIntervalSeconds;
    return std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

thread_local const YRunLoop* currentLoop = nullptr;

}  // namespace

// The loop's state, shared by the queue and its thread so that the thread can outlive a queue destroyed
// from inside one of its own blocks.
class YRunLoop final : public YTimerHost, public std::enable_shared_from_this<YRunLoop> {
public:
    explicit YRunLoop(std::string name) : label(std::move(name)) {}

    const std::string label;

    void post(std::function<void()> block) {
        std::lock_guard lock(mutex_);
        if (stopping_) return;  // the block is released on return, after the lock
        blocks_.push_back(std::move(block));
        wake_.notify_one();
    }

    std::shared_ptr<YTimer> schedule(std::chrono::duration<double> interval, bool repeats,
                                     std::function<void()> action) {
        const auto period = clampInterval(interval);
        std::shared_ptr<YTimer> timer(new YTimer(period, repeats, std::move(action), weak_from_this(), true));
        std::function<void()> discarded;
        {
            std::lock_guard lock(mutex_);
            if (stopping_) {
                timer->valid_.store(false);
                discarded = std::move(timer->action_);
            } else {
                timer->fireDate_ = Clock::now() + period;
                timers_.push_back(timer);
                wake_.notify_one();
            }
        }
        return timer;
    }

    void timerInvalidated() override {
        std::lock_guard lock(mutex_);
        wake_.notify_one();
    }

    void stop() {
        std::deque<std::function<void()>> discarded;
        std::lock_guard lock(mutex_);
        stopping_ = true;
        discarded.swap(blocks_);
        wake_.notify_one();
        // `discarded` is destroyed after the lock is released (reverse declaration order).
    }

    bool isCurrent() const { return currentLoop == this; }

    void run() {
        currentLoop = this;
        bool lastWasTimer = false;
        for (;;) {
            std::shared_ptr<YTimer> due;
            std::function<void()> unit;
            std::vector<std::shared_ptr<YTimer>> dropped;
            const bool stopped = next(lastWasTimer, due, unit, dropped);
            for (const auto& timer : dropped) {
                timer->valid_.store(false);
                timer->action_ = nullptr;
            }
            if (stopped) break;
            if (due) {
                fire(*due, unit);
                lastWasTimer = true;
            } else if (unit) {
                runGuarded(unit);
                lastWasTimer = false;
            }
        }
        currentLoop = nullptr;
    }

private:
    // Waits for the next unit of work. Hands back a due timer (with its action in `unit` when it is a
    // one-shot), or a block in `unit`, or nothing but timers to release; returns true once stopped.
    bool next(bool lastWasTimer, std::shared_ptr<YTimer>& due, std::function<void()>& unit,
              std::vector<std::shared_ptr<YTimer>>& dropped) {
        std::unique_lock lock(mutex_);
        for (;;) {
            takeInvalidLocked(dropped);
            if (stopping_) {
                dropped.insert(dropped.end(), timers_.begin(), timers_.end());
                timers_.clear();
                return true;
            }
            if (!dropped.empty()) return false;  // release their actions outside the lock first

            const auto now = Clock::now();
            const auto earliest = earliestLocked();
            const bool timerDue = earliest && earliest->fireDate_ <= now;
            if (timerDue && !(lastWasTimer && !blocks_.empty())) {
                due = earliest;
                if (due->repeats_) {
                    rearmLocked(*due, now);
                } else {
                    std::erase(timers_, due);
                    unit = std::move(due->action_);
                }
                return false;
            }
            if (!blocks_.empty()) {
                unit = std::move(blocks_.front());
                blocks_.pop_front();
                return false;
            }
            if (earliest) {
                wake_.wait_until(lock, earliest->fireDate_);
            } else {
                wake_.wait(lock);
            }
        }
    }

    void takeInvalidLocked(std::vector<std::shared_ptr<YTimer>>& dropped) {
        std::erase_if(timers_, [&](const std::shared_ptr<YTimer>& timer) {
            if (timer->valid_.load()) return false;
            dropped.push_back(timer);
            return true;
        });
    }

    // The timer with the earliest fire date; the earlier scheduled one on a tie.
    std::shared_ptr<YTimer> earliestLocked() const {
        std::shared_ptr<YTimer> earliest;
        for (const auto& timer : timers_) {
            if (!earliest || timer->fireDate_ < earliest->fireDate_) earliest = timer;
        }
        return earliest;
    }

    static void rearmLocked(YTimer& timer, Clock::time_point now) {
        timer.fireDate_ += timer.interval_;
        if (timer.fireDate_ <= now) {
            const auto missed = (now - timer.fireDate_) / timer.interval_ + 1;
            timer.fireDate_ += missed * timer.interval_;
        }
    }

    void fire(YTimer& timer, std::function<void()>& oneShotAction) {
        if (timer.repeats_) {
            if (timer.valid_.load()) runGuarded(timer.action_);
            return;
        }
        bool expected = true;
        if (timer.valid_.compare_exchange_strong(expected, false)) runGuarded(oneShotAction);
    }

    void runGuarded(const std::function<void()>& unit) const {
        try {
            if (unit) unit();
        } catch (const std::exception& exception) {
            Logger::shared().error("Work on run loop queue " + label + " threw: " + exception.what());
        } catch (...) {
            Logger::shared().error("Work on run loop queue " + label + " threw a non-standard exception");
        }
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> blocks_;
    std::vector<std::shared_ptr<YTimer>> timers_;
    bool stopping_ = false;
};

}  // namespace detail

YRunLoopQueue::YRunLoopQueue(std::string label)
    : loop_(std::make_shared<detail::YRunLoop>(std::move(label))),
      thread_([loop = loop_] { loop->run(); }) {}

YRunLoopQueue::~YRunLoopQueue() {
    loop_->stop();
    if (thread_.get_id() == std::this_thread::get_id()) {
        thread_.detach();
    } else {
        thread_.join();
    }
}

const std::string& YRunLoopQueue::label() const { return loop_->label; }

void YRunLoopQueue::async(std::function<void()> block) { loop_->post(std::move(block)); }

std::shared_ptr<YTimer> YRunLoopQueue::scheduleTimer(std::chrono::duration<double> interval, bool repeats,
                                                     std::function<void()> action) {
    return loop_->schedule(interval, repeats, std::move(action));
}

bool YRunLoopQueue::isCurrent() const { return loop_->isCurrent(); }

}  // namespace ycontacts

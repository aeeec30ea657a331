#pragma once
// YRunLoopQueue: a serial queue whose one thread runs a run loop: blocks in submission order, timers between them.

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "ycontacts/Platform/MarloComponents/YTimer.h"

namespace ycontacts {

// One unit of work runs at a time on the queue's thread: either a block or a timer's action. A timer that
// is due goes first, but never twice in a row while blocks wait, so neither side starves the other.
// A block or action that throws is logged and the loop goes on.
class YRunLoopQueue {
public:
    explicit YRunLoopQueue(std::string label);
    // Stops the loop, discards blocks not yet started (on the calling thread) and joins the thread once the
    // running block, if any, has returned. Called from the queue's own thread (a block or timer action
    // that releases the queue's owner), it detaches instead: the thread ends right after the current unit.
    ~YRunLoopQueue();
    YRunLoopQueue(const YRunLoopQueue&) = delete;
    YRunLoopQueue& operator=(const YRunLoopQueue&) = delete;

    const std::string& label() const;

    // Safe from any thread, including the queue's own.
    void async(std::function<void()> block);

    // Safe from any thread. The first firing is `interval` from now; a repeating timer re-arms from its
    // planned fire date and skips the dates it missed while the thread was busy. Intervals are clamped
    // to [100 us, 10^9 s].
    std::shared_ptr<YTimer> scheduleTimer(std::chrono::duration<double> interval, bool repeats,
                                          std::function<void()> action);

    // True when called on the queue's thread.
    bool isCurrent() const;

private:
    std::shared_ptr<detail::YRunLoop> loop_;
    std::thread thread_;
};

}  // namespace ycontacts

#include "ycontacts/Platform/MarloComponents/YTimer.h"

namespace ycontacts {

YTimer::YTimer(Clock::duration interval, bool repeats, std::function<void()> action,
               std::weak_ptr<detail::YTimerHost> host, bool valid)
    : interval_(interval), repeats_(repeats), valid_(valid), action_(std::move(action)), host_(std::move(host)) {}

void YTimer::invalidate() {
    if (!valid_.exchange(false)) return;
    if (auto host = host_.lock()) host->timerInvalidated();
}

bool YTimer::isValid() const { return valid_.load(); }

double YTimer::interval() const { return std::chrono::duration<double>(interval_).count(); }

bool YTimer::repeats() const { return repeats_; }

}  // namespace ycontacts

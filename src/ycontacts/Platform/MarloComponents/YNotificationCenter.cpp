#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"

#include <algorithm>

namespace ycontacts {

YNotificationCenter& YNotificationCenter::shared() {
    static YNotificationCenter center;
    return center;
}

void YNotificationCenter::add(std::type_index contract, std::shared_ptr<void> observer, const void* address) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [](const Entry& entry) { return entry.observer.expired(); });
    const bool known = std::any_of(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.contract == contract && entry.address == address;
    });
    if (!known) entries_.push_back(Entry{contract, observer, address});
}

void YNotificationCenter::remove(std::type_index contract, const void* address) {
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [&](const Entry& entry) {
        return entry.observer.expired() || (entry.contract == contract && entry.address == address);
    });
}

std::vector<std::shared_ptr<void>> YNotificationCenter::snapshot(std::type_index contract) {
    std::vector<std::shared_ptr<void>> live;
    // Observers of other contracts are pinned too, so that none is destroyed under the lock (its
    // destructor may well remove itself from this centre).
    std::vector<std::shared_ptr<void>> others;
    std::lock_guard lock(mutex_);
    std::erase_if(entries_, [&](const Entry& entry) {
        auto observer = entry.observer.lock();
        if (!observer) return true;
        (entry.contract == contract ? live : others).push_back(std::move(observer));
        return false;
    });
    return live;
}

}  // namespace ycontacts

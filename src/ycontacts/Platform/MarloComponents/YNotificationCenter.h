#pragma once
// YNotificationCenter: delivers typed notifications to observers held weakly, grouped by the contract they observe.

#include <functional>
#include <memory>
#include <mutex>
#include <typeindex>
#include <typeinfo>
#include <vector>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// An observer is registered for one contract type and receives only posts of that type. Posting takes a
// snapshot of the live observers under the lock and calls them after releasing it, so an observer may
// post, add or remove observers from inside a notification; an observer removed or released while a post
// is under way may still receive that one post.
class YCONTACTS_EXPORT YNotificationCenter {
public:
    YNotificationCenter() = default;
    YNotificationCenter(const YNotificationCenter&) = delete;
    YNotificationCenter& operator=(const YNotificationCenter&) = delete;

    // The library's centre.
    static YNotificationCenter& shared();

    // Registering the same observer twice for one contract keeps one registration.
    template <class Contract>
    void addObserver(const std::shared_ptr<Contract>& observer) {
        if (observer) add(typeid(Contract), std::static_pointer_cast<void>(observer), observer.get());
    }

    template <class Contract>
    void removeObserver(const Contract* observer) {
        remove(typeid(Contract), observer);
    }

    // Calls `notify` on every live observer of `Contract`, in registration order, on the calling thread.
    template <class Contract>
    void post(const std::function<void(Contract&)>& notify) {
        if (!notify) return;
        for (const auto& observer : snapshot(typeid(Contract))) notify(*static_cast<Contract*>(observer.get()));
    }

    // How many live observers `Contract` has.
    template <class Contract>
    std::size_t observerCount() {
        return snapshot(typeid(Contract)).size();
    }

private:
    struct Entry {
        std::type_index contract;
        std::weak_ptr<void> observer;
        const void* address;
    };

    void add(std::type_index contract, std::shared_ptr<void> observer, const void* address);
    void remove(std::type_index contract, const void* address);
    std::vector<std::shared_ptr<void>> snapshot(std::type_index contract);

    std::mutex mutex_;
    std::vector<Entry> entries_;
};

}  // namespace ycontacts

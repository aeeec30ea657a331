#pragma once
// YLazySlot: a component built on its first read, at most once even when first read from several threads.

#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

template <class T>
class YLazySlot {
public:
    explicit YLazySlot(std::string name) : name_(std::move(name)) {}
    YLazySlot(const YLazySlot&) = delete;
    YLazySlot& operator=(const YLazySlot&) = delete;

    // Runs `build` on the first call only and returns what it produced, null included, on every call.
    // Callers that arrive while the first build runs wait for it. A build that throws counts as one that
    // produced nothing: the slot stays empty for good.
    template <class Build>
    std::shared_ptr<T> get(Build&& build) {
        std::call_once(once_, [&] {
            try {
                value_ = std::forward<Build>(build)();
            } catch (const std::exception& error) {
                Logger::shared().error("Building " + name_ + " failed: " + error.what());
            } catch (...) {
                Logger::shared().error("Building " + name_ + " failed with an unknown exception");
            }
        });
        return value_;
    }

private:
    std::string name_;
    std::once_flag once_;
    std::shared_ptr<T> value_;
};

}  // namespace ycontacts

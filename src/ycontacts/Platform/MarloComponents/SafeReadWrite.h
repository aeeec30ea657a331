#pragma once
// SafeReadWrite: a lock-protected value box; each read and each whole-value write is one locked step.

#include <mutex>
#include <string>
#include <utility>

namespace ycontacts {

template <typename T>
class SafeReadWrite {
public:
    explicit SafeReadWrite(std::string label, T initial = T{})
        : label_(std::move(label)), value_(std::move(initial)) {}

    SafeReadWrite(const SafeReadWrite&) = delete;
    SafeReadWrite& operator=(const SafeReadWrite&) = delete;

    const std::string& label() const { return label_; }

    // A copy of the current value.
    T value() const {
        std::lock_guard lock(mutex_);
        return value_;
    }

    // Replaces the whole value.
    void setValue(T newValue) {
        std::lock_guard lock(mutex_);
        value_ = std::move(newValue);
    }

    // Runs `reader` on the value under the lock and returns what it returns; keep it short and
    // never call back into code that may take this box again.
    template <typename F>
    auto read(F&& reader) const {
        std::lock_guard lock(mutex_);
        return std::forward<F>(reader)(static_cast<const T&>(value_));
    }

    // Runs `writer` on the value under the lock: one atomic read-modify-write.
    template <typename F>
    auto write(F&& writer) {
        std::lock_guard lock(mutex_);
        return std::forward<F>(writer)(value_);
    }

private:
    std::string label_;
    mutable std::mutex mutex_;
    T value_;
};

}  // namespace ycontacts

#pragma once
// YMutex and YMutexLock: a std::mutex and its scoped lock, annotated so that clang can check their use.

#include <mutex>

#include "ycontacts/Platform/MarloComponents/YThreadAnnotations.h"

namespace ycontacts {

class Y_CAPABILITY("mutex") YMutex {
public:
    void lock() Y_ACQUIRE() { mutex_.lock(); }
    void unlock() Y_RELEASE() { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

// Holds the mutex for its scope.
class Y_SCOPED_CAPABILITY YMutexLock {
public:
    explicit YMutexLock(YMutex& mutex) Y_ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~YMutexLock() Y_RELEASE() { mutex_.unlock(); }
    YMutexLock(const YMutexLock&) = delete;
    YMutexLock& operator=(const YMutexLock&) = delete;

private:
    YMutex& mutex_;
};

}  // namespace ycontacts

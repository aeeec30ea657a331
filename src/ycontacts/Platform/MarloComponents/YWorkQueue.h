#pragma once
// YWorkQueue: a fixed pool of worker threads that run submitted tasks, several at a time.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace ycontacts {

namespace detail {
class YWorkPool;
}

// Tasks start in submission order but run concurrently, so they finish in any order. A task that throws
// is logged and the worker goes on.
class YWorkQueue {
public:
    // `threadCount` of 0 is taken as 1.
    YWorkQueue(std::string label, std::size_t threadCount);
    // Discards the tasks not yet started (on the calling thread), lets running tasks finish and joins the
    // workers. When called from one of its own workers, that worker is detached and ends after its task.
    ~YWorkQueue();
    YWorkQueue(const YWorkQueue&) = delete;
    YWorkQueue& operator=(const YWorkQueue&) = delete;

    const std::string& label() const;
    std::size_t threadCount() const;

    // Safe from any thread, including a worker.
    void async(std::function<void()> task);

private:
    std::shared_ptr<detail::YWorkPool> pool_;
    std::vector<std::thread> threads_;
};

}  // namespace ycontacts

#pragma once
// YWorkQueue: a fixed pool of worker threads that run submitted tasks, several at a time.

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

namespace detail {
class YWorkPool;
}

// Tasks start in submission order but run concurrently, so they finish in any order. A task runs with no
// lock of the queue held; one that throws is logged and the worker goes on.
class YCONTACTS_EXPORT YWorkQueue {
public:
    // What the destructor does with the tasks submitted but not started yet.
    enum class AtShutdown {
        // Runs them, and those they submit, before the workers end: for work whose loss would go unreported.
        drain,
        // Discards them on the destroying thread; tasks submitted from then on are discarded as well.
        drop,
    };

    // `threadCount` of 0 is taken as 1; `label` names the queue in its log lines.
    YWorkQueue(std::string label, std::size_t threadCount, AtShutdown atShutdown);
    // Lets running tasks finish, drains or drops the rest, and joins the workers. When called from one of
    // its own workers, that worker is detached instead and ends once the queue has nothing it must run.
    ~YWorkQueue();
    YWorkQueue(const YWorkQueue&) = delete;
    YWorkQueue& operator=(const YWorkQueue&) = delete;

    std::size_t threadCount() const;

    // Safe from any thread, including a worker.
    void async(std::function<void()> task);

private:
    // Each worker holds the pool itself, so a worker detached by a destructor running on it stays valid.
    std::shared_ptr<detail::YWorkPool> pool_;
    std::vector<std::thread> threads_;
};

}  // namespace ycontacts

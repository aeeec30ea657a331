#pragma once
// YCompletionExecutor: a small pool of threads that runs request completions away from the I/O thread.

#include <cstddef>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace ycontacts {

// Jobs start in the order they were posted; with more than one thread they may run side by side. A job
// runs with no lock of the executor held. The destructor runs every job already posted, then joins the
// threads; when it is called from one of its own threads (the last owner let go inside a job), that
// thread is detached instead and finishes the queue on its own before it ends.
class YCompletionExecutor {
public:
    explicit YCompletionExecutor(std::size_t threadCount);
    ~YCompletionExecutor();
    YCompletionExecutor(const YCompletionExecutor&) = delete;
    YCompletionExecutor& operator=(const YCompletionExecutor&) = delete;

    void post(std::function<void()> job);

private:
    struct State;
    // Each worker holds the state itself, so a worker detached by a destructor running on it stays valid.
    static void runWorker(const std::shared_ptr<State>& state);

    std::shared_ptr<State> state_;
    std::vector<std::thread> threads_;
};

}  // namespace ycontacts

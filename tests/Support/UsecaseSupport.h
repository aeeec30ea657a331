#pragma once
// UsecaseSupport: running a use case to its answers, waiting for the use-case pool to run dry, holding its workers.

#include <condition_variable>
#include <cstddef>
#include <future>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "Support/Waiting.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"

namespace ycontacts::testsupport {

// Returns once every task queued on the use-case pool before the call has finished: the pool starts tasks in
// order, so when all its workers are inside these rendezvous tasks at once, nothing earlier is still running.
inline bool drainUsecaseQueue() {
    auto& queue = UsecaseQueue::queue();
    const auto workers = queue.threadCount();
    struct Rendezvous {
        std::mutex mutex;
        std::condition_variable changed;
        std::size_t arrived = 0;
        std::size_t met = 0;
    };
    auto rendezvous = std::make_shared<Rendezvous>();
    for (std::size_t worker = 0; worker < workers; ++worker) {
        queue.async([rendezvous, workers] {
            std::unique_lock lock(rendezvous->mutex);
            ++rendezvous->arrived;
            rendezvous->changed.notify_all();
            if (rendezvous->changed.wait_for(lock, waitLimit, [&] { return rendezvous->arrived >= workers; })) {
                ++rendezvous->met;
                rendezvous->changed.notify_all();
            }
        });
    }
    std::unique_lock lock(rendezvous->mutex);
    return rendezvous->changed.wait_for(lock, waitLimit, [&] { return rendezvous->met == workers; });
}

// Keeps every worker of the use-case pool busy until open() (or destruction), so tasks queued meanwhile wait.
class QueueHold {
public:
    QueueHold() {
        auto& queue = UsecaseQueue::queue();
        for (std::size_t worker = 0; worker < queue.threadCount(); ++worker) {
            queue.async([state = state_, opened = state_->opened] {
                {
                    std::lock_guard lock(state->mutex);
                    ++state->busy;
                    state->changed.notify_all();
                }
                opened.wait_for(waitLimit);
            });
        }
    }
    ~QueueHold() { open(); }
    QueueHold(const QueueHold&) = delete;
    QueueHold& operator=(const QueueHold&) = delete;

    bool allWorkersHeld() {
        std::unique_lock lock(state_->mutex);
        return state_->changed.wait_for(lock, waitLimit,
                                        [&] { return state_->busy == UsecaseQueue::queue().threadCount(); });
    }

    void open() {
        if (!isOpen_) state_->gate.set_value();
        isOpen_ = true;
    }

private:
    struct State {
        std::promise<void> gate;
        std::shared_future<void> opened = gate.get_future().share();
        std::mutex mutex;
        std::condition_variable changed;
        std::size_t busy = 0;
    };
    std::shared_ptr<State> state_ = std::make_shared<State>();
    bool isOpen_ = false;
};

// Executes `request` and returns what the use case delivered once `count` responses came (or the wait ran out).
template <class Response, class Usecase, class Request>
std::vector<Response> responsesOf(Usecase& usecase, Request request, std::size_t count) {
    // Shared with the callback, which may still run after a failed wait.
    auto received = std::make_shared<Received<Response>>();
    usecase.execute(std::move(request), [received](const Response& response) { received->add(response); });
    received->waitFor(count);
    return received->values();
}

}  // namespace ycontacts::testsupport

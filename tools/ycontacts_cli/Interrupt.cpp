#include "ycontacts_cli/Interrupt.h"

#include <csignal>
#include <ctime>

#include <pthread.h>

namespace ycontacts_cli {

namespace {

std::mutex mutex;
std::condition_variable arrived;
std::atomic<int> received{0};

sigset_t stopSignals() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

}  // namespace

Interrupt::Interrupt() {
    const sigset_t set = stopSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    watcher_ = std::thread([this, set] {
        // A short timed wait lets the destructor end the thread without sending a signal of its own.
        const timespec slice{0, 100'000'000};
        while (!stopping_.load()) {
            const int signal = sigtimedwait(&set, nullptr, &slice);
            if (signal <= 0) continue;
            {
                std::lock_guard lock(mutex);
                received.store(signal);
            }
            arrived.notify_all();
        }
    });
}

Interrupt::~Interrupt() {
    stopping_.store(true);
    watcher_.join();
}

bool Interrupt::requested() { return received.load() != 0; }

int Interrupt::signalNumber() { return received.load(); }

void Interrupt::wait() {
    std::unique_lock lock(mutex);
    arrived.wait(lock, [] { return received.load() != 0; });
}

bool Interrupt::waitFor(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex);
    return arrived.wait_for(lock, timeout, [] { return received.load() != 0; });
}

}  // namespace ycontacts_cli

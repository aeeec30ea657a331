#pragma once
// Interrupt: turns SIGINT and SIGTERM into a flag that every wait of the tool looks at, so a run stops cleanly.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace ycontacts_cli {

// Make one at the start of main, before any thread exists: the signals are blocked for every thread the
// process starts later, and one watcher thread takes them instead.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // True once SIGINT or SIGTERM arrived.
    static bool requested();
    // The signal that arrived, 0 before.
    static int signalNumber();
    // Blocks until a signal arrives.
    static void wait();
    // Blocks until a signal arrives or `timeout` passes; true when a signal arrived.
    static bool waitFor(std::chrono::milliseconds timeout);

    // The exit status of a run ended by a signal, as shells report it.
    static int exitStatus() { return 128 + signalNumber(); }

private:
    std::thread watcher_;
    std::atomic<bool> stopping_{false};
};

}  // namespace ycontacts_cli

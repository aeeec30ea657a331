#pragma once
// ProgressLine: draws a download's progress from the sync notifications: pages, contacts, rate and time left.

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <optional>
#include <string>

#include "ycontacts_cli/SyncWatcher.h"

namespace ycontacts_cli {

class ProgressLine {
public:
    // `expectedContacts` gives the bar and the time left; without it only the counts and the rate are shown.
    // On a terminal the line is redrawn in place (at most ten times a second); elsewhere a line is written at
    // most once a second.
    ProgressLine(std::FILE* out, std::optional<std::int64_t> expectedContacts);

    // Safe from any thread.
    void update(const SyncProgress& progress);
    // Writes the final state and ends the line.
    void finish(const SyncProgress& progress);
    // Ends the line without a final state, for a download that did not complete; later updates are ignored.
    void abandon();

    // The text of one progress line.
    static std::string render(const SyncProgress& progress, std::optional<std::int64_t> expectedContacts);

private:
    void draw(const SyncProgress& progress, bool final);

    std::FILE* const out_;
    const std::optional<std::int64_t> expectedContacts_;
    const bool interactive_;
    std::mutex mutex_;
    std::chrono::steady_clock::time_point lastDrawn_{};
    bool finished_ = false;
    bool drawnInPlace_ = false;
};

}  // namespace ycontacts_cli

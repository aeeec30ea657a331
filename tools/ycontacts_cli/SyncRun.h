#pragma once
// SyncRun: asks the facade's sync handler for one download of a user and follows it to its end.

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "ycontacts_cli/ProgressLine.h"
#include "ycontacts_cli/SyncWatcher.h"

namespace ycontacts_cli {

struct SyncRun {
    // start: the library picks the initial download or an incremental sync; reset: drop the user's data
    // and download afresh; sync: an incremental sync (or the rest of an unfinished initial download).
    enum class Kind { start, reset, sync };

    SyncWatcher::Outcome outcome = SyncWatcher::Outcome::stalled;
    SyncProgress progress;
    // Taken from the watcher, for callers that check what arrived.
    std::shared_ptr<SyncWatcher> watcher;

    // `line` (may be null) is fed on every page and finished at the end.
    static SyncRun perform(Kind kind, const std::string& yuid, const std::optional<std::string>& yoid,
                           std::shared_ptr<ProgressLine> line, std::chrono::milliseconds idleTimeout);
};

// Counts by population as JSON: {"personal": n, "org": m}.
nlohmann::ordered_json tallyJson(const SyncTally& tally);
// Outcome names as the JSON output writes them.
const char* outcomeName(SyncWatcher::Outcome outcome);

}  // namespace ycontacts_cli

#include "ycontacts_cli/SyncRun.h"

#include "ycontacts_cli/Session.h"

namespace ycontacts_cli {

SyncRun SyncRun::perform(Kind kind, const std::string& yuid, const std::optional<std::string>& yoid,
                         std::shared_ptr<ProgressLine> line, std::chrono::milliseconds idleTimeout) {
    SyncRun run;
    // Attached before the request: the handler works on another thread and may report at once.
    run.watcher = SyncWatcher::attach(yuid, [line](const SyncProgress& progress) {
        if (line) line->update(progress);
    });
    auto& handler = Session::syncHandler();
    switch (kind) {
        case Kind::start:
            handler.start(yuid, yoid);
            break;
        case Kind::reset:
            handler.resetAndStart(yuid, yoid);
            break;
        case Kind::sync:
            handler.syncContacts(yuid, yoid);
            break;
    }
    run.outcome = run.watcher->wait(idleTimeout);
    run.progress = run.watcher->progress();
    if (line && run.outcome == SyncWatcher::Outcome::completed)
        line->finish(run.progress);
    else if (line)
        line->abandon();
    return run;
}

nlohmann::ordered_json tallyJson(const SyncTally& tally) {
    return nlohmann::ordered_json{{"personal", tally.personal}, {"org", tally.org}};
}

const char* outcomeName(SyncWatcher::Outcome outcome) {
    switch (outcome) {
        case SyncWatcher::Outcome::completed:
            return "completed";
        case SyncWatcher::Outcome::failed:
            return "failed";
        case SyncWatcher::Outcome::stalled:
            return "stalled";
        case SyncWatcher::Outcome::interrupted:
            return "interrupted";
    }
    return "failed";
}

}  // namespace ycontacts_cli

// `ycontacts sync`: downloads one user's contacts into a data directory and waits for the outcome.

#include <cstdio>
#include <mutex>
#include <string>

#include "ycontacts_cli/CommandSupport.h"
#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/Format.h"
#include "ycontacts_cli/Interrupt.h"
#include "ycontacts_cli/ServerCheck.h"
#include "ycontacts_cli/Session.h"
#include "ycontacts_cli/SyncRun.h"

namespace ycontacts_cli {

namespace {

std::string storedText(const std::optional<ycontacts::YContactSyncHandlerContract::ContactCount>& counts) {
    if (!counts) return "the store's counts are not available";
    return format::count(counts->second) + " personal and " + format::count(counts->first) +
           " organisation contacts stored";
}

std::string pagesText(const SyncProgress& progress) {
    return format::count(progress.pages) + (progress.pages == 1 ? " page" : " pages") + " in " +
           format::duration(progress.elapsedSeconds);
}

// The first error line the library logs while it is alive: the store's own words for a failed write.
class FirstLibraryError {
public:
    FirstLibraryError() {
        ycontacts::Logger::shared().setSink([this](const ycontacts::Logger::Record& record) {
            if (record.level < ycontacts::Logger::Level::error) return;
            std::lock_guard lock(mutex_);
            if (text_.empty()) text_ = record.message;
        });
    }
    ~FirstLibraryError() { ycontacts::Logger::shared().setSink({}); }
    FirstLibraryError(const FirstLibraryError&) = delete;
    FirstLibraryError& operator=(const FirstLibraryError&) = delete;

    std::string text() const {
        std::lock_guard lock(mutex_);
        return text_;
    }

private:
    mutable std::mutex mutex_;
    std::string text_;
};

// Why the download failed, in words a person can act on.
std::string failureText(const SyncRun& run, const ServerAddress& server, const SyncOptions& options,
                        const DataDirectory& data, const FirstLibraryError& libraryError) {
    const auto& user = options.local.user;
    if (run.outcome == SyncWatcher::Outcome::stalled) {
        return "no word from the download of " + user + " for " +
               format::duration(options.server.timeoutSeconds) +
               "; the next sync resumes at the last stored page";
    }
    if (run.progress.error == ycontacts::YContactError::storageError) {
        const auto cause = libraryError.text();
        return "sync failed: the contacts of " + user + " could not be stored in " + data.database().string() +
               (cause.empty() ? "" : " (" + cause + ")") + "; the next sync asks for the page that was not stored";
    }
    const std::string error(ycontacts::toRawValue(run.progress.error.value_or(ycontacts::YContactError::unknownError)));
    const auto check = ServerCheck::run(server, options.server.proxy, user, options.server.org, options.server.token,
                                        std::chrono::seconds(10));
    if (check.outcome != ServerCheck::Outcome::ok) return "sync failed: " + check.message;
    return "sync of " + user + " failed (" + error + ") although " + check.message +
           "; run it again with --verbose to see the library's log";
}

}  // namespace

int runSync(const SyncOptions& options) {
    const auto setting = serverSetting(options.server);
    if (!setting.address) return problem(setting.problem, exitBadInput);
    const DataDirectory data{options.local.dataDir};
    if (auto trouble = data.prepareForWriting()) return problem(*trouble, exitBadInput);
    SessionSettings settings{data, setting.address, options.server.proxy,
                             {{options.local.user, options.server.token}}, options.local.verbose};
    if (auto trouble = Session::open(settings)) return problem(*trouble, exitFailed);

    const auto& user = options.local.user;
    std::shared_ptr<ProgressLine> line;
    if (!options.local.json) {
        std::fprintf(stderr, "%s %s from %s into %s\n", options.reset ? "Downloading afresh" : "Syncing", user.c_str(),
                     setting.address->base().c_str(), data.root.string().c_str());
        line = std::make_shared<ProgressLine>(stderr, std::nullopt);
    }
    const auto idle = std::chrono::milliseconds(static_cast<long long>(options.server.timeoutSeconds * 1000));
    const FirstLibraryError libraryError;
    const SyncRun run = SyncRun::perform(options.reset ? SyncRun::Kind::reset : SyncRun::Kind::start, user,
                                         options.server.org, line, idle);
    const auto counts = Session::syncHandler().getContactCount(user);
    const auto& progress = run.progress;

    std::string failure;
    if (run.outcome == SyncWatcher::Outcome::interrupted)
        failure = "interrupted; the next sync resumes at the last stored page";
    else if (run.outcome != SyncWatcher::Outcome::completed)
        failure = failureText(run, *setting.address, options, data, libraryError);

    if (options.local.json) {
        nlohmann::ordered_json summary{
            {"yuid", user},
            {"yoid", options.server.org ? nlohmann::ordered_json(*options.server.org) : nlohmann::ordered_json()},
            {"outcome", outcomeName(run.outcome)},
            {"initial", progress.initial},
            {"pages", progress.pages},
            {"added", tallyJson(progress.added)},
            {"updated", tallyJson(progress.updated)},
            {"deleted", tallyJson(progress.deleted)},
            {"stored", counts ? tallyJson(SyncTally{counts->second, counts->first}) : nlohmann::ordered_json()},
            {"lastUpdatedTime", progress.lastUpdateTime ? nlohmann::ordered_json(*progress.lastUpdateTime)
                                                        : nlohmann::ordered_json()},
            {"seconds", progress.elapsedSeconds},
        };
        if (progress.error) summary["error"] = std::string(ycontacts::toRawValue(*progress.error));
        if (!failure.empty()) summary["problem"] = failure;
        std::printf("%s\n", summary.dump(2).c_str());
    }
    if (run.outcome == SyncWatcher::Outcome::interrupted) {
        problem(failure, exitFailed);
        return Interrupt::exitStatus();
    }
    if (!failure.empty()) return problem(failure, exitFailed);

    if (!options.local.json) {
        if (progress.initial) {
            std::printf("Initial download of %s complete: %s (%s).\n", user.c_str(), storedText(counts).c_str(),
                        pagesText(progress).c_str());
        } else {
            std::printf("Sync of %s complete: %s added, %s updated, %s deleted (%s); %s.\n", user.c_str(),
                        format::count(progress.added.total()).c_str(), format::count(progress.updated.total()).c_str(),
                        format::count(progress.deleted.total()).c_str(), pagesText(progress).c_str(),
                        storedText(counts).c_str());
        }
    }
    return exitOk;
}

}  // namespace ycontacts_cli

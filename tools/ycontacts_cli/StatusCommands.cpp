// `ycontacts status` and `ycontacts remove`: what is stored for a user, and dropping it.

#include <cstdio>
#include <latch>
#include <memory>
#include <system_error>

#include "ycontacts_cli/CommandSupport.h"
#include "ycontacts_cli/Commands.h"
#include "ycontacts_cli/Format.h"
#include "ycontacts_cli/Session.h"

namespace ycontacts_cli {

namespace {

std::uintmax_t fileSize(const std::filesystem::path& path) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

// Every task handed to the use-case queue before this call has finished when it returns. The queue starts
// tasks in submission order; one blocking task per worker can all be running at once only when every task
// submitted before them has ended.
void drainUsecaseQueue() {
    auto& queue = ycontacts::UsecaseQueue::queue();
    const auto workers = static_cast<std::ptrdiff_t>(queue.threadCount());
    auto allRunning = std::make_shared<std::latch>(workers);
    auto allDone = std::make_shared<std::latch>(workers);
    for (std::ptrdiff_t i = 0; i < workers; ++i) {
        queue.async([allRunning, allDone] {
            allRunning->arrive_and_wait();
            allDone->count_down();
        });
    }
    allDone->wait();
}

}  // namespace

int runStatus(const LocalOptions& options) {
    const DataDirectory data{options.dataDir};
    if (auto trouble = data.checkReadable()) return problem(*trouble, exitBadInput);
    if (auto trouble = Session::open(SessionSettings{data, std::nullopt, false, {}, options.verbose}))
        return problem(*trouble, exitFailed);

    auto& handler = Session::syncHandler();
    const auto counts = handler.getContactCount(options.user);
    const double lastUpdated = handler.lastUpdatedTime(options.user).value_or(0.0);
    const auto databaseBytes = fileSize(data.database());

    if (options.json) {
        nlohmann::ordered_json status{
            {"yuid", options.user},
            {"dataDir", data.root.string()},
            {"database", data.database().string()},
            {"databaseBytes", databaseBytes},
            {"personal", counts ? nlohmann::ordered_json(counts->second) : nlohmann::ordered_json()},
            {"org", counts ? nlohmann::ordered_json(counts->first) : nlohmann::ordered_json()},
            {"lastUpdatedTime", lastUpdated > 0 ? nlohmann::ordered_json(lastUpdated) : nlohmann::ordered_json()},
        };
        std::printf("%s\n", status.dump(2).c_str());
        return exitOk;
    }
    std::printf("user        %s\n", options.user.c_str());
    std::printf("data        %s (database %s KiB)\n", data.root.string().c_str(),
                format::count(static_cast<std::int64_t>(databaseBytes / 1024)).c_str());
    if (counts) {
        std::printf("contacts    %s personal, %s organisation\n", format::count(counts->second).c_str(),
                    format::count(counts->first).c_str());
    } else {
        std::printf("contacts    not readable\n");
    }
    std::printf("last sync   %s\n", lastUpdated > 0 ? format::utcTime(lastUpdated).c_str() : "never completed");
    return exitOk;
}

int runRemove(const LocalOptions& options) {
    const DataDirectory data{options.dataDir};
    if (auto trouble = data.checkReadable()) return problem(*trouble, exitBadInput);
    if (auto trouble = Session::open(SessionSettings{data, std::nullopt, false, {}, options.verbose}))
        return problem(*trouble, exitFailed);

    auto& handler = Session::syncHandler();
    const auto before = handler.getContactCount(options.user);
    // The facade only schedules the removal; the process must not end before it ran.
    Session::service().removeAllData(options.user);
    drainUsecaseQueue();
    const auto after = handler.getContactCount(options.user);
    const bool emptied = after && after->first == 0 && after->second == 0;

    if (options.json) {
        nlohmann::ordered_json removed{
            {"yuid", options.user},
            {"removed", before ? nlohmann::ordered_json{{"personal", before->second}, {"org", before->first}}
                               : nlohmann::ordered_json()},
            {"remaining", after ? nlohmann::ordered_json{{"personal", after->second}, {"org", after->first}}
                                : nlohmann::ordered_json()},
        };
        std::printf("%s\n", removed.dump(2).c_str());
    } else if (emptied) {
        std::printf("Removed the contacts and sync state of %s from %s (%s personal, %s organisation contacts).\n",
                    options.user.c_str(), data.root.string().c_str(),
                    format::count(before ? before->second : 0).c_str(), format::count(before ? before->first : 0).c_str());
    }
    if (!emptied) return problem("the contacts of " + options.user + " are still in " + data.root.string(), exitFailed);
    return exitOk;
}

}  // namespace ycontacts_cli

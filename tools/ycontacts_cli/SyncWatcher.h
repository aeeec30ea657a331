#pragma once
// SyncWatcher: an observer of the library's notifications that follows one download of one user to its end.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <ycontacts/YContacts.h>

namespace ycontacts_cli {

// Contacts counted by population.
struct SyncTally {
    std::int64_t personal = 0;
    std::int64_t org = 0;

    std::int64_t total() const { return personal + org; }
    void add(bool isOrg, std::int64_t count) { (isOrg ? org : personal) += count; }
};

// What the notifications told about one download so far.
struct SyncProgress {
    bool started = false;
    bool initial = true;
    bool dataReset = false;
    // Pages processed: every page of a download is announced with one contactsAdded.
    int pages = 0;
    SyncTally added;
    SyncTally updated;
    SyncTally deleted;
    // The store's counts after the latest page.
    std::optional<SyncTally> stored;
    std::optional<double> lastUpdateTime;
    std::optional<ycontacts::YContactError> error;
    bool completed = false;
    // Since the watcher was attached, which is just before the download was asked for.
    double elapsedSeconds = 0;

    std::int64_t received() const { return added.total() + updated.total() + deleted.total(); }
    bool finished() const { return completed || error.has_value(); }
};

class SyncWatcher : public ycontacts::YContactsNotification {
public:
    enum class Outcome { completed, failed, stalled, interrupted };
    using ProgressHandler = std::function<void(const SyncProgress& progress)>;

    // Registers with the library's notification centre; `onProgress` runs on library threads after every page
    // and at the end, never under the watcher's lock.
    static std::shared_ptr<SyncWatcher> attach(std::string yuid, ProgressHandler onProgress = {});
    ~SyncWatcher() override;

    // Waits for the download to complete or fail. Gives up (stalled) when no notification arrives for
    // `idleTimeout`, and stops waiting at SIGINT or SIGTERM.
    Outcome wait(std::chrono::milliseconds idleTimeout);
    SyncProgress progress() const;

    // Deleted contact ids seen, in arrival order.
    std::vector<std::string> deletedIds() const;
    // Added and updated contacts seen, in arrival order.
    std::vector<ycontacts::YContact> addedContacts() const;
    std::vector<ycontacts::YContact> updatedContacts() const;

    void countUpdate(const std::string& yuid, std::int64_t orgCount, std::int64_t nonOrgCount) override;
    void contactDataReset(const std::string& yuid) override;
    void contactsAdded(const std::string& yuid, bool isOrg, const std::vector<ycontacts::YContact>& contact) override;
    void downloadStarted(const std::string& yuid, const std::optional<std::string>& yoid, bool isInitial) override;
    void downloadComplete(const std::string& yuid, const std::optional<std::string>& yoid, double lastUpdateTime,
                          bool isInitial) override;
    void downloadFailed(const std::string& yuid, const std::optional<std::string>& yoid,
                        ycontacts::YContactError error) override;
    void contactsUpdated(const std::string& yuid, bool isOrg,
                         const std::vector<ycontacts::YContact>& contact) override;
    void contactsDeleted(const std::string& yuid, bool isOrg,
                         const std::vector<std::string>& deletedContactIds) override;

    explicit SyncWatcher(std::string yuid, ProgressHandler onProgress);

private:
    // Applies `change` under the lock when the notification is about our user, then reports progress.
    void record(const std::string& yuid, const std::function<void(SyncProgress&)>& change);

    const std::string yuid_;
    const ProgressHandler onProgress_;
    const std::chrono::steady_clock::time_point attachedAt_ = std::chrono::steady_clock::now();
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    SyncProgress progress_;
    std::uint64_t notifications_ = 0;
    // Kept only while small: enough for the demo's checks, never a whole initial download.
    std::vector<ycontacts::YContact> added_;
    std::vector<ycontacts::YContact> updated_;
    std::vector<std::string> deletedIds_;
};

}  // namespace ycontacts_cli

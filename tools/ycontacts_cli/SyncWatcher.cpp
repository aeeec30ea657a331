#include "ycontacts_cli/SyncWatcher.h"

#include "ycontacts_cli/Interrupt.h"

namespace ycontacts_cli {

namespace {

// Beyond this many, contacts seen are only counted.
constexpr std::size_t keptContactsLimit = 1000;

template <class T>
void keep(std::vector<T>& kept, const std::vector<T>& arrived) {
    for (const auto& item : arrived) {
        if (kept.size() >= keptContactsLimit) return;
        kept.push_back(item);
    }
}

}  // namespace

std::shared_ptr<SyncWatcher> SyncWatcher::attach(std::string yuid, ProgressHandler onProgress) {
    auto watcher = std::make_shared<SyncWatcher>(std::move(yuid), std::move(onProgress));
    ycontacts::YNotificationCenter::shared().addObserver<ycontacts::YContactsNotification>(watcher);
    return watcher;
}

SyncWatcher::SyncWatcher(std::string yuid, ProgressHandler onProgress)
    : yuid_(std::move(yuid)), onProgress_(std::move(onProgress)) {}

SyncWatcher::~SyncWatcher() {
    ycontacts::YNotificationCenter::shared().removeObserver<ycontacts::YContactsNotification>(this);
}

SyncWatcher::Outcome SyncWatcher::wait(std::chrono::milliseconds idleTimeout) {
    std::unique_lock lock(mutex_);
    auto lastSeen = notifications_;
    auto quietSince = std::chrono::steady_clock::now();
    while (!progress_.finished()) {
        if (Interrupt::requested()) return Outcome::interrupted;
        // Short slices, so that a signal is noticed within a tenth of a second.
        changed_.wait_for(lock, std::chrono::milliseconds(100));
        const auto now = std::chrono::steady_clock::now();
        if (notifications_ != lastSeen) {
            lastSeen = notifications_;
            quietSince = now;
        } else if (now - quietSince >= idleTimeout) {
            return Outcome::stalled;
        }
    }
    return progress_.completed ? Outcome::completed : Outcome::failed;
}

SyncProgress SyncWatcher::progress() const {
    std::lock_guard lock(mutex_);
    SyncProgress copy = progress_;
    copy.elapsedSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - attachedAt_).count();
    return copy;
}

std::vector<std::string> SyncWatcher::deletedIds() const {
    std::lock_guard lock(mutex_);
    return deletedIds_;
}

std::vector<ycontacts::YContact> SyncWatcher::addedContacts() const {
    std::lock_guard lock(mutex_);
    return added_;
}

std::vector<ycontacts::YContact> SyncWatcher::updatedContacts() const {
    std::lock_guard lock(mutex_);
    return updated_;
}

void SyncWatcher::record(const std::string& yuid, const std::function<void(SyncProgress&)>& change) {
    if (yuid != yuid_) return;
    {
        std::lock_guard lock(mutex_);
        change(progress_);
        ++notifications_;
    }
    changed_.notify_all();
    if (onProgress_) onProgress_(progress());
}

void SyncWatcher::countUpdate(const std::string& yuid, std::int64_t orgCount, std::int64_t nonOrgCount) {
    record(yuid, [&](SyncProgress& progress) { progress.stored = SyncTally{nonOrgCount, orgCount}; });
}

void SyncWatcher::contactDataReset(const std::string& yuid) {
    record(yuid, [](SyncProgress& progress) { progress.dataReset = true; });
}

void SyncWatcher::contactsAdded(const std::string& yuid, bool isOrg, const std::vector<ycontacts::YContact>& contact) {
    record(yuid, [&](SyncProgress& progress) {
        ++progress.pages;
        progress.added.add(isOrg, static_cast<std::int64_t>(contact.size()));
        keep(added_, contact);
    });
}

void SyncWatcher::downloadStarted(const std::string& yuid, const std::optional<std::string>&, bool isInitial) {
    record(yuid, [&](SyncProgress& progress) {
        progress.started = true;
        progress.initial = isInitial;
    });
}

void SyncWatcher::downloadComplete(const std::string& yuid, const std::optional<std::string>&, double lastUpdateTime,
                                   bool isInitial) {
    record(yuid, [&](SyncProgress& progress) {
        progress.initial = isInitial;
        progress.lastUpdateTime = lastUpdateTime;
        progress.completed = true;
    });
}

void SyncWatcher::downloadFailed(const std::string& yuid, const std::optional<std::string>&,
                                 ycontacts::YContactError error) {
    record(yuid, [&](SyncProgress& progress) { progress.error = error; });
}

void SyncWatcher::contactsUpdated(const std::string& yuid, bool isOrg,
                                  const std::vector<ycontacts::YContact>& contact) {
    record(yuid, [&](SyncProgress& progress) {
        progress.updated.add(isOrg, static_cast<std::int64_t>(contact.size()));
        keep(updated_, contact);
    });
}

void SyncWatcher::contactsDeleted(const std::string& yuid, bool isOrg,
                                  const std::vector<std::string>& deletedContactIds) {
    record(yuid, [&](SyncProgress& progress) {
        progress.deleted.add(isOrg, static_cast<std::int64_t>(deletedContactIds.size()));
        keep(deletedIds_, deletedContactIds);
    });
}

}  // namespace ycontacts_cli

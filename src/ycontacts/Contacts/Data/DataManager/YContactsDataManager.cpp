#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"

#include <algorithm>
#include <utility>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"

namespace ycontacts {

YContactsDataManager::YContactsDataManager(std::shared_ptr<YContactsDatabaseContract> database,
                                           std::shared_ptr<YContactsNetworkContract> network,
                                           std::shared_ptr<YContactsPreferenceContract> preference,
                                           std::shared_ptr<YContactsFileServiceContract> fileService,
                                           Intervals intervals, int batchFetchLimit)
    : contactsBatchFetchLimit(std::max(batchFetchLimit, minimumContactsBatchFetchLimit)),
      database_(std::move(database)),
      network_(std::move(network)),
      preference_(std::move(preference)),
      fileService_(std::move(fileService)),
      intervals_(intervals),
      timerOwner_(std::make_shared<SafeReadWrite<YContactsDataManager*>>("com.ycontacts.datamanager.owner", this)),
      queries_(std::make_shared<YContactsQueries>(
          database_, network_,
          [owner = timerOwner_] {
              // Posting to the queue is all the call does, so holding the owner's lock for it is short.
              owner->read([](YContactsDataManager* manager) {
                  if (manager) manager->restartInMemoryTimer();
              });
          },
          contactsBatchFetchLimit)),
      queue_("YContactsQueue") {
    // Blocks run only while queue_ lives, and queue_ goes first in destruction, so `this` is valid in them.
    // Timer actions reach the object through the owner box rather than a shared_ptr: a strong reference
    // taken on the queue's thread could be the last one, and the object would then be destroyed on the
    // thread its own queue must join.
    queue_.async([this] {
        syncTime_ = queue_.scheduleTimer(std::chrono::duration<double>(intervals_.syncTimeInterval), true,
                                         [owner = timerOwner_] {
                                             owner->read([](YContactsDataManager* manager) {
                                                 if (manager) manager->startScheduledSync();
                                             });
                                         });
    });
}

YContactsDataManager::~YContactsDataManager() { timerOwner_->setValue(nullptr); }

void YContactsDataManager::start(const std::string& yuid, const std::optional<std::string>& yoid) {
    recordStarted(yuid);
    recordYoid(yuid, yoid);
    if (wasInitialDownloadCompleted(yuid, yoid)) {
        syncContacts(yuid, yoid);
    } else {
        runInitialFetch(yuid, yoid);
    }
}

void YContactsDataManager::resetAndStart(const std::string& yuid, const std::optional<std::string>& yoid) {
    const bool marked = changeUser(yuid, [](UserState& user) { return !std::exchange(user.resetting, true); });
    if (!marked) return;
    removeUserData(yuid, false);
    notify([&](YContactsNotification& observer) { observer.contactDataReset(yuid); });
    updateContactCount(yuid);
    runInitialFetch(yuid, yoid);
}

void YContactsDataManager::removeAllData(const std::string& yuid) { removeUserData(yuid, true); }

void YContactsDataManager::removeUserData(const std::string& yuid, bool endsReset) {
    {
        // Waits for a page being written to finish; every later write of the running download is refused.
        YMutexLock writes(writeMutex_);
        changeUser(yuid, [endsReset](UserState& user) {
            user.syncing = false;
            user.started = false;
            ++user.removals;
            // The running download was a reset's, if any: the reset ends with it, before any step of the removal.
            if (endsReset) user.resetting = false;
        });
    }
    if (database_ && !database_->deleteAllDetails(yuid)) {
        Logger::shared().error("The stored contacts of " + yuid + " could not be removed");
    }
    if (network_) network_->cancelTasks(yuid);
    if (fileService_) fileService_->deleteAllImages(yuid);
    if (preference_) preference_->removeAllPreferences(yuid);
}

bool YContactsDataManager::wasInitialDownloadCompleted(const std::string& yuid,
                                                       const std::optional<std::string>& /*yoid*/) {
    if (!preference_) return false;
    return preference_->completeState(yuid, true) && preference_->completeState(yuid, false);
}

bool YContactsDataManager::isSyncInProgress(const std::string& yuid) {
    return readUser(yuid, [](const UserState& user) { return user.syncing; });
}

YContactsDataManager::UserState YContactsDataManager::userState(const std::string& yuid) const {
    return readUser(yuid, [](const UserState& user) { return user; });
}

std::optional<double> YContactsDataManager::lastUpdatedTime(const std::string& yuid) {
    if (!preference_) return std::nullopt;
    return preference_->lastUpdatedTime(yuid);
}

void YContactsDataManager::restartInMemoryTimer() {
    queue_.async([this] {
        if (destroyTimer_) destroyTimer_->invalidate();
        destroyTimer_ = queue_.scheduleTimer(std::chrono::duration<double>(intervals_.destroyInMemoryInterval), true,
                                             [owner = timerOwner_] {
                                                 owner->read([](YContactsDataManager* manager) {
                                                     if (manager) manager->destroyInMemory();
                                                 });
                                             });
    });
}

void YContactsDataManager::stopInMemoryTimer() {
    queue_.async([this] {
        if (destroyTimer_) destroyTimer_->invalidate();
        destroyTimer_.reset();
    });
}

void YContactsDataManager::destroyInMemory() {
    queries_->destroyInMemory();
    stopInMemoryTimer();
}

bool YContactsDataManager::markSyncing(const std::string& yuid) {
    return changeUser(yuid, [](UserState& user) { return !std::exchange(user.syncing, true); });
}

void YContactsDataManager::unmarkSyncing(const std::string& yuid) {
    changeUser(yuid, [](UserState& user) { user.syncing = false; });
}

double YContactsDataManager::millisecondsSince1970() {
    return std::chrono::duration<double, std::milli>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void YContactsDataManager::recordStarted(const std::string& yuid) {
    changeUser(yuid, [](UserState& user) { user.started = true; });
}

void YContactsDataManager::recordYoid(const std::string& yuid, const std::optional<std::string>& yoid) {
    changeUser(yuid, [&yoid](UserState& user) { user.yoid = yoid; });
}

std::optional<std::string> YContactsDataManager::recordedYoid(const std::string& yuid) const {
    return readUser(yuid, [](const UserState& user) { return user.yoid; });
}

std::uint64_t YContactsDataManager::removalCount(const std::string& yuid) const {
    return readUser(yuid, [](const UserState& user) { return user.removals; });
}

YContactsDataManager::DownloadWrite YContactsDataManager::writeForDownload(const std::string& yuid,
                                                                          std::uint64_t removals,
                                                                          const std::function<bool()>& write) {
    YMutexLock lock(writeMutex_);
    if (removalCount(yuid) != removals) return DownloadWrite::removed;
    return write() ? DownloadWrite::written : DownloadWrite::failed;
}

void YContactsDataManager::clearResetMarker(const std::string& yuid) {
    changeUser(yuid, [](UserState& user) { user.resetting = false; });
}

void YContactsDataManager::notify(const std::function<void(YContactsNotification&)>& notification) {
    YNotificationCenter::shared().post<YContactsNotification>(notification);
}

}  // namespace ycontacts

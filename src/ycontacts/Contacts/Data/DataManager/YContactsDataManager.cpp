#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"

namespace ycontacts {

namespace {

// A random (version 4) UUID in the usual upper-case 8-4-4-4-12 form.
std::string uuidString() {
    thread_local std::mt19937_64 generator{std::random_device{}()};
    std::array<std::uint8_t, 16> bytes{};
    for (std::size_t index = 0; index < bytes.size(); index += 8) {
        const std::uint64_t word = generator();
        for (std::size_t offset = 0; offset < 8; ++offset) {
            bytes[index + offset] = static_cast<std::uint8_t>(word >> (offset * 8));
        }
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    std::string text;
    text.reserve(36);
    for (std::size_t index = 0; index < bytes.size(); ++index) {
        if (index == 4 || index == 6 || index == 8 || index == 10) text += '-';
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", bytes[index]);
        text += digits;
    }
    return text;
}

std::string boxLabel() { return "com.ycontacts.datamanager.SafeReadWrite." + uuidString(); }

}  // namespace

YContactsDataManager::YContactsDataManager(std::shared_ptr<YContactsDatabaseContract> database,
                                           std::shared_ptr<YContactsNetworkContract> network,
                                           std::shared_ptr<YContactsPreferenceContract> preference,
                                           std::shared_ptr<YContactsFileServiceContract> fileService,
                                           Intervals intervals, int batchFetchLimit)
    : contactsBatchFetchLimit(std::max(batchFetchLimit, minimumContactsBatchFetchLimit)),
      noImgCache_(boxLabel()),
      syncingYuids_(boxLabel()),
      yuidYoidMap_(boxLabel()),
      resetingYuids_(boxLabel()),
      database_(std::move(database)),
      network_(std::move(network)),
      preference_(std::move(preference)),
      fileService_(std::move(fileService)),
      intervals_(intervals),
      startedYuids_(boxLabel()),
      removalCounts_(boxLabel()),
      timerOwner_(std::make_shared<SafeReadWrite<YContactsDataManager*>>(boxLabel(), this)),
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
    const bool marked = resetingYuids_.write([&](YuidList& yuids) {
        if (std::find(yuids.begin(), yuids.end(), yuid) != yuids.end()) return false;
        yuids.push_back(yuid);
        return true;
    });
    if (!marked) return;
    removeUserData(yuid, false);
    notify([&](YContactsNotification& observer) { observer.contactDataReset(yuid); });
    updateContactCount(yuid);
    runInitialFetch(yuid, yoid);
}

void YContactsDataManager::removeAllData(const std::string& yuid) { removeUserData(yuid, true); }

void YContactsDataManager::removeUserData(const std::string& yuid, bool endsReset) {
    unmarkSyncing(yuid);
    startedYuids_.write([&](YuidList& yuids) { std::erase(yuids, yuid); });
    {
        // Waits for a page being written to finish; every later write of the running download is refused.
        std::lock_guard lock(downloadWrites_);
        removalCounts_.write([&](std::map<std::string, std::uint64_t>& counts) { ++counts[yuid]; });
        // The running download was a reset's, if any: the reset ends with it, before any step of the removal.
        if (endsReset) clearResetMarker(yuid);
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
    return syncingYuids_.read(
        [&](const YuidList& yuids) { return std::find(yuids.begin(), yuids.end(), yuid) != yuids.end(); });
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
    return syncingYuids_.write([&](YuidList& yuids) {
        if (std::find(yuids.begin(), yuids.end(), yuid) != yuids.end()) return false;
        yuids.push_back(yuid);
        return true;
    });
}

void YContactsDataManager::unmarkSyncing(const std::string& yuid) {
    syncingYuids_.write([&](YuidList& yuids) {
        if (const auto found = std::find(yuids.begin(), yuids.end(), yuid); found != yuids.end()) yuids.erase(found);
    });
}

double YContactsDataManager::millisecondsSince1970() {
    return std::chrono::duration<double, std::milli>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void YContactsDataManager::recordStarted(const std::string& yuid) {
    startedYuids_.write([&](YuidList& yuids) {
        if (std::find(yuids.begin(), yuids.end(), yuid) == yuids.end()) yuids.push_back(yuid);
    });
}

void YContactsDataManager::recordYoid(const std::string& yuid, const std::optional<std::string>& yoid) {
    yuidYoidMap_.write([&](YuidYoidMap& map) {
        if (yoid) {
            map[yuid] = *yoid;
        } else {
            map.erase(yuid);
        }
    });
}

std::optional<std::string> YContactsDataManager::recordedYoid(const std::string& yuid) const {
    return yuidYoidMap_.read([&](const YuidYoidMap& map) -> std::optional<std::string> {
        const auto found = map.find(yuid);
        if (found == map.end()) return std::nullopt;
        return found->second;
    });
}

std::uint64_t YContactsDataManager::removalCount(const std::string& yuid) const {
    return removalCounts_.read([&](const std::map<std::string, std::uint64_t>& counts) -> std::uint64_t {
        const auto found = counts.find(yuid);
        return found == counts.end() ? 0 : found->second;
    });
}

YContactsDataManager::DownloadWrite YContactsDataManager::writeForDownload(const std::string& yuid,
                                                                          std::uint64_t removals,
                                                                          const std::function<bool()>& write) {
    std::lock_guard lock(downloadWrites_);
    if (removalCount(yuid) != removals) return DownloadWrite::removed;
    return write() ? DownloadWrite::written : DownloadWrite::failed;
}

void YContactsDataManager::clearResetMarker(const std::string& yuid) {
    resetingYuids_.write([&](YuidList& yuids) { std::erase(yuids, yuid); });
}

void YContactsDataManager::notify(const std::function<void(YContactsNotification&)>& notification) {
    YNotificationCenter::shared().post<YContactsNotification>(notification);
}

}  // namespace ycontacts

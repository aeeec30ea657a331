// The data manager's sync engine: the initial download, incremental syncs, the page loop and the sync timer.

#include <algorithm>
#include <limits>
#include <sstream>

#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace {

std::string text(const std::optional<std::string>& value) { return value ? *value : "nil"; }

std::string text(bool value) { return value ? "true" : "false"; }

std::string text(std::optional<double> time) {
    if (!time) return "nil";
    std::ostringstream stream;
    stream.precision(17);
    stream << *time;
    return stream.str();
}

// The loop ends only when the server has no further page and the page is not short of the limit by
// 1 to 49 contacts: such a page is taken as cut short, and the next one is asked for all the same.
bool isLastPage(const YContactNetworkResponse& response, int limit) {
    const auto shortfall = static_cast<std::int64_t>(limit) - response.count - 1;
    return !response.hasMore && static_cast<std::uint32_t>(shortfall) > 48;
}

}  // namespace

void YContactsDataManager::runInitialFetch(const std::string& yuid, const std::optional<std::string>& yoid) {
    recordStarted(yuid);
    if (!markSyncing(yuid)) return;
    // Read before anything of the download is: a removal from here on ends this download.
    const auto removals = removalCount(yuid);
    Logger::shared().info("Initial Fetch started " + yuid + " " + text(yoid));
    notify([&](YContactsNotification& observer) { observer.downloadStarted(yuid, yoid, true); });
    recordYoid(yuid, yoid);
    if (wasInitialDownloadCompleted(yuid, yoid)) {
        syncContacts(yuid, yoid);
        return;
    }
    initialDownload(
        yuid, std::nullopt, false,
        [weak = weak_from_this(), yuid, yoid, removals] {
            const auto self = weak.lock();
            if (!self) return;
            if (yoid) {
                self->initialDownload(
                    yuid, yoid, true,
                    [weak, yuid] {
                        if (const auto owner = weak.lock()) owner->clearResetMarker(yuid);
                    },
                    removals);
            } else {
                Logger::shared().info("No yoid found for user " + yuid);
                if (self->initialDownloadComplete(yuid, true, removals)) self->clearResetMarker(yuid);
            }
        },
        removals);
}

void YContactsDataManager::initialDownload(const std::string& yuid, const std::optional<std::string>& yoid,
                                           bool isOrg, CompletionHandler completionHandler, std::uint64_t removals) {
    if (!database_ || (preference_ && preference_->completeState(yuid, isOrg))) {
        if (completionHandler) completionHandler();
        return;
    }
    const auto stored = preference_ ? preference_->startIndex(yuid, isOrg) : 1;
    const int startIndex = static_cast<int>(std::clamp<std::int64_t>(stored, 1, std::numeric_limits<int>::max()));
    auto stepHandler = [weak = weak_from_this(), yuid, isOrg, removals](int nextStartIndex) {
        const auto self = weak.lock();
        if (!self || !self->preference_) return;
        self->writeForDownload(yuid, removals, [&] {
            self->preference_->setStartIndex(yuid, nextStartIndex, isOrg);
            return true;
        });
    };
    auto totalCompletionHandler = [weak = weak_from_this(), yuid, isOrg, removals,
                                   completionHandler = std::move(completionHandler)] {
        const auto self = weak.lock();
        if (!self) return;
        if (self->initialDownloadComplete(yuid, isOrg, removals) && completionHandler) completionHandler();
    };
    downloadContacts(yuid, yoid, isOrg, startIndex, contactsBatchFetchLimit, std::nullopt, std::move(stepHandler),
                     std::move(totalCompletionHandler), removals);
}

void YContactsDataManager::syncContacts(const std::string& yuid, const std::optional<std::string>& yoid) {
    recordStarted(yuid);
    if (!wasInitialDownloadCompleted(yuid, yoid)) {
        runInitialFetch(yuid, yoid);
        return;
    }
    Logger::shared().info("Sync contacts started " + yuid + " " + text(yoid));
    if (!markSyncing(yuid)) return;
    const auto removals = removalCount(yuid);
    notify([&](YContactsNotification& observer) { observer.downloadStarted(yuid, yoid, false); });
    const auto syncTime = lastUpdatedTime(yuid);
    downloadContacts(
        yuid, std::nullopt, false, 1, contactsBatchFetchLimit, syncTime, nullptr,
        [weak = weak_from_this(), yuid, yoid, syncTime, removals] {
            const auto self = weak.lock();
            if (!self) return;
            if (yoid) {
                self->downloadContacts(
                    yuid, yoid, true, 1, self->contactsBatchFetchLimit, syncTime, nullptr,
                    [weak, yuid, yoid, removals] {
                        if (const auto owner = weak.lock()) owner->finishSync(yuid, yoid, removals);
                    },
                    removals);
            } else {
                Logger::shared().info("No yoid found for user " + yuid);
                self->finishSync(yuid, yoid, removals);
            }
        },
        removals);
}

void YContactsDataManager::downloadContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                            bool isOrg, int startIndex, int limit, std::optional<double> syncTime,
                                            StepHandler stepHandler, CompletionHandler totalCompletionHandler,
                                            std::uint64_t removals) {
    Logger::shared().info("Download contacts yuid: " + yuid + " yoid: " + text(yoid) + " isOrg: " + text(isOrg) +
                          " startIndex: " + std::to_string(startIndex) + " limit: " + std::to_string(limit) +
                          " syncTime: " + text(syncTime));
    if (removalCount(yuid) != removals) {
        Logger::shared().info("Download ended by removing the data of " + yuid);
        return;
    }
    if (!network_) {
        downloadFailed(yuid, YContactError::networkFailure);
        return;
    }
    network_->getContacts(
        yuid, yoid, isOrg, startIndex, limit, syncTime,
        [weak = weak_from_this(), removals, yuid, yoid, isOrg, startIndex, limit, syncTime,
         stepHandler = std::move(stepHandler),
         totalCompletionHandler = std::move(totalCompletionHandler)](std::optional<YContactNetworkResponse> response) {
            const auto self = weak.lock();
            if (!self) return;
            if (self->removalCount(yuid) != removals) {
                Logger::shared().info("Dropping a page of a download cancelled by removing the data of " + yuid);
                return;
            }
            self->pageArrived(std::move(response), yuid, yoid, isOrg, startIndex, limit, syncTime, stepHandler,
                              totalCompletionHandler, removals);
        });
}

void YContactsDataManager::pageArrived(std::optional<YContactNetworkResponse> response, const std::string& yuid,
                                       const std::optional<std::string>& yoid, bool isOrg, int startIndex,
                                       int limit, std::optional<double> syncTime, const StepHandler& stepHandler,
                                       const CompletionHandler& totalCompletionHandler, std::uint64_t removals) {
    if (!response || response->error) {
        downloadFailed(yuid, response ? *response->error : YContactError::unknownError);
        return;
    }
    switch (process(*response, yuid, isOrg, removals)) {
        case DownloadWrite::written:
            break;
        case DownloadWrite::removed:
            Logger::shared().info("Download ended by removing the data of " + yuid + " while a page was stored");
            return;
        case DownloadWrite::failed:
            // As when the page could not be fetched: nothing of it is announced or counted as progress, and
            // the next download asks for it again.
            Logger::shared().error("Download contacts failed yuid: " + yuid + " isOrg: " + text(isOrg) +
                                   " page: " + std::to_string(startIndex) + ": the store did not keep the page");
            downloadFailed(yuid, YContactError::storageError);
            return;
    }
    if (isLastPage(*response, limit)) {
        Logger::shared().info("Contacts fetch complete yuid: " + yuid + " yoid: " + text(yoid) +
                              " isOrg: " + text(isOrg) + " final index: " + std::to_string(startIndex) +
                              " syncTime: " + text(syncTime));
        if (totalCompletionHandler) totalCompletionHandler();
        return;
    }
    if (stepHandler) stepHandler(startIndex + 1);
    downloadContacts(yuid, yoid, isOrg, startIndex + 1, limit, syncTime, stepHandler, totalCompletionHandler,
                     removals);
}

void YContactsDataManager::downloadFailed(const std::string& yuid, YContactError error) {
    Logger::shared().warning("Download contacts failed yuid: " + yuid + " error: " +
                             std::string(toRawValue(error)));
    unmarkSyncing(yuid);
    clearResetMarker(yuid);
    const auto yoid = recordedYoid(yuid);
    notify([&](YContactsNotification& observer) { observer.downloadFailed(yuid, yoid, error); });
}

YContactsDataManager::DownloadWrite YContactsDataManager::process(const YContactNetworkResponse& response,
                                                                  const std::string& yuid, bool isOrg,
                                                                  std::uint64_t removals) {
    // The whole page is stored before any of it is announced, so a page the store refused is never announced.
    const auto written = writeForDownload(yuid, removals, [&] { return storePage(response, yuid); });
    if (written != DownloadWrite::written) return written;
    if (response.newContacts) {
        notify([&](YContactsNotification& observer) { observer.contactsAdded(yuid, isOrg, *response.newContacts); });
    }
    if (response.updatedContacts) {
        notify([&](YContactsNotification& observer) {
            observer.contactsUpdated(yuid, isOrg, *response.updatedContacts);
        });
    }
    if (response.deletedContacts) {
        notify([&](YContactsNotification& observer) {
            observer.contactsDeleted(yuid, isOrg, *response.deletedContacts);
        });
    }
    updateContactCount(yuid);
    return written;
}

bool YContactsDataManager::storePage(const YContactNetworkResponse& response, const std::string& yuid) {
    if (!database_) return true;
    if (response.newContacts && !database_->save(yuid, *response.newContacts)) return false;
    if (response.updatedContacts) {
        // Known contacts are updated; ones the store has never seen are saved, so none is lost.
        std::vector<YContact> known;
        std::vector<YContact> unknown;
        for (const auto& contact : *response.updatedContacts) {
            (database_->getContactByContactId(yuid, contact.contactId) ? known : unknown).push_back(contact);
        }
        if (!known.empty() && !database_->updateContacts(yuid, known)) return false;
        if (!unknown.empty()) {
            Logger::shared().info("Saving updated contacts not stored yet for " + yuid + ": " +
                                  std::to_string(unknown.size()));
            if (!database_->save(yuid, unknown)) return false;
        }
    }
    return !response.deletedContacts || database_->deleteContacts(yuid, *response.deletedContacts);
}

bool YContactsDataManager::initialDownloadComplete(const std::string& yuid, bool isOrg, std::uint64_t removals) {
    Logger::shared().info("Initial download complete yuid: " + yuid + " isOrg: " + text(isOrg));
    const auto marked = writeForDownload(yuid, removals, [&] {
        if (preference_) preference_->setCompleteState(yuid, true, isOrg);
        return true;
    });
    if (marked != DownloadWrite::written) return false;
    updateContactCount(yuid);
    std::optional<double> time;
    const auto current = writeForDownload(yuid, removals, [&] {
        if (preference_ && preference_->completeState(yuid, true) && preference_->completeState(yuid, false)) {
            time = updateSyncTime(yuid);
        }
        return true;
    });
    if (current != DownloadWrite::written) return false;
    if (time) {
        const auto yoid = recordedYoid(yuid);
        notify([&](YContactsNotification& observer) { observer.downloadComplete(yuid, yoid, *time, true); });
    }
    return true;
}

double YContactsDataManager::updateSyncTime(const std::string& yuid) {
    const double time = millisecondsSince1970();
    if (preference_) preference_->setLastUpdatedTime(yuid, time);
    Logger::shared().info("Sync contacts complete");
    unmarkSyncing(yuid);
    return time;
}

void YContactsDataManager::finishSync(const std::string& yuid, const std::optional<std::string>& yoid,
                                      std::uint64_t removals) {
    double time = 0;
    const auto written = writeForDownload(yuid, removals, [&] {
        time = updateSyncTime(yuid);
        return true;
    });
    if (written != DownloadWrite::written) return;
    notify([&](YContactsNotification& observer) { observer.downloadComplete(yuid, yoid, time, false); });
}

void YContactsDataManager::updateContactCount(const std::string& yuid) {
    Logger::shared().info("update contact count for " + yuid);
    if (!database_) return;
    const auto counts = database_->getContactCount(yuid);
    if (!counts) return;
    notify([&](YContactsNotification& observer) { observer.countUpdate(yuid, counts->first, counts->second); });
}

void YContactsDataManager::startScheduledSync() {
    std::vector<std::pair<std::string, std::optional<std::string>>> started;
    {
        YMutexLock lock(stateMutex_);
        for (const auto& [yuid, user] : users_) {
            if (user.started) started.emplace_back(yuid, user.yoid);
        }
    }
    Logger::shared().info("Scheduled sync for users: " + std::to_string(started.size()));
    for (const auto& [yuid, yoid] : started) syncContacts(yuid, yoid);
}

void YContactsDataManager::getUsageCount(const std::string& yuid, UsageCountCallback callback) {
    if (!network_) {
        if (callback) callback(std::nullopt);
        return;
    }
    network_->getContactUsageCount(
        yuid, [weak = weak_from_this(), yuid,
               callback = std::move(callback)](std::optional<YContactUsageCountNetworkResponse> response) {
            const auto self = weak.lock();
            if (!self || !response || response->error || !response->usageCountDetails) {
                if (self) Logger::shared().warning("Usage count not available for " + yuid);
                if (callback) callback(std::nullopt);
                return;
            }
            const auto& usageCountMap = *response->usageCountDetails;
            if (self->database_ && !self->database_->updateContactsUsageCount(yuid, usageCountMap)) {
                Logger::shared().error("Usage counts of " + yuid + " could not be stored");
                if (callback) callback(std::nullopt);
                return;
            }
            notify([&](YContactsNotification& observer) { observer.contactsUsageCountUpdated(yuid, usageCountMap); });
            if (callback) callback(usageCountMap);
        });
}

}  // namespace ycontacts

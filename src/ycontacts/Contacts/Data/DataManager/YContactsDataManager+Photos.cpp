// The data manager's photo operation: answer from the file cache while the copy is fresh, otherwise revalidate
// it with the server, and remember for a while that a contact has no photo.

#include <chrono>

#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace {

using Clock = std::chrono::system_clock;

const auto refetchInterval = std::chrono::duration_cast<Clock::duration>(
    std::chrono::duration<double, std::ratio<60>>(YContactsDataManager::refetchIntervalInMins));

bool given(const std::optional<std::string>& text) { return text && !text->empty(); }

// A copy dated in the future (a server clock ahead of ours) counts as fresh until that date plus the interval.
bool youngerThanInterval(Clock::time_point date) { return Clock::now() - date < refetchInterval; }

}  // namespace

std::optional<YContactsDataManager::PhotoIdentity> YContactsDataManager::photoIdentity(
    const YGetContactImageRequest& request) {
    if (given(request.contactYuid))
        return PhotoIdentity{*request.contactYuid, request.contactType, false, request.contactId};
    std::optional<YContact> stored;
    if (database_ && given(request.contactId)) {
        stored = database_->getContactByContactId(request.yuid, *request.contactId);
    } else if (database_ && given(request.emailId)) {
        stored = database_->getContactByEmailId(request.yuid, *request.emailId, false);
    }
    if (stored && stored->type == YContactType::user && given(stored->contactYuid))
        return PhotoIdentity{*stored->contactYuid, YContactType::user, stored->isOrg, stored->contactId};
    if (stored) return PhotoIdentity{stored->contactId, std::nullopt, stored->isOrg, stored->contactId};
    // A contact id the store does not know is still worth asking the server for.
    if (given(request.contactId)) return PhotoIdentity{*request.contactId, std::nullopt, false, request.contactId};
    return std::nullopt;
}

bool YContactsDataManager::recentlyWithoutPhoto(const std::string& yuid, const std::string& identifier) const {
    return readUser(yuid, [&](const UserState& user) {
        const auto found = user.noImgCache.find(identifier);
        return found != user.noImgCache.end() && youngerThanInterval(found->second);
    });
}

void YContactsDataManager::answerCachedPhoto(const std::string& yuid, const PhotoIdentity& photo, bool isThumbnail,
                                             const ImageHandler& handler) {
    std::optional<std::vector<std::uint8_t>> data;
    std::optional<std::string> path;
    if (fileService_) {
        auto file = fileService_->getContactImage(yuid, photo.identifier, isThumbnail);
        data = std::move(file.first);
        if (data) path = std::move(file.second);
    }
    if (handler) handler(std::move(data), std::move(path), photo.contactId);
}

void YContactsDataManager::getContactImage(const YGetContactImageRequest& request, ImageHandler handler) {
    const std::string& yuid = request.yuid;
    const bool isThumbnail = request.isThumbnail;
    const auto photo = photoIdentity(request);
    if (!photo) {
        Logger::shared().warning("No contact to fetch a photo for; yuid: " + yuid);
        if (handler) handler(std::nullopt, std::nullopt, request.contactId);
        return;
    }
    const auto cachedDate =
        fileService_ ? fileService_->getModifiedDate(yuid, photo->identifier, isThumbnail) : std::nullopt;
    const RequestType type = request.requestType;
    if (type == RequestType::local) return answerCachedPhoto(yuid, *photo, isThumbnail, handler);
    if (type != RequestType::server) {
        if (recentlyWithoutPhoto(yuid, photo->identifier)) {
            if (handler) handler(std::nullopt, std::nullopt, photo->contactId);
            return;
        }
        if (cachedDate && youngerThanInterval(*cachedDate))
            return answerCachedPhoto(yuid, *photo, isThumbnail, handler);
    }
    if (!network_) {
        Logger::shared().warning("No network service; answering the cached photo, if any, of " + photo->identifier);
        return answerCachedPhoto(yuid, *photo, isThumbnail, handler);
    }

    std::weak_ptr<YContactsDataManager> weakSelf = weak_from_this();
    auto arrived = [weakSelf, yuid, photo = *photo, isThumbnail, removals = removalCount(yuid),
                    handler](std::shared_ptr<const YContactImageNetworkResponse> response) {
        auto self = weakSelf.lock();
        if (!self || !response) {
            if (handler) handler(std::nullopt, std::nullopt, photo.contactId);
            return;
        }
        self->photoArrived(yuid, photo, isThumbnail, removals, *response, handler);
    };
    if (photo->yuidType) {
        network_->getContactImage(yuid, photo->identifier, isThumbnail, cachedDate, request.metaData, *photo->yuidType,
                                  std::move(arrived));
    } else {
        network_->getContactImage(yuid, photo->identifier, photo->isOrg, isThumbnail, request.metaData,
                                  std::move(arrived));
    }
}

void YContactsDataManager::photoArrived(const std::string& yuid, const PhotoIdentity& photo, bool isThumbnail,
                                        std::uint64_t removals, const YContactImageNetworkResponse& response,
                                        const ImageHandler& handler) {
    const std::string& id = photo.identifier;
    const Clock::time_point date = response.serverDate.value_or(Clock::now());
    const bool emptyImage =
        response.imageStatus == YContactImageStatus::newImage && (!response.imageData || response.imageData->empty());
    if (response.error || emptyImage) {
        Logger::shared().warning("Photo of " + id + " could not be fetched (" +
                                 (response.error ? std::string(toRawValue(*response.error)) : "empty body") +
                                 "); answering the cached copy, if any");
        return answerCachedPhoto(yuid, photo, isThumbnail, handler);
    }
    if (!fileService_) {
        if (handler) handler(response.imageData, std::nullopt, photo.contactId);
        return;
    }
    // File changes wait for a removal of the user's data in progress, and are skipped once one happened.
    switch (response.imageStatus) {
        case YContactImageStatus::newImage: {
            std::optional<std::string> path;
            writeForDownload(yuid, removals, [&] {
                path = fileService_->saveContactImage(yuid, id, *response.imageData, isThumbnail);
                fileService_->updateModifiedDate(yuid, id, isThumbnail, date);
                return true;
            });
            changeUser(yuid, [&](UserState& user) { user.noImgCache.erase(id); });
            if (handler) handler(response.imageData, std::move(path), photo.contactId);
            return;
        }
        case YContactImageStatus::notModified:
            // The copy is current as of the server's date: it stays fresh for another interval.
            writeForDownload(yuid, removals, [&] {
                if (fileService_->getModifiedDate(yuid, id, isThumbnail))
                    fileService_->updateModifiedDate(yuid, id, isThumbnail, date);
                return true;
            });
            return answerCachedPhoto(yuid, photo, isThumbnail, handler);
        case YContactImageStatus::noContent:
            changeUser(yuid, [&](UserState& user) { user.noImgCache[id] = Clock::now(); });
            writeForDownload(yuid, removals, [&] {
                if (fileService_->getModifiedDate(yuid, id, true) || fileService_->getModifiedDate(yuid, id, false))
                    fileService_->deleteContactImage(yuid, id);
                return true;
            });
            if (handler) handler(std::nullopt, std::nullopt, photo.contactId);
            return;
    }
}

}  // namespace ycontacts

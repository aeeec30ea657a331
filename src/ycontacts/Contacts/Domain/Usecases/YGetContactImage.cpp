#include "ycontacts/Contacts/Domain/Usecases/YGetContactImage.h"

#include <utility>

namespace ycontacts {

YGetContactImage::YGetContactImage(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

std::shared_ptr<YGetContactImage> YGetContactImage::copy() const {
    return std::make_shared<YGetContactImage>(dataManager);
}

void YGetContactImage::run(const YGetContactImageRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetContactImage has no data manager; dropped the request of " + request.yuid);
        return;
    }
    dataManager->getContactImage(
        request.yuid, request.contactYuid, request.emailId, request.contactId, request.isThumbnail, request.metaData,
        request.contactType,
        [this, weak = weakSelf(), callback = std::move(callback)](std::optional<std::vector<std::uint8_t>> data,
                                                                  std::optional<std::string> filePath,
                                                                  std::optional<std::string> contactId) {
            const auto alive = weak.lock();
            if (!alive) return;
            YGetContactImageResponse response;
            response.contactImageData = std::move(data);
            response.filePath = std::move(filePath);
            response.contactId = std::move(contactId);
            invoke(callback, response);
        });
}

}  // namespace ycontacts

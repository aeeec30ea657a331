#include "ycontacts/Contacts/Domain/Usecases/YGetContactImage.h"

#include <utility>

namespace ycontacts {

YGetContactImage::YGetContactImage(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

std::shared_ptr<YGetContactImage> YGetContactImage::copy() const {
    return std::make_shared<YGetContactImage>(dataManager);
}

void YGetContactImage::run(const YGetContactImageRequest& request, Callback callback) {
    askAndDeliver(
        "YGetContactImage", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) { manager.getContactImage(request, std::move(reply)); },
        [](std::optional<std::vector<std::uint8_t>> data, std::optional<std::string> filePath,
           std::optional<std::string> contactId) {
            YGetContactImageResponse response;
            response.contactImageData = std::move(data);
            response.filePath = std::move(filePath);
            response.contactId = std::move(contactId);
            return response;
        });
}

}  // namespace ycontacts

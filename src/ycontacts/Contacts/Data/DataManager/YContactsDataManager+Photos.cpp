// The data manager's photo operation. Photo retrieval (file cache, server revalidation) is not in this build.

#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

void YContactsDataManager::getContactImage(const YGetContactImageRequest& request, ImageHandler handler) {
    Logger::shared().warning("Contact photo retrieval is not available in this build; yuid: " + request.yuid +
                             " contactId: " + request.contactId.value_or("nil"));
    if (handler) handler(std::nullopt, std::nullopt, request.contactId);
}

}  // namespace ycontacts

// The data manager's photo operation. Photo retrieval (file cache, server revalidation) is not in this build.

#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

void YContactsDataManager::getContactImage(const std::string& yuid, const std::optional<std::string>& /*contactYuid*/,
                                           const std::optional<std::string>& /*emailId*/,
                                           const std::optional<std::string>& contactId, bool /*isThumbnail*/,
                                           const std::optional<YActivityMetaData>& /*metaData*/,
                                           YContactType /*contactType*/, ImageHandler handler) {
    Logger::shared().warning("Contact photo retrieval is not available in this build; yuid: " + yuid +
                             " contactId: " + (contactId ? *contactId : "nil"));
    if (handler) handler(std::nullopt, std::nullopt, contactId);
}

}  // namespace ycontacts

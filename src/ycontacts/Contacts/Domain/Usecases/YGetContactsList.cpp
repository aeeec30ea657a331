#include "ycontacts/Contacts/Domain/Usecases/YGetContactsList.h"

#include <utility>

namespace ycontacts {

YGetContactsList::YGetContactsList(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetContactsList::run(const YGetContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetContactsList has no data manager; dropped the request of " + request.yuid);
        return;
    }
    dataManager->getContactsList(
        request.yuid, request.yoid, request.searchStr, request.from, request.limit, request.isOrg, request.requestType,
        [this, weak = weakSelf(), callback = std::move(callback)](std::optional<std::vector<YContact>> contacts) {
            const auto alive = weak.lock();
            if (!alive) return;
            YGetContactsResponse response;
            response.contacts = std::move(contacts);
            invoke(callback, response);
        });
}

}  // namespace ycontacts

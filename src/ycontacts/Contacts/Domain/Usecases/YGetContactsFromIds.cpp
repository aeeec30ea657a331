#include "ycontacts/Contacts/Domain/Usecases/YGetContactsFromIds.h"

#include <utility>

namespace ycontacts {

YGetContactsFromIds::YGetContactsFromIds(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetContactsFromIds::run(const YGetContactsFromIdsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetContactsFromIds has no data manager; dropped the request of " + request.yuid);
        return;
    }
    dataManager->getContactsFromIds(
        request.yuid, request.contactIds, request.emailIds, request.contactYuids, request.isOrg, request.requestType,
        [this, weak = weakSelf(), callback = std::move(callback)](std::optional<std::vector<YContact>> contacts) {
            const auto alive = weak.lock();
            if (!alive) return;
            YGetContactsResponse response;
            response.contacts = std::move(contacts);
            invoke(callback, response);
        });
}

}  // namespace ycontacts

#include "ycontacts/Contacts/Domain/Usecases/YGetContacts.h"

#include <utility>

namespace ycontacts {

YGetContacts::YGetContacts(std::shared_ptr<YContactsDataManagerContract> manager) : dataManager(std::move(manager)) {}

void YGetContacts::run(const YGetContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetContacts has no data manager; dropped the request of " + request.yuid);
        return;
    }
    dataManager->getContacts(
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

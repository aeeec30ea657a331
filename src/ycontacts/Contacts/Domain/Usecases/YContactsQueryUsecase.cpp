#include "ycontacts/Contacts/Domain/Usecases/YContactsQueryUsecase.h"

#include <string>
#include <utility>

namespace ycontacts {

YContactsQueryUsecase::YContactsQueryUsecase(std::shared_ptr<YContactsDataManagerContract> manager, const char* name,
                                             Query query)
    : dataManager(std::move(manager)), name_(name), query_(query) {}

void YContactsQueryUsecase::run(const YGetContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning(std::string(name_) + " has no data manager; dropped the request of " + request.yuid);
        return;
    }
    ((*dataManager).*query_)(
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

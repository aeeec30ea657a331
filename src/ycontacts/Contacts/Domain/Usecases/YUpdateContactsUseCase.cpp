#include "ycontacts/Contacts/Domain/Usecases/YUpdateContactsUseCase.h"

#include <utility>

namespace ycontacts {

YUpdateContactsUseCase::YUpdateContactsUseCase(std::shared_ptr<YContactsUpdateDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YUpdateContactsUseCase::run(const YUpdateContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YUpdateContactsUseCase has no data manager; dropped the request of " +
                                 request.yuid);
        return;
    }
    dataManager->updateContact(
        request.yuid, request.contacts, request.isOrg, request.source, request.format,
        [this, weak = weakSelf(), callback = std::move(callback)](
            std::optional<std::string> contactId, std::optional<YUpdateContactNetworkResponse> answer) {
            const auto alive = weak.lock();
            if (!alive) return;
            auto title = answer ? std::move(answer->successResponse) : std::nullopt;
            invoke(callback, YUpdateContactsResponse(std::move(contactId), std::move(title)));
        });
}

}  // namespace ycontacts

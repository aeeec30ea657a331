#include "ycontacts/Contacts/Domain/Usecases/YDeleteContactsUseCase.h"

#include <utility>

namespace ycontacts {

YDeleteContactsUseCase::YDeleteContactsUseCase(std::shared_ptr<YContactsUpdateDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YDeleteContactsUseCase::run(const YDeleteContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YDeleteContactsUseCase has no data manager; dropped the request of " +
                                 request.yuid);
        return;
    }
    dataManager->deleteContact(
        request.yuid, request.contactId, request.isOrg,
        [this, weak = weakSelf(), callback = std::move(callback)](
            std::optional<std::string> contactId, std::optional<YUpdateContactNetworkResponse> answer) {
            const auto alive = weak.lock();
            if (!alive) return;
            auto title = answer ? std::move(answer->successResponse) : std::nullopt;
            // The response's id is plain text: an answer without an id gives an empty one.
            invoke(callback, YDeleteContactsResponse(std::move(contactId).value_or(std::string{}), std::move(title)));
        });
}

}  // namespace ycontacts

#include "ycontacts/Contacts/Domain/Usecases/YUpdateContactsUseCase.h"

#include <utility>

namespace ycontacts {

YUpdateContactsUseCase::YUpdateContactsUseCase(std::shared_ptr<YContactsUpdateDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YUpdateContactsUseCase::run(const YUpdateContactsRequest& request, Callback callback) {
    askAndDeliver(
        "YUpdateContactsUseCase", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) {
            manager.updateContact(request.yuid, request.contacts, request.isOrg, request.source, request.format,
                                  std::move(reply));
        },
        [](std::optional<std::string> contactId, std::optional<YUpdateContactNetworkResponse> answer) {
            auto title = answer ? std::move(answer->successResponse) : std::nullopt;
            return YUpdateContactsResponse(std::move(contactId), std::move(title));
        });
}

}  // namespace ycontacts

#include "ycontacts/Contacts/Domain/Usecases/YDeleteContactsUseCase.h"

#include <utility>

namespace ycontacts {

YDeleteContactsUseCase::YDeleteContactsUseCase(std::shared_ptr<YContactsUpdateDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YDeleteContactsUseCase::run(const YDeleteContactsRequest& request, Callback callback) {
    askAndDeliver(
        "YDeleteContactsUseCase", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) {
            manager.deleteContact(request.yuid, request.contactId, request.isOrg, std::move(reply));
        },
        [](std::optional<std::string> contactId, std::optional<YUpdateContactNetworkResponse> answer) {
            auto title = answer ? std::move(answer->successResponse) : std::nullopt;
            // The response's id is plain text: an answer without an id gives an empty one.
            return YDeleteContactsResponse(std::move(contactId).value_or(std::string{}), std::move(title));
        });
}

}  // namespace ycontacts

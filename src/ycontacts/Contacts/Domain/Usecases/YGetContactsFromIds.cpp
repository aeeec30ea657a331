#include "ycontacts/Contacts/Domain/Usecases/YGetContactsFromIds.h"

#include <utility>

namespace ycontacts {

YGetContactsFromIds::YGetContactsFromIds(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetContactsFromIds::run(const YGetContactsFromIdsRequest& request, Callback callback) {
    askAndDeliver(
        "YGetContactsFromIds", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) { manager.getContactsFromIds(request, std::move(reply)); },
        [](std::optional<std::vector<YContact>> contacts) { return YGetContactsResponse(std::move(contacts)); });
}

}  // namespace ycontacts

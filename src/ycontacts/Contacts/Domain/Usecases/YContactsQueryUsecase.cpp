#include "ycontacts/Contacts/Domain/Usecases/YContactsQueryUsecase.h"

#include <string>
#include <utility>

namespace ycontacts {

YContactsQueryUsecase::YContactsQueryUsecase(std::shared_ptr<YContactsDataManagerContract> manager, const char* name,
                                             Query query)
    : dataManager(std::move(manager)), name_(name), query_(query) {}

void YContactsQueryUsecase::run(const YGetContactsRequest& request, Callback callback) {
    askAndDeliver(
        name_, dataManager, request, std::move(callback),
        [&](YContactsDataManagerContract& manager, auto reply) {
            (manager.*query_)(request.query(), std::move(reply));
        },
        [](std::optional<std::vector<YContact>> contacts) { return YGetContactsResponse(std::move(contacts)); });
}

}  // namespace ycontacts

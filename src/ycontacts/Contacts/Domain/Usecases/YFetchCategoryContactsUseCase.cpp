#include "ycontacts/Contacts/Domain/Usecases/YFetchCategoryContactsUseCase.h"

#include <utility>

namespace ycontacts {

YFetchCategoryContactsUseCase::YFetchCategoryContactsUseCase(std::shared_ptr<YCategoriesDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YFetchCategoryContactsUseCase::run(const YFetchCategoryContactsRequest& request, Callback callback) {
    askAndDeliver(
        "YFetchCategoryContactsUseCase", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) {
            manager.fetchContactsInCategory(request.yuid, request.categoryId, request.requestType, std::move(reply));
        },
        [categoryId = request.categoryId](std::optional<std::vector<YContact>> contacts) {
            return YFetchCategoryContactsResponse(categoryId, std::move(contacts));
        });
}

}  // namespace ycontacts

#include "ycontacts/Contacts/Domain/Usecases/YFetchCategoryContactsUseCase.h"

#include <utility>

namespace ycontacts {

YFetchCategoryContactsUseCase::YFetchCategoryContactsUseCase(std::shared_ptr<YCategoriesDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YFetchCategoryContactsUseCase::run(const YFetchCategoryContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YFetchCategoryContactsUseCase has no data manager; dropped the request of " +
                                 request.yuid);
        return;
    }
    dataManager->fetchContactsInCategory(
        request.yuid, request.categoryId, request.requestType,
        [this, weak = weakSelf(), categoryId = request.categoryId,
         callback = std::move(callback)](std::optional<std::vector<YContact>> contacts) {
            const auto alive = weak.lock();
            if (!alive) return;
            invoke(callback, YFetchCategoryContactsResponse(categoryId, std::move(contacts)));
        });
}

}  // namespace ycontacts

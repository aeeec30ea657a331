#include "ycontacts/Contacts/Domain/Usecases/YFetchCategoriesUseCase.h"

#include <utility>

namespace ycontacts {

YFetchCategoriesUseCase::YFetchCategoriesUseCase(std::shared_ptr<YCategoriesDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YFetchCategoriesUseCase::run(const YFetchCategoriesRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YFetchCategoriesUseCase has no data manager; dropped the request of " +
                                 request.yuid);
        return;
    }
    dataManager->fetchCategories(
        request.yuid, request.requestType,
        [this, weak = weakSelf(), callback = std::move(callback)](std::optional<YCategoryResponse> answer) {
            const auto alive = weak.lock();
            if (!alive) return;
            // Hosts always get a list: no answer reads as no categories.
            auto categories = answer ? std::move(answer->categories) : std::vector<YContactCategory>{};
            invoke(callback, YFetchCategoriesResponse(std::move(categories), std::nullopt));
        });
}

}  // namespace ycontacts

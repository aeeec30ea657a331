#include "ycontacts/Contacts/Domain/Usecases/YFetchCategoriesUseCase.h"

#include <utility>

namespace ycontacts {

YFetchCategoriesUseCase::YFetchCategoriesUseCase(std::shared_ptr<YCategoriesDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YFetchCategoriesUseCase::run(const YFetchCategoriesRequest& request, Callback callback) {
    askAndDeliver(
        "YFetchCategoriesUseCase", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) {
            manager.fetchCategories(request.yuid, request.requestType, std::move(reply));
        },
        [](std::optional<YCategoryResponse> answer) {
            // Hosts always get a list: no answer reads as no categories.
            auto categories = answer ? std::move(answer->categories) : std::vector<YContactCategory>{};
            return YFetchCategoriesResponse(std::move(categories), std::nullopt);
        });
}

}  // namespace ycontacts

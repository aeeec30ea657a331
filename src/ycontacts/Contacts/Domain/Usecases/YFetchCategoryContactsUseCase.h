#pragma once
// YFetchCategoryContactsUseCase: the contacts of one category.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YCategoriesDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YFetchCategoryContactsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YFetchCategoryContactsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YFetchCategoryContactsUseCase
    : public YUsecase<YFetchCategoryContactsRequest, YFetchCategoryContactsResponse> {
public:
    explicit YFetchCategoryContactsUseCase(std::shared_ptr<YCategoriesDataManagerContract> dataManager);

    const std::shared_ptr<YCategoriesDataManagerContract> dataManager;

protected:
    void run(const YFetchCategoryContactsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

#pragma once
// YFetchCategoriesUseCase: the user's contact categories.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YCategoriesDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YFetchCategoriesRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YFetchCategoriesResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YFetchCategoriesUseCase : public YUsecase<YFetchCategoriesRequest, YFetchCategoriesResponse> {
public:
    explicit YFetchCategoriesUseCase(std::shared_ptr<YCategoriesDataManagerContract> dataManager);

    const std::shared_ptr<YCategoriesDataManagerContract> dataManager;

protected:
    void run(const YFetchCategoriesRequest& request, Callback callback) override;
};

}  // namespace ycontacts

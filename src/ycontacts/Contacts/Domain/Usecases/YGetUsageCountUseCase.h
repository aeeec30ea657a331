#pragma once
// YGetUsageCountUseCase: how often each of the user's contacts was used, by contact id.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetUsageCountResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Only the request's yuid is read.
// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetUsageCountUseCase : public YUsecase<YGetContactsRequest, YGetUsageCountResponse> {
public:
    explicit YGetUsageCountUseCase(std::shared_ptr<YContactsDataManagerContract> dataManager);

    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    void run(const YGetContactsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

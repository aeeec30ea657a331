#pragma once
// YDeleteContactsUseCase: deletes one contact on the server and then in the store.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsUpdateDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YDeleteContactsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YDeleteContactsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YDeleteContactsUseCase : public YUsecase<YDeleteContactsRequest, YDeleteContactsResponse> {
public:
    explicit YDeleteContactsUseCase(std::shared_ptr<YContactsUpdateDataManagerContract> dataManager);

    const std::shared_ptr<YContactsUpdateDataManagerContract> dataManager;

protected:
    void run(const YDeleteContactsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

#pragma once
// YUpdateContactsUseCase: adds or edits contacts on the server and then in the store.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsUpdateDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YUpdateContactsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YUpdateContactsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YUpdateContactsUseCase : public YUsecase<YUpdateContactsRequest, YUpdateContactsResponse> {
public:
    explicit YUpdateContactsUseCase(std::shared_ptr<YContactsUpdateDataManagerContract> dataManager);

    const std::shared_ptr<YContactsUpdateDataManagerContract> dataManager;

protected:
    void run(const YUpdateContactsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

#pragma once
// YGetContactsList: lists a user's contacts through the data manager's list query.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetContactsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YGetContactsList : public YUsecase<YGetContactsRequest, YGetContactsResponse> {
public:
    explicit YGetContactsList(std::shared_ptr<YContactsDataManagerContract> dataManager);

    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    void run(const YGetContactsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

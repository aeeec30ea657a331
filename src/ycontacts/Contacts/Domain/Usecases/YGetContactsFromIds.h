#pragma once
// YGetContactsFromIds: fetches contacts by contact ids, e-mail addresses or the contacts' own user ids.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactsFromIdsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetContactsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetContactsFromIds : public YUsecase<YGetContactsFromIdsRequest, YGetContactsResponse> {
public:
    explicit YGetContactsFromIds(std::shared_ptr<YContactsDataManagerContract> dataManager);

    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    void run(const YGetContactsFromIdsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

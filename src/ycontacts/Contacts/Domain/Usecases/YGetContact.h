#pragma once
// YGetContact: one contact by contact id, the contact's own user id or an e-mail address.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetContactResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetContact : public YUsecase<YGetContactRequest, YGetContactResponse> {
public:
    explicit YGetContact(std::shared_ptr<YContactsDataManagerContract> dataManager);

    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    void run(const YGetContactRequest& request, Callback callback) override;
};

}  // namespace ycontacts

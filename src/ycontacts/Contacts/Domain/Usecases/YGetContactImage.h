#pragma once
// YGetContactImage: a contact's photo bytes and the cache file they came from.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactImageRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetContactImageResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetContactImage : public YUsecase<YGetContactImageRequest, YGetContactImageResponse> {
public:
    explicit YGetContactImage(std::shared_ptr<YContactsDataManagerContract> dataManager);

    // A second use case that shares this one's data manager.
    std::shared_ptr<YGetContactImage> copy() const;

    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    void run(const YGetContactImageRequest& request, Callback callback) override;
};

}  // namespace ycontacts

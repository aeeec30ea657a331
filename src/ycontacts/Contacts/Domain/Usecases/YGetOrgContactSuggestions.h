#pragma once
// YGetOrgContactSuggestions: suggestions among the user's organisation contacts.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetOrgContactSuggestionsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetOrgContactSuggestionsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetOrgContactSuggestions
    : public YUsecase<YGetOrgContactSuggestionsRequest, YGetOrgContactSuggestionsResponse> {
public:
    explicit YGetOrgContactSuggestions(std::shared_ptr<YContactsDataManagerContract> dataManager);

    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    void run(const YGetOrgContactSuggestionsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

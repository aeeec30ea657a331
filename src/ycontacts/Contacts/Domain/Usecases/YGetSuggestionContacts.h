#pragma once
// YGetSuggestionContacts: typeahead suggestions for a search text, answered with the text they match.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetSuggestionContactsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetSuggestionContactsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetSuggestionContacts
    : public YUsecase<YGetSuggestionContactsRequest, YGetSuggestionContactsResponse> {
public:
    explicit YGetSuggestionContacts(std::shared_ptr<YContactsDataManagerContract> dataManager);

    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    void run(const YGetSuggestionContactsRequest& request, Callback callback) override;
};

}  // namespace ycontacts

#pragma once
// YGetOrgContactSuggestionsResponse: organisation contacts suggested for a search text.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetOrgContactSuggestionsResponse : public YContactResponse {
public:
    explicit YGetOrgContactSuggestionsResponse(std::optional<std::string> search) : searchStr(std::move(search)) {}

    std::optional<std::vector<YContact>> contacts;
    std::optional<std::string> searchStr;
};

}  // namespace ycontacts

#pragma once
// YGetSuggestionContactsResponse: suggestions together with the search text they answer.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"
#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetSuggestionContactsResponse : public YContactResponse {
public:
    explicit YGetSuggestionContactsResponse(std::string search) : searchStr(std::move(search)) {}

    std::optional<std::vector<YSuggestionContact>> contacts;
    std::string searchStr;
};

}  // namespace ycontacts

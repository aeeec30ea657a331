#pragma once
// YGetSuggestionContactsRequest: typeahead suggestions (one per e-mail address) for what the user typed.

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/Contacts/Domain/YContactsQuery.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetSuggestionContactsRequest : public YContactRequest {
public:
    YGetSuggestionContactsRequest(std::string yuid, std::string search)
        : YContactRequest(std::move(yuid)), searchStr(std::move(search)) {}
    // A suggestion request always needs its search text.
    explicit YGetSuggestionContactsRequest(std::string yuid) = delete;

    std::optional<bool> isOrg;
    int limit = 20;
    std::string searchStr;
    std::optional<std::string> yoid;

    // The query this request asks, as the data manager and the store take it.
    YContactsQuery query() const {
        return {.yuid = yuid,
                .yoid = yoid,
                .searchStr = searchStr,
                .limit = limit,
                .isOrg = isOrg,
                .requestType = requestType};
    }
};

}  // namespace ycontacts

#pragma once
// YGetOrgContactSuggestionsRequest: suggestions among the user's organisation contacts.

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/Contacts/Domain/YContactsQuery.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetOrgContactSuggestionsRequest : public YContactRequest {
public:
    explicit YGetOrgContactSuggestionsRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}

    std::optional<std::string> searchStr;
    std::optional<int> from;
    int limit = 100;
    bool excludeGroups = true;
    bool shouldSearchNickname = false;

    // The query this request asks, as the data manager and the store take it. Organisation suggestions come
    // from the store alone.
    YContactsQuery query() const {
        return {.yuid = yuid,
                .searchStr = searchStr,
                .from = from,
                .limit = limit,
                .isOrg = true,
                .requestType = RequestType::local,
                .excludeGroups = excludeGroups,
                .shouldSearchNickname = shouldSearchNickname};
    }
};

}  // namespace ycontacts

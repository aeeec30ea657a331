#pragma once
// YGetContactsRequest: list or search a user's contacts (also used to ask for usage counts).

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/Contacts/Domain/YContactsQuery.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetContactsRequest : public YContactRequest {
public:
    explicit YGetContactsRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}

    std::optional<bool> isOrg;
    std::optional<int> from;
    std::optional<int> limit;
    std::optional<std::string> searchStr;
    std::optional<std::string> yoid;

    // The query this request asks, as the data manager and the store take it.
    YContactsQuery query() const {
        return {.yuid = yuid,
                .yoid = yoid,
                .searchStr = searchStr,
                .from = from,
                .limit = limit,
                .isOrg = isOrg,
                .requestType = requestType};
    }
};

}  // namespace ycontacts

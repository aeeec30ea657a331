#pragma once
// YGetContactsFromIdsRequest: fetch a user's contacts by their e-mail addresses.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetContactsFromIdsRequest : public YContactRequest {
public:
    explicit YGetContactsFromIdsRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}

    std::optional<std::vector<std::string>> contactIds;
    std::optional<std::vector<std::string>> emailIds;
    std::optional<std::vector<std::string>> contactYuids;
    std::optional<bool> isOrg;
};

}  // namespace ycontacts

#pragma once
// YGetContactsRequest: list or search a user's contacts (also used to ask for usage counts).

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"

namespace ycontacts {

class YGetContactsRequest : public YContactRequest {
public:
    explicit YGetContactsRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}

    std::optional<bool> isOrg;
    std::optional<int> from;
    std::optional<int> limit;
    std::optional<std::string> searchStr;
    std::optional<std::string> yoid;
};

}  // namespace ycontacts

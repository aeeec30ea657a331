#pragma once
// YGetOrgContactSuggestionsRequest: suggestions among the user's organisation contacts.

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"

namespace ycontacts {

class YGetOrgContactSuggestionsRequest : public YContactRequest {
public:
    explicit YGetOrgContactSuggestionsRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}

    std::optional<std::string> searchStr;
    std::optional<int> from;
    int limit = 100;
    bool excludeGroups = true;
    bool shouldSearchNickname = false;
};

}  // namespace ycontacts

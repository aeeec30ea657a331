#pragma once
// YContactGroup: a named group of contact categories belonging to one account.

#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"

namespace ycontacts {

struct YContactGroup {
    std::string accId;
    std::string name;
    std::optional<std::vector<YContactCategory>> categories;

    YContactGroup(std::string accId, std::string name);
};

}  // namespace ycontacts

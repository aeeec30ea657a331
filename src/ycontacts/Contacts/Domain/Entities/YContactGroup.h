#pragma once
// YContactGroup: a named group of contact categories belonging to one account.

#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YContactGroup {
    std::string accId;
    std::string name;
    std::optional<std::vector<YContactCategory>> categories;

    YContactGroup(std::string accId, std::string name);
};

}  // namespace ycontacts

#pragma once
// YGetUsageCountResponse: how often each contact was used, by contact id.

#include <map>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetUsageCountResponse : public YContactResponse {
public:
    YGetUsageCountResponse() = default;

    std::optional<std::map<std::string, std::string>> usageCountMap;
};

}  // namespace ycontacts

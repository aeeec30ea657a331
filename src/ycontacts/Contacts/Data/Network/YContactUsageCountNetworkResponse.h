#pragma once
// YContactUsageCountNetworkResponse: usage counts per contact id (both as text) from the usage-count call.

#include <map>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Data/Network/YNetworkResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YContactUsageCountNetworkResponse : YNetworkResponseOf<YContactUsageCountNetworkResponse> {
    std::optional<std::map<std::string, std::string>> usageCountDetails;
};

}  // namespace ycontacts

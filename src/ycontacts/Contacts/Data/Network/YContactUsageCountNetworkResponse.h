#pragma once
// YContactUsageCountNetworkResponse: usage counts per contact id (both as text) from the usage-count call.

#include <map>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Data/Network/YNetworkResponse.h"

namespace ycontacts {

struct YContactUsageCountNetworkResponse : YNetworkResponseOf<YContactUsageCountNetworkResponse> {
    std::optional<std::map<std::string, std::string>> usageCountDetails;
};

}  // namespace ycontacts

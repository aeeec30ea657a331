#pragma once
// YContactUsageCountResponse: the server's map from contact id to usage count (both as text).

#include <map>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Domain/Entities/YJsonCoding.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YContactUsageCountResponse {
    std::optional<std::map<std::string, std::string>> contacts;
};

// Key "contacts", read only when present and not null; every value must be a string.
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContactUsageCountResponse& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContactUsageCountResponse& value);

}  // namespace ycontacts

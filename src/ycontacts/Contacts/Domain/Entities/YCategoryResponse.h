#pragma once
// YCategoryResponse: the list wrapper in which the server sends the user's contact categories.

#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/Contacts/Domain/Entities/YJsonCoding.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YCategoryResponse {
    std::vector<YContactCategory> categories;
};

// Key "categories", required: a body without it fails to decode.
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YCategoryResponse& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YCategoryResponse& value);

}  // namespace ycontacts

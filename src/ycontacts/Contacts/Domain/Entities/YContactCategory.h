#pragma once
// YContactCategory: one of the user's contact categories as the server names it (snake-case JSON keys).

#include <optional>
#include <string>

#include "ycontacts/Contacts/Domain/Entities/YJsonCoding.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YContactCategory {
    std::string categoryId;
    std::optional<std::string> categoryName;
    // The server's deletion flag, kept as the text it sent.
    std::optional<std::string> isDeleted;

    // Without an id the category gets a temporary one from generateRandomCategoryId().
    explicit YContactCategory(std::optional<std::string> categoryId = std::nullopt);

    // "TempCategoryId-" followed by the time-and-random number of YTemporaryId.
    static std::string generateRandomCategoryId();
};

// Keys "category_id" (required), "category_name" and "deleted" (if present).
template <JsonDocument J>
YCONTACTS_EXPORT void to_json(J& json, const YContactCategory& value);
template <JsonDocument J>
YCONTACTS_EXPORT void from_json(const J& json, YContactCategory& value);

}  // namespace ycontacts

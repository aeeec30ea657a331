#pragma once
// YFetchCategoriesResponse: the user's categories (never absent: empty when there are none).

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YFetchCategoriesResponse : public YContactResponse {
public:
    YFetchCategoriesResponse(std::vector<YContactCategory> categoryList, std::optional<std::string> titleText)
        : categories(std::move(categoryList)), title(std::move(titleText)) {}

    std::vector<YContactCategory> categories;
    std::optional<std::string> title;
};

}  // namespace ycontacts

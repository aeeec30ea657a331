#pragma once
// YFetchCategoryContactsRequest: the contacts of one category.

#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"

namespace ycontacts {

class YFetchCategoryContactsRequest : public YContactRequest {
public:
    YFetchCategoryContactsRequest(std::string yuid, std::string category)
        : YContactRequest(std::move(yuid)), categoryId(std::move(category)) {}
    explicit YFetchCategoryContactsRequest(std::string yuid) = delete;

    std::string categoryId;
};

}  // namespace ycontacts

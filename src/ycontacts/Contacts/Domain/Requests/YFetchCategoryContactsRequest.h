#pragma once
// YFetchCategoryContactsRequest: the contacts of one category.

#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YFetchCategoryContactsRequest : public YContactRequest {
public:
    YFetchCategoryContactsRequest(std::string yuid, std::string category)
        : YContactRequest(std::move(yuid)), categoryId(std::move(category)) {}
    explicit YFetchCategoryContactsRequest(std::string yuid) = delete;

    std::string categoryId;
};

}  // namespace ycontacts

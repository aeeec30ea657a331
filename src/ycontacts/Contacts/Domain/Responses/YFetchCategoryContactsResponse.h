#pragma once
// YFetchCategoryContactsResponse: the contacts of one category.

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YFetchCategoryContactsResponse : public YContactResponse {
public:
    YFetchCategoryContactsResponse(std::string category, std::optional<std::vector<YContact>> contactList)
        : categoryId(std::move(category)), contacts(std::move(contactList)) {}

    std::string categoryId;
    std::optional<std::vector<YContact>> contacts;
};

}  // namespace ycontacts

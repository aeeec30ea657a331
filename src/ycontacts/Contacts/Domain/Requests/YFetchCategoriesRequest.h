#pragma once
// YFetchCategoriesRequest: the user's contact categories.

#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YFetchCategoriesRequest : public YContactRequest {
public:
    explicit YFetchCategoriesRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}
};

}  // namespace ycontacts

#pragma once
// YFetchCategoriesRequest: the user's contact categories.

#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"

namespace ycontacts {

class YFetchCategoriesRequest : public YContactRequest {
public:
    explicit YFetchCategoriesRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}
};

}  // namespace ycontacts

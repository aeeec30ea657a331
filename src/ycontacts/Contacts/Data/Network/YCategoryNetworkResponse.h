#pragma once
// YCategoryNetworkResponse: the user's contact categories as the server lists them, or the call's error.

#include <optional>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YContactError.h"
#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"

namespace ycontacts {

struct YCategoryNetworkResponse {
    std::optional<std::vector<YContactCategory>> categories;
    std::optional<YContactError> error;

    // A response holding only `error`.
    static YCategoryNetworkResponse get(YContactError error) {
        YCategoryNetworkResponse response;
        response.error = error;
        return response;
    }
};

}  // namespace ycontacts

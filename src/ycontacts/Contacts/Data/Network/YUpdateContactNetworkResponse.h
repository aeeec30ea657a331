#pragma once
// YUpdateContactNetworkResponse: the server's answer to adding or deleting a contact.

#include <optional>
#include <string>

#include "ycontacts/Contacts/Data/Network/YNetworkResponse.h"

namespace ycontacts {

struct YUpdateContactNetworkResponse : YNetworkResponseOf<YUpdateContactNetworkResponse> {
    std::optional<std::string> successResponse;
};

}  // namespace ycontacts

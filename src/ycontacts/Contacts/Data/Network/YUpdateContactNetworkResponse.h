#pragma once
// YUpdateContactNetworkResponse: the server's answer to adding or deleting a contact.

#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YNetworkResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YUpdateContactNetworkResponse : YNetworkResponseOf<YUpdateContactNetworkResponse> {
    // The reply's "status" text when the server accepted the change ("success").
    std::optional<std::string> successResponse;
    // Ids the server gave the added contacts, in the order they were sent; absent for a delete.
    std::optional<std::vector<std::string>> contactIds;
};

}  // namespace ycontacts

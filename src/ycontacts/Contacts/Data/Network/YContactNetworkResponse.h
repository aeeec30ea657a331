#pragma once
// YContactNetworkResponse: one page of contacts from a list, sync or search call.

#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YNetworkResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

struct YCONTACTS_EXPORT YContactNetworkResponse : YNetworkResponseOf<YContactNetworkResponse> {
    // The server has a further page.
    bool hasMore = false;
    // The number of records in this page as the server reports it.
    int count = 0;
    std::optional<std::vector<YContact>> newContacts;
    std::optional<std::vector<YContact>> updatedContacts;
    // Ids of contacts the server has deleted.
    std::optional<std::vector<std::string>> deletedContacts;
};

}  // namespace ycontacts

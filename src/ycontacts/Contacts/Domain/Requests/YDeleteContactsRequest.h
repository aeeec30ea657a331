#pragma once
// YDeleteContactsRequest: delete one contact on the server, then in the store.

#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YDeleteContactsRequest : public YContactRequest {
public:
    YDeleteContactsRequest(std::string yuid, std::string id, bool org)
        : YContactRequest(std::move(yuid)), contactId(std::move(id)), isOrg(org) {}
    explicit YDeleteContactsRequest(std::string yuid) = delete;

    std::string contactId;
    bool isOrg;
};

}  // namespace ycontacts

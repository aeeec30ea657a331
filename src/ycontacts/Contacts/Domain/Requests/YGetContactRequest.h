#pragma once
// YGetContactRequest: one contact, by contact id, by the contact's own user id, or by e-mail address.

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetContactRequest : public YContactRequest {
public:
    explicit YGetContactRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}

    std::optional<std::string> emailId;
    std::optional<std::string> contactId;
    std::optional<std::string> contactYuid;
    bool preferPersonalInfo = false;
};

}  // namespace ycontacts

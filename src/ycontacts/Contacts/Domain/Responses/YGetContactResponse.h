#pragma once
// YGetContactResponse: one contact, or none; `error` exists for hosts and the library never fills it.

#include <optional>
#include <string>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetContactResponse : public YContactResponse {
public:
    YGetContactResponse() = default;

    std::optional<YContact> contact;
    std::optional<std::string> error;
};

}  // namespace ycontacts

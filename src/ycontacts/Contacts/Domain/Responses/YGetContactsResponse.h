#pragma once
// YGetContactsResponse: the contacts a list, search or by-address query answered with (absent on failure).

#include <optional>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetContactsResponse : public YContactResponse {
public:
    YGetContactsResponse() = default;
    explicit YGetContactsResponse(std::optional<std::vector<YContact>> contacts) : contacts(std::move(contacts)) {}

    std::optional<std::vector<YContact>> contacts;
};

}  // namespace ycontacts

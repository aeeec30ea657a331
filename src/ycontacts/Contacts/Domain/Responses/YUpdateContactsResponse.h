#pragma once
// YUpdateContactsResponse: the id the server gave the added or edited contact, and its answer text.

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YUpdateContactsResponse : public YContactResponse {
public:
    YUpdateContactsResponse(std::optional<std::string> id, std::optional<std::string> titleText)
        : contactId(std::move(id)), title(std::move(titleText)) {}

    std::optional<std::string> contactId;
    std::optional<std::string> title;
};

}  // namespace ycontacts

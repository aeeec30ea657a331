#pragma once
// YDeleteContactsResponse: the deleted contact's id and the server's answer text.

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/YContactResponse.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YDeleteContactsResponse : public YContactResponse {
public:
    YDeleteContactsResponse(std::string id, std::optional<std::string> titleText)
        : contactId(std::move(id)), title(std::move(titleText)) {}

    std::string contactId;
    std::optional<std::string> title;
};

}  // namespace ycontacts

#pragma once
// YGetContactImageRequest: a contact's photo, thumbnail or normal size.

#include <optional>
#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/Entities/YContactType.h"
#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/Platform/MarloComponents/YActivityMetaData.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YGetContactImageRequest : public YContactRequest {
public:
    explicit YGetContactImageRequest(std::string yuid) : YContactRequest(std::move(yuid)) {}

    std::optional<std::string> emailId;
    std::optional<std::string> contactId;
    std::optional<std::string> contactYuid;
    bool isThumbnail = true;
    std::optional<YActivityMetaData> metaData;
    YContactType contactType = YContactType::user;
};

}  // namespace ycontacts

#pragma once
// YContactRequest: base of every contacts request; carries the user and where the answer should come from.

#include <string>
#include <utility>

#include "ycontacts/Contacts/Domain/RequestType.h"
#include "ycontacts/Platform/MarloComponents/YRequest.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactRequest : public YRequest {
public:
    using RequestType = ycontacts::RequestType;

    explicit YContactRequest(std::string yuid) : YRequest(std::move(yuid)) {}

    RequestType requestType = RequestType::preferLocal;
};

}  // namespace ycontacts

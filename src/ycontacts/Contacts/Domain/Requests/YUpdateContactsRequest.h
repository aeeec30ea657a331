#pragma once
// YUpdateContactsRequest: add or edit contacts on the server, then in the store.

#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/YContactRequest.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YUpdateContactsRequest : public YContactRequest {
public:
    YUpdateContactsRequest(std::string yuid, std::vector<YContact> contactList, bool org, std::string sourceName,
                           std::string formatName)
        : YContactRequest(std::move(yuid)),
          contacts(std::move(contactList)),
          isOrg(org),
          source(std::move(sourceName)),
          format(std::move(formatName)) {}
    explicit YUpdateContactsRequest(std::string yuid) = delete;

    std::vector<YContact> contacts;
    bool isOrg;
    std::string source;
    std::string format;
};

}  // namespace ycontacts

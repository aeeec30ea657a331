#pragma once
// YContactsUpdateDataManagerContract: what the update and delete use cases ask of the contact-update data manager.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YUpdateContactNetworkResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactsUpdateDataManagerContract {
public:
    using UpdateCallback = std::function<void(std::optional<std::string> contactId,
                                              std::optional<YUpdateContactNetworkResponse> response)>;

    virtual ~YContactsUpdateDataManagerContract() = default;

    virtual void updateContact(const std::string& yuid, const std::vector<YContact>& contacts, bool isOrg,
                               const std::string& source, const std::string& format, UpdateCallback callback) = 0;
    virtual void deleteContact(const std::string& yuid, const std::string& contactId, bool isOrg,
                               UpdateCallback callback) = 0;
};

}  // namespace ycontacts

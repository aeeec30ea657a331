#pragma once
// YContactsAuthenticationContract: implemented by the host; supplies each user's authorization value and server.

#include <functional>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Data/Network/YContactsHost.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactsAuthenticationContract {
public:
    // The value sent as the request's Authorization header, or an error text when none can be had.
    using AuthorizationCallback =
        std::function<void(std::optional<std::string> authorization, std::optional<std::string> error)>;

    virtual ~YContactsAuthenticationContract() = default;

    // May answer on any thread, at once or later; every server call waits for this answer.
    virtual void getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) = 0;
    // Asked synchronously once the authorization value is in hand.
    virtual std::optional<YContactsHost> getContactsHost(const std::string& yuid) = 0;
};

}  // namespace ycontacts

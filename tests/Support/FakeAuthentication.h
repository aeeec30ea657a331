#pragma once
// FakeAuthentication: answers at once with the authorization value and server configured per user.

#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "ycontacts/Contacts/YContactsAuthenticationContract.h"

namespace ycontacts::testsupport {

// A user without a configured value gets the error "no session"; one without a host gets none.
class FakeAuthentication : public YContactsAuthenticationContract {
public:
    void getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) override {
        std::optional<std::string> header;
        {
            std::lock_guard lock(mutex);
            if (auto found = headers.find(yuid); found != headers.end()) header = found->second;
        }
        callback(header, header ? std::nullopt : std::optional<std::string>("no session"));
    }
    std::optional<YContactsHost> getContactsHost(const std::string& yuid) override {
        std::lock_guard lock(mutex);
        auto found = hosts.find(yuid);
        return found == hosts.end() ? std::nullopt : std::optional<YContactsHost>(found->second);
    }

    void set(const std::string& yuid, const std::string& header, const YContactsHost& host) {
        std::lock_guard lock(mutex);
        headers[yuid] = header;
        hosts.insert_or_assign(yuid, host);
    }

    std::mutex mutex;
    std::map<std::string, std::string> headers;
    std::map<std::string, YContactsHost> hosts;
};

}  // namespace ycontacts::testsupport

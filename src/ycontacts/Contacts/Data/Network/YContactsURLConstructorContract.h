#pragma once
// YContactsURLConstructorContract: builds the contacts server's request URLs and parameter maps for each call.

#include <map>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Data/Network/YContactsHost.h"
#include "ycontacts/Contacts/Domain/Entities/YContactType.h"

namespace ycontacts {

// A request address and the parameters the HTTP client encodes as its query.
struct YContactsURLParameters {
    std::string url;
    std::map<std::string, std::string> parameters;

    bool operator==(const YContactsURLParameters&) const = default;
};

class YContactsURLConstructorContract {
public:
    virtual ~YContactsURLConstructorContract() = default;

    // One page of a contact list or a search; `time` present means an incremental download.
    virtual std::optional<YContactsURLParameters> getContactsURL(
        const YContactsHost& host, const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
        int startIndex, std::optional<int> limit, std::optional<double> time, std::optional<bool> showDeleted,
        const std::optional<std::string>& searchText) const = 0;
    // A photo addressed by the contact's own user id.
    virtual std::optional<YContactsURLParameters> getContactImageURL(const YContactsHost& host,
                                                                     const std::string& yuid,
                                                                     const std::string& contactYuid,
                                                                     bool isThumbnail,
                                                                     YContactType contactType) const = 0;
    // A photo addressed by contact id within the personal or organisation contacts.
    virtual std::optional<YContactsURLParameters> getContactImageURL(const YContactsHost& host,
                                                                     const std::string& yuid,
                                                                     const std::string& contactId, bool isOrg,
                                                                     bool isThumbnail) const = 0;
    // The delete address with its query attached.
    virtual std::string getDeleteContactsURL(const YContactsHost& host, const std::string& contactId,
                                             bool isOrg) const = 0;
    // The add address with its query attached.
    virtual std::string getUpdateContactsURL(const YContactsHost& host, bool isOrg, const std::string& source,
                                             const std::string& format) const = 0;
    virtual std::optional<YContactsURLParameters> getContactsUsageCountURL(const std::string& yuid,
                                                                           const YContactsHost& host) const = 0;
};

}  // namespace ycontacts

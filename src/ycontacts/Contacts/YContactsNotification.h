#pragma once
// YContactsNotification: the observer contract through which the library reports downloads, changes and counts.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YContactError.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Register with YNotificationCenter::shared().addObserver<YContactsNotification>(observer); the centre holds
// observers weakly. Every callback has an empty default, so an observer overrides only what it needs.
// Callbacks arrive on library threads.
class YCONTACTS_EXPORT YContactsNotification {
public:
    virtual ~YContactsNotification() = default;

    virtual void countUpdate(const std::string& /*yuid*/, std::int64_t /*orgCount*/, std::int64_t /*nonOrgCount*/) {}
    virtual void contactDataReset(const std::string& /*yuid*/) {}
    virtual void contactsUsageCountUpdated(const std::string& /*yuid*/,
                                           const std::map<std::string, std::string>& /*usageCountMap*/) {}
    virtual void contactsAdded(const std::string& /*yuid*/, bool /*isOrg*/, const std::vector<YContact>& /*contact*/) {}
    virtual void downloadStarted(const std::string& /*yuid*/, const std::optional<std::string>& /*yoid*/,
                                 bool /*isInitial*/) {}
    virtual void downloadComplete(const std::string& /*yuid*/, const std::optional<std::string>& /*yoid*/,
                                  double /*lastUpdateTime*/, bool /*isInitial*/) {}
    virtual void downloadFailed(const std::string& /*yuid*/, const std::optional<std::string>& /*yoid*/,
                                YContactError /*error*/) {}
    virtual void contactsUpdated(const std::string& /*yuid*/, bool /*isOrg*/,
                                 const std::vector<YContact>& /*contact*/) {}
    virtual void contactsDeleted(const std::string& /*yuid*/, bool /*isOrg*/,
                                 const std::vector<std::string>& /*deletedContactIds*/) {}
};

}  // namespace ycontacts

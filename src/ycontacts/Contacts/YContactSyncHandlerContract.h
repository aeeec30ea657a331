#pragma once
// YContactSyncHandlerContract: the sync controls the facade hands to the host.

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactSyncHandlerContract {
public:
    // (organisation count, personal count)
    using ContactCount = std::pair<std::int64_t, std::int64_t>;

    virtual ~YContactSyncHandlerContract() = default;

    // The four commands return at once; the work runs on the shared use-case queue.
    virtual void start(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual void runInitialFetch(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual void syncContacts(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual std::optional<ContactCount> getContactCount(const std::string& yuid) = 0;
    virtual void resetAndStart(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual std::optional<double> lastUpdatedTime(const std::string& yuid) = 0;
    virtual bool isSyncInProgress(const std::string& yuid) = 0;
};

}  // namespace ycontacts

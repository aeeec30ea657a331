#pragma once
// YContactsPreferenceContract: per-user download progress (start pages, completion flags, last sync time).

#include <cstdint>
#include <optional>
#include <string>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactsPreferenceContract {
public:
    virtual ~YContactsPreferenceContract() = default;

    virtual void setStartIndex(const std::string& yuid, std::int64_t index, bool isOrg) = 0;
    virtual std::int64_t startIndex(const std::string& yuid, bool isOrg) = 0;
    virtual void setCompleteState(const std::string& yuid, bool isComplete, bool isOrg) = 0;
    virtual bool completeState(const std::string& yuid, bool isOrg) = 0;
    virtual std::optional<double> lastUpdatedTime(const std::string& yuid) = 0;
    virtual void setLastUpdatedTime(const std::string& yuid, double time) = 0;
    virtual void removeAllPreferences(const std::string& yuid) = 0;
};

}  // namespace ycontacts

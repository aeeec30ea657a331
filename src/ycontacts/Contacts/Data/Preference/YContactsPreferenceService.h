#pragma once
// YContactsPreferenceService: per-user download progress kept in a YUserDefaults store, one group per user.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Data/Contracts/YContactsPreferenceContract.h"

namespace ycontacts {

class YUserDefaults;

// Every call reads or writes its store with the user's yuid as the group, so any thread may call it.
class YContactsPreferenceService : public YContactsPreferenceContract {
public:
    static constexpr const char* norgStartIndexKey = "YContactsPreferenceConstants.norgStartIndex";
    static constexpr const char* orgStartIndexKey = "YContactsPreferenceConstants.orgStartIndex";
    static constexpr const char* norgIsCompletedKey = "YContactsPreferenceConstants.norgIsCompleted";
    static constexpr const char* orgIsCompletedKey = "YContactsPreferenceConstants.orgIsCompleted";
    static constexpr const char* lastUpdatedTimeKey = "YContactsPreferenceConstants.lastUpdatedTime";
    // Reserved: never written here, only removed with the rest.
    static constexpr const char* yoidKey = "YContactsPreferenceConstants.yoid";

    // The one instance of the process, made on first use, over the standard store.
    static std::shared_ptr<YContactsPreferenceService> shared();

    // Over `store`; without one, over YUserDefaults::standard(), which lives in memory.
    explicit YContactsPreferenceService(std::shared_ptr<YUserDefaults> store = nullptr);

    void setStartIndex(const std::string& yuid, std::int64_t index, bool isOrg) override;
    // Pages count from 1: a stored value below 1, or none, reads as 1.
    std::int64_t startIndex(const std::string& yuid, bool isOrg) override;
    void setCompleteState(const std::string& yuid, bool isComplete, bool isOrg) override;
    bool completeState(const std::string& yuid, bool isOrg) override;
    // 0.0, which is also what an empty store yields, means no sync has completed.
    std::optional<double> lastUpdatedTime(const std::string& yuid) override;
    void setLastUpdatedTime(const std::string& yuid, double time) override;
    void removeAllPreferences(const std::string& yuid) override;

private:
    YUserDefaults& store() const;

    const std::shared_ptr<YUserDefaults> store_;
};

}  // namespace ycontacts

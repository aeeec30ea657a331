#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"

#include <utility>

#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"

namespace ycontacts {

std::shared_ptr<YContactsPreferenceService> YContactsPreferenceService::shared() {
    static const auto instance = std::make_shared<YContactsPreferenceService>();
    return instance;
}

YContactsPreferenceService::YContactsPreferenceService(std::shared_ptr<YUserDefaults> store)
    : store_(std::move(store)) {}

YUserDefaults& YContactsPreferenceService::store() const { return store_ ? *store_ : YUserDefaults::standard(); }

void YContactsPreferenceService::setStartIndex(const std::string& yuid, std::int64_t index, bool isOrg) {
    store().setInteger(isOrg ? orgStartIndexKey : norgStartIndexKey, index, yuid);
}

std::int64_t YContactsPreferenceService::startIndex(const std::string& yuid, bool isOrg) {
    const std::int64_t stored = store().integer(isOrg ? orgStartIndexKey : norgStartIndexKey, yuid);
    return stored > 0 ? stored : 1;
}

void YContactsPreferenceService::setCompleteState(const std::string& yuid, bool isComplete, bool isOrg) {
    store().setBool(isOrg ? orgIsCompletedKey : norgIsCompletedKey, isComplete, yuid);
}

bool YContactsPreferenceService::completeState(const std::string& yuid, bool isOrg) {
    return store().boolean(isOrg ? orgIsCompletedKey : norgIsCompletedKey, yuid);
}

std::optional<double> YContactsPreferenceService::lastUpdatedTime(const std::string& yuid) {
    const double stored = store().doubleValue(lastUpdatedTimeKey, yuid);
    if (stored == 0.0) return std::nullopt;
    return stored;
}

void YContactsPreferenceService::setLastUpdatedTime(const std::string& yuid, double time) {
    store().setDouble(lastUpdatedTimeKey, time, yuid);
}

void YContactsPreferenceService::removeAllPreferences(const std::string& yuid) {
    auto& defaults = store();
    for (const char* key : {yoidKey, orgStartIndexKey, norgStartIndexKey, norgIsCompletedKey, orgIsCompletedKey,
                            lastUpdatedTimeKey}) {
        defaults.remove(key, yuid);
    }
}

}  // namespace ycontacts

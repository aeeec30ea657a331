#include <gtest/gtest.h>

#include <string>

#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"

namespace ycontacts {
namespace {

// Runs against the shared service over the process-wide store, with users of its own, and a fresh memory store.
TEST(YContactsPreferenceServiceTest, ProgressIsKeptPerUserAndPopulationAndRemovedPerUser) {
    const std::shared_ptr<YContactsPreferenceService> services[] = {
        YContactsPreferenceService::shared(),
        std::make_shared<YContactsPreferenceService>(std::make_shared<YUserDefaults>(std::nullopt))};
    for (const auto& service : services) {
        auto& preferences = *service;
        const std::string first = "preference-user-1";
        const std::string second = "preference-user-2";
        // Nothing stored, a stored page below one and a time of zero read as page one, never synced.
        EXPECT_EQ(preferences.startIndex(first, true), 1);
        preferences.setStartIndex(first, 0, false);
        preferences.setLastUpdatedTime(first, 0.0);
        EXPECT_EQ(preferences.startIndex(first, false), 1);
        EXPECT_FALSE(preferences.lastUpdatedTime(first) || preferences.completeState(first, true));

        for (const auto& user : {first, second}) {
            preferences.setStartIndex(user, 9, true);
            preferences.setCompleteState(user, true, true);
            preferences.setLastUpdatedTime(user, 1700000000123.5);
        }
        preferences.setStartIndex(second, 8, false);
        EXPECT_EQ(preferences.startIndex(first, false), 1);
        EXPECT_EQ(preferences.startIndex(first, true), 9);
        EXPECT_FALSE(preferences.completeState(first, false));
        EXPECT_TRUE(preferences.completeState(first, true));
        EXPECT_EQ(preferences.lastUpdatedTime(first), 1700000000123.5);

        preferences.removeAllPreferences(first);
        EXPECT_FALSE(preferences.startIndex(first, true) != 1 || preferences.completeState(first, true) ||
                     preferences.lastUpdatedTime(first));
        EXPECT_EQ(preferences.startIndex(second, false), 8);
        EXPECT_TRUE(preferences.completeState(second, true));
        preferences.removeAllPreferences(second);
    }
}

}  // namespace
}  // namespace ycontacts

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
        // Nothing stored reads as page one, not completed, never synced.
        for (const bool isOrg : {false, true}) {
            EXPECT_EQ(preferences.startIndex(first, isOrg), 1);
            EXPECT_FALSE(preferences.completeState(first, isOrg));
        }
        EXPECT_FALSE(preferences.lastUpdatedTime(first));
        // Stored values below one and a time of zero read as the defaults.
        preferences.setStartIndex(first, 0, false);
        preferences.setStartIndex(first, -3, true);
        preferences.setLastUpdatedTime(first, 0.0);
        EXPECT_EQ(preferences.startIndex(first, false), 1);
        EXPECT_EQ(preferences.startIndex(first, true), 1);
        EXPECT_FALSE(preferences.lastUpdatedTime(first));

        for (const auto& user : {first, second}) {
            preferences.setStartIndex(user, 4, false);
            preferences.setStartIndex(user, 9, true);
            preferences.setCompleteState(user, true, true);
            preferences.setLastUpdatedTime(user, 1700000000123.5);
        }
        preferences.setStartIndex(second, 8, false);
        EXPECT_EQ(preferences.startIndex(first, false), 4);
        EXPECT_EQ(preferences.startIndex(first, true), 9);
        EXPECT_FALSE(preferences.completeState(first, false));
        EXPECT_TRUE(preferences.completeState(first, true));
        EXPECT_EQ(preferences.lastUpdatedTime(first), 1700000000123.5);

        preferences.removeAllPreferences(first);
        EXPECT_EQ(preferences.startIndex(first, true), 1);
        EXPECT_FALSE(preferences.completeState(first, true));
        EXPECT_FALSE(preferences.lastUpdatedTime(first));
        EXPECT_EQ(preferences.startIndex(second, false), 8);
        EXPECT_TRUE(preferences.completeState(second, true));
        preferences.removeAllPreferences(second);
    }
}

}  // namespace
}  // namespace ycontacts

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"

namespace ycontacts {
namespace {

// Each test works on users of its own, since the standard store is shared by the whole test binary.
std::string freshUser() {
    static std::atomic<int> counter{0};
    return "preference-user-" + std::to_string(counter++);
}

TEST(YContactsPreferenceServiceTest, NothingStoredReadsAsPageOneNotCompletedAndNeverSynced) {
    auto& preferences = *YContactsPreferenceService::shared();
    const std::string user = freshUser();
    for (const bool isOrg : {false, true}) {
        EXPECT_EQ(preferences.startIndex(user, isOrg), 1);
        EXPECT_FALSE(preferences.completeState(user, isOrg));
    }
    EXPECT_FALSE(preferences.lastUpdatedTime(user).has_value());
}

TEST(YContactsPreferenceServiceTest, OrgAndPersonalProgressAreKeptUnderTheirOwnKeys) {
    auto& preferences = *YContactsPreferenceService::shared();
    const std::string user = freshUser();
    preferences.setStartIndex(user, 4, false);
    preferences.setStartIndex(user, 9, true);
    preferences.setCompleteState(user, true, true);
    preferences.setLastUpdatedTime(user, 1700000000123.5);

    EXPECT_EQ(preferences.startIndex(user, false), 4);
    EXPECT_EQ(preferences.startIndex(user, true), 9);
    EXPECT_FALSE(preferences.completeState(user, false));
    EXPECT_TRUE(preferences.completeState(user, true));
    EXPECT_EQ(preferences.lastUpdatedTime(user), 1700000000123.5);
    EXPECT_EQ(YUserDefaults::standard().integer(YContactsPreferenceService::orgStartIndexKey, user), 9);
    EXPECT_TRUE(YUserDefaults::standard().boolean("YContactsPreferenceConstants.orgIsCompleted", user));
}

TEST(YContactsPreferenceServiceTest, StoredValuesBelowOneAndATimeOfZeroReadAsTheDefaults) {
    auto& preferences = *YContactsPreferenceService::shared();
    const std::string user = freshUser();
    preferences.setStartIndex(user, 0, false);
    preferences.setStartIndex(user, -3, true);
    preferences.setLastUpdatedTime(user, 0.0);
    EXPECT_EQ(preferences.startIndex(user, false), 1);
    EXPECT_EQ(preferences.startIndex(user, true), 1);
    EXPECT_FALSE(preferences.lastUpdatedTime(user).has_value());
}

TEST(YContactsPreferenceServiceTest, UsersAreSeparateAndRemovingOneUserLeavesTheOther) {
    auto& preferences = *YContactsPreferenceService::shared();
    const std::string first = freshUser();
    const std::string second = freshUser();
    for (const auto& user : {first, second}) {
        preferences.setStartIndex(user, 5, false);
        preferences.setStartIndex(user, 6, true);
        preferences.setCompleteState(user, true, false);
        preferences.setCompleteState(user, true, true);
        preferences.setLastUpdatedTime(user, 42.0);
    }
    preferences.setStartIndex(second, 8, false);
    EXPECT_EQ(preferences.startIndex(first, false), 5);

    preferences.removeAllPreferences(first);

    for (const bool isOrg : {false, true}) {
        EXPECT_EQ(preferences.startIndex(first, isOrg), 1);
        EXPECT_FALSE(preferences.completeState(first, isOrg));
        EXPECT_TRUE(preferences.completeState(second, isOrg));
    }
    EXPECT_FALSE(preferences.lastUpdatedTime(first).has_value());
    EXPECT_EQ(preferences.startIndex(second, false), 8);
    EXPECT_EQ(preferences.startIndex(second, true), 6);
    EXPECT_EQ(preferences.lastUpdatedTime(second), 42.0);
}

}  // namespace
}  // namespace ycontacts

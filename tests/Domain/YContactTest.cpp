#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>
#include <unordered_set>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/Contacts/Domain/Entities/YTemporaryId.h"

namespace ycontacts {
namespace {

std::int64_t nowSeconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch())
        .count();
}

// The number after the prefix, or -1 when the rest is not all decimal digits.
std::int64_t numberAfter(const std::string& id, const std::string& prefix) {
    if (id.rfind(prefix, 0) != 0 || id.size() == prefix.size()) return -1;
    const std::string digits = id.substr(prefix.size());
    if (digits.find_first_not_of("0123456789") != std::string::npos) return -1;
    return std::stoll(digits);
}

TEST(YContactTest, DeviceContactGetsTemporaryIdAndCreationTimeInWholeSeconds) {
    const std::int64_t before = nowSeconds();
    const YContact contact("Ann");
    const std::int64_t after = nowSeconds();

    EXPECT_EQ(contact.firstName, "Ann");
    EXPECT_GE(contact.createdTime, before);
    EXPECT_LE(contact.createdTime, after);
    EXPECT_GT(numberAfter(contact.contactId, "TempContactId-"), 0) << contact.contactId;
    EXPECT_TRUE(contact.hasPhoto);
}

TEST(YContactTest, DisplayNameJoinsPresentPartsWithSingleSpaces) {
    YContact contact("1", "Ann", 0);
    EXPECT_EQ(contact.getDisplayName(), "Ann");

    contact.lastName = "Lee";
    EXPECT_EQ(contact.getDisplayName(), "Ann Lee");

    contact.middleName = "Maria";
    EXPECT_EQ(contact.getDisplayName(), "Ann Maria Lee");

    contact.lastName.reset();
    EXPECT_EQ(contact.getDisplayName(), "Ann Maria");

    contact.nickName = "Annie";
    EXPECT_EQ(contact.getDisplayName(), "Ann Maria") << "the nick name never takes part";
}

TEST(YContactTest, DisplayNameCountsPresenceNotContent) {
    YContact contact("1", "Ann", 0);
    contact.middleName = "";
    contact.lastName = "Lee";
    EXPECT_EQ(contact.getDisplayName(), "Ann  Lee");

    contact.lastName = "";
    EXPECT_EQ(contact.getDisplayName(), "Ann  ");

    contact.displayName = "Dr. Lee";
    EXPECT_EQ(contact.getDisplayName(), "Dr. Lee");

    contact.displayName = "";
    EXPECT_EQ(contact.getDisplayName(), "") << "a present empty display name is returned as is";
}

TEST(YContactTest, IdentityAndHashFollowTheContactIdAlone) {
    YContact ann("7", "Ann", 1);
    ann.lastName = "Lee";
    YContact renamed("7", "Anne", 2);
    renamed.isOrg = true;
    const YContact other("8", "Ann", 1);

    EXPECT_EQ(ann, renamed);
    EXPECT_EQ(std::hash<YContact>{}(ann), std::hash<YContact>{}(renamed));
    EXPECT_NE(ann, other);

    const std::unordered_set<YContact> set{ann, renamed, other};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(set.count(YContact("7", "", 0)), 1u);
}

TEST(YContactTest, NestedRecordsCompareByTheirIdentity) {
    YContact::Email primary("ann@example.com");
    primary.isPrimary = true;
    EXPECT_EQ(primary, YContact::Email("ann@example.com")) << "the primary flag does not count";
    EXPECT_NE(primary, YContact::Email("Ann@example.com")) << "addresses compare exactly, case and all";
    EXPECT_FALSE(YContact::Email("a").isPrimary);

    EXPECT_EQ(YContact::Category("c1"), YContact::Category("c1"));
    EXPECT_NE(YContact::Category("c1"), YContact::Category("c2"));
}

TEST(YTemporaryIdTest, ContactAndCategoryIdsCarryTheTimeScaledNumberPlusRandomPart) {
    const double before = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    const std::string contactId = YContact::generateRandomContactId();
    const std::string categoryId = YContactCategory::generateRandomCategoryId();
    const double after = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();

    const auto low = static_cast<std::int64_t>(before * 100000.0);
    const auto high = static_cast<std::int64_t>(after * 100000.0) + 9999;
    for (const auto& [id, prefix] : {std::pair{contactId, "TempContactId-"}, std::pair{categoryId, "TempCategoryId-"}}) {
        const std::int64_t number = numberAfter(id, prefix);
        EXPECT_GE(number, low) << id;
        EXPECT_LE(number, high) << id;
    }
}

TEST(YTemporaryIdTest, NumberCutsTheScaledTimeAndRefusesOverflow) {
    EXPECT_EQ(temporaryIdNumber(1700000000.5, 42), 170000000050000 + 42);
    EXPECT_EQ(temporaryIdNumber(1.000009999, 0), 100000) << "the fraction of the scaled time is cut off";
    EXPECT_EQ(temporaryIdNumber(0.0, 9999), 9999);

    constexpr auto max = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ(temporaryIdNumber(0.0, max), max);
    EXPECT_FALSE(temporaryIdNumber(1.0, max)) << "the addition would overflow";
    EXPECT_FALSE(temporaryIdNumber(1e14, 0)) << "the scaled time does not fit 64 bits";
    EXPECT_FALSE(temporaryIdNumber(-1e14, 0));
    EXPECT_FALSE(temporaryIdNumber(std::numeric_limits<double>::quiet_NaN(), 0));
    EXPECT_FALSE(temporaryIdNumber(std::numeric_limits<double>::infinity(), 0));
}

}  // namespace
}  // namespace ycontacts

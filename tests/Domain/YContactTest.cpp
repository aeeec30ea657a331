#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/Contacts/Domain/Entities/YTemporaryId.h"

namespace ycontacts {
namespace {

TEST(YContactTest, DisplayNameIsTheDisplayNameOrThePresentPartsJoinedBySpaces) {
    using Text = std::optional<std::string>;
    const struct {
        Text middle, last, nick, display;
        std::string expected;
    } rows[] = {
        {{}, {}, {}, {}, "Ann"},
        {{}, "Lee", {}, {}, "Ann Lee"},
        {"Maria", "Lee", "Annie", {}, "Ann Maria Lee"},
        {"", "", {}, {}, "Ann  "},
        {"Maria", "Lee", {}, "Dr. Lee", "Dr. Lee"},
        {{}, "Lee", {}, "", ""},
    };
    for (const auto& row : rows) {
        YContact contact("1", "Ann", 0);
        contact.middleName = row.middle;
        contact.lastName = row.last;
        contact.nickName = row.nick;
        contact.displayName = row.display;
        EXPECT_EQ(contact.getDisplayName(), row.expected);
    }
}

TEST(YContactTest, RecordsCompareByTheirIdentityAlone) {
    YContact ann("7", "Ann", 1);
    ann.lastName = "Lee";
    EXPECT_EQ(ann, YContact("7", "Anne", 2));
    EXPECT_NE(ann, YContact("8", "Ann", 1));
    YContact::Email primary("ann@example.com");
    primary.isPrimary = true;
    EXPECT_EQ(primary, YContact::Email("ann@example.com")) << "the primary flag does not count";
    EXPECT_NE(primary, YContact::Email("Ann@example.com")) << "addresses compare exactly, case and all";
    EXPECT_EQ(YContact::Category("c1"), YContact::Category("c1"));
    EXPECT_NE(YContact::Category("c1"), YContact::Category("c2"));
}

TEST(YTemporaryIdTest, NewIdsCarryTheTimeScaledNumberPlusARandomPart) {
    const auto now = [] { return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()); };
    const auto before = now();
    const YContact device("Ann");
    const std::string categoryId = YContactCategory(std::nullopt).categoryId;
    const auto after = now();
    EXPECT_GE(device.createdTime, static_cast<std::int64_t>(before.count()));
    EXPECT_LE(device.createdTime, static_cast<std::int64_t>(after.count()));
    for (const auto& [id, prefix] : {std::pair{device.contactId, std::string("TempContactId-")},
                                     std::pair{categoryId, std::string("TempCategoryId-")}}) {
        ASSERT_EQ(id.rfind(prefix, 0), 0u) << id;
        const auto digits = id.substr(prefix.size());
        ASSERT_EQ(digits.find_first_not_of("0123456789"), std::string::npos) << id;
        EXPECT_GE(std::stoll(digits), static_cast<std::int64_t>(before.count() * 100000.0)) << id;
        EXPECT_LE(std::stoll(digits), static_cast<std::int64_t>(after.count() * 100000.0) + 9999) << id;
    }
}

TEST(YTemporaryIdTest, NumberCutsTheScaledTimeAndRefusesOverflow) {
    constexpr auto max = std::numeric_limits<std::int64_t>::max();
    constexpr auto nan = std::numeric_limits<double>::quiet_NaN();
    constexpr auto infinity = std::numeric_limits<double>::infinity();
    const struct {
        double seconds;
        std::int64_t random;
        std::optional<std::int64_t> expected;
    } rows[] = {{1700000000.5, 42, 170000000050000 + 42},
                {1.000009999, 0, 100000},
                {0.0, 9999, 9999},
                {0.0, max, max},
                {1.0, max, std::nullopt},
                {1e14, 0, std::nullopt},
                {nan, 0, std::nullopt},
                {infinity, 0, std::nullopt}};
    for (const auto& row : rows) {
        EXPECT_EQ(temporaryIdNumber(row.seconds, row.random), row.expected) << row.seconds << " + " << row.random;
    }
}

}  // namespace
}  // namespace ycontacts

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YContactType.h"

namespace ycontacts {
namespace {

// Checks that the table's raw strings are exactly `expected`, in case order, and map back to their cases.
template <class E>
void expectRawValues(const std::vector<std::string_view>& expected) {
    std::vector<std::string_view> actual;
    std::set<std::string_view> distinct;
    for (const auto& entry : YRawValues<E>::entries) {
        actual.push_back(toRawValue(entry.value));
        distinct.insert(entry.raw);
        EXPECT_EQ(fromRawValue<E>(entry.raw), entry.value) << entry.raw;
    }
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(distinct.size(), expected.size()) << "raw strings must be distinct";
}

TEST(YRawValueTest, EveryEnumerationMapsBothWaysWithItsExactStrings) {
    expectRawValues<YContact::PhoneType>({"mobile", "home", "work", "fax", "others"});
    expectRawValues<YContact::IMType>({"google", "yahoo", "skype", "aol", "icq", "msn", "jabber", "others"});
    expectRawValues<YContact::URLType>(
        {"personal", "company", "blog", "linkedIn", "facebook", "twitter", "amazon", "flikr", "delicious", "other"});
    expectRawValues<YContact::Gender>({"male", "female"});
    expectRawValues<YContactType>({"group", "user"});
}

}  // namespace
}  // namespace ycontacts

// The contact filter: which contacts a keyword keeps, and the order it gives them.

#include <gtest/gtest.h>

#include "DataManager/QueriesTestSupport.h"

namespace ycontacts::querytest {
namespace {

TEST(QueriesFilterTest, OrdersByWeightageThenPersonalFirstThenNameDescendingKeepingTies) {
    const std::vector<YContact> contacts{
        contact("1", "Ann", "Able", 1),       contact("2", "ann", "able", 1),       // equal names, incoming order
        contact("3", "Anton", std::nullopt, 1, /*isOrg=*/true), contact("4", "Amy", std::nullopt, 5),
        contact("5", "Anna", "Zane", 1),      contact("6", "Ann", "Abbot", 1),
    };
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(contacts, "A", std::nullopt)),
              (Ids{"4", "5", "1", "2", "6", "3"}));
    // The limit applies after sorting.
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(contacts, "a", 2)), (Ids{"4", "5"}));
}

TEST(QueriesFilterTest, KeepsPrefixMatchesOfNamesAndAddressesOnceEach) {
    YContact nick = contact("3", "Robert");
    nick.nickName = "Bobby";
    YContact mail = contact("4", "Xavier");
    mail.emails = {YContact::Email("x@corp"), YContact::Email("BO@home")};
    const std::vector<YContact> contacts{
        contact("1", "Bob", "Stone"), contact("2", "Ann", "Bolt"), nick, mail, contact("5", "Abo"),
        contact("1", "Duplicate", "Bo"),
    };
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(contacts, "BO", std::nullopt)), (Ids{"4", "3", "1", "2"}));
    // "first last" matches across the space; a middle-of-word match does not.
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(contacts, "ann b", std::nullopt)), (Ids{"2"}));
    EXPECT_TRUE(YContactsQueries::filterContacts(contacts, "tone", std::nullopt).empty());
}

}  // namespace
}  // namespace ycontacts::querytest

#include <gtest/gtest.h>

#include "Store/StoreTestSupport.h"
#include "Support/LogCapture.h"

namespace ycontacts::storetest {
namespace {

using Ids = std::vector<std::string>;

class StoreReadsTest : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        YContact ann = withEmail(contact("ann", "ann", 5), "zed@example.com");
        ann.lastName = "Zimmer";
        YContact bob = withEmail(contact("bob", "Bob", 5, true), "bob@corp.example");
        bob.nickName = "Anchor";
        YContact amy = withEmail(contact("amy", "Amy", 9), "amy@home.example");
        amy = withEmail(amy, "amy@corp.example");
        YContact carl = withEmail(contact("carl", "Carl", 1, true), "ANNOUNCE@corp.example");
        carl.type = YContactType::group;
        YContact dora = contact("dora", "Dora", 0);
        dora.lastName = "Annan";
        ASSERT_TRUE(store->save("u1", {ann, bob, amy, carl, dora}));
        ASSERT_TRUE(store->save("u2", {contact("ann", "Ann of u2", 99)}));
    }
};

TEST_F(StoreReadsTest, ListingOrdersByWeightThenNameIgnoringCaseAndPages) {
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1"})), (Ids{"amy", "ann", "bob", "carl", "dora"}));
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .from = 1, .limit = 2})), (Ids{"ann", "bob"}));
    EXPECT_EQ(idsOf(store->getContactsList({.yuid = "u1", .from = 4, .limit = 10})), (Ids{"dora"}));
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .isOrg = true})), (Ids{"bob", "carl"}));
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .isOrg = false})), (Ids{"amy", "ann", "dora"}));
}

TEST_F(StoreReadsTest, SearchesWalkThePrefixIndexesInListOrderWithoutSortingTheMatches) {
    // One, two and three letters use their own prefix index; longer texts use the three-letter one. The
    // index gives the list order, so nothing is sorted and the walk ends at the page's end.
    const std::pair<std::string, std::string> cases[] = {
        {"a", "YContactSearchPrefix1"}, {"an", "YContactSearchPrefix2"}, {"ann", "YContactSearchPrefix3"},
        {"anna k", "YContactSearchPrefix3"}};
    for (const auto& [text, index] : cases) {
        for (const bool withoutNickNamesOrGroups : {false, true}) {
            const auto [sql, bindings] = YContactsDatabaseService::searchStatement(
                "u1", text, true, !withoutNickNamesOrGroups, withoutNickNamesOrGroups, 50, 0);
            const auto plan =
                YSqliteHelper::getShared().select("EXPLAIN QUERY PLAN " + sql, bindings, true, identifier());
            ASSERT_TRUE(plan.ok()) << text;
            std::string details;
            for (const auto& row : plan.value()) details += std::get<std::string>(row.at("detail")) + "\n";
            EXPECT_NE(details.find("SEARCH s USING COVERING INDEX " + index), std::string::npos) << details;
            EXPECT_EQ(details.find("TEMP B-TREE"), std::string::npos) << details;
        }
    }
}

TEST_F(StoreReadsTest, LookupsByAddressUserIdAndIdPickTheRightContact) {
    YContact personal = withEmail(contact("p-ann", "Ann at home", 0), "shared@example.com");
    YContact org = withEmail(contact("o-ann", "Ann at work", 0, true), "shared@example.com");
    org.contactYuid = "ann-yuid";
    ASSERT_TRUE(store->save("u1", {personal, org}));

    EXPECT_EQ(store->getContactByEmailId("u1", "SHARED@example.com", true)->contactId, "p-ann");
    EXPECT_EQ(store->getContactByEmailId("u1", "shared@example.com", false)->contactId, "o-ann");
    EXPECT_FALSE(store->getContactByEmailId("u1", "nobody@example.com", true).has_value());
    EXPECT_EQ(store->getContactByContactYuid("u1", "ann-yuid")->contactId, "o-ann");
    EXPECT_FALSE(store->getContactByContactYuid("u2", "ann-yuid").has_value());
    EXPECT_EQ(store->getContactByContactId("u2", "ann")->firstName, "Ann of u2");

    EXPECT_EQ(idsOf(store->getContactsFromEmailIds("u1", {"AMY@corp.example", "amy@home.example", "shared@example.com"},
                                                   std::nullopt)),
              (Ids{"amy", "p-ann", "o-ann"}));
    EXPECT_EQ(idsOf(store->getContactsFromEmailIds("u1", {"shared@example.com"}, true)), (Ids{"o-ann"}));
    EXPECT_TRUE(store->getContactsFromEmailIds("u1", {}, std::nullopt)->empty());
}

TEST_F(StoreReadsTest, CountsSplitOrgAndPersonalPerUser) {
    EXPECT_EQ(store->getContactCount("u1"), std::make_pair(std::int64_t{2}, std::int64_t{3}));
    EXPECT_EQ(store->getContactCount("u2"), std::make_pair(std::int64_t{0}, std::int64_t{1}));
    EXPECT_EQ(store->getContactCount("nobody"), std::make_pair(std::int64_t{0}, std::int64_t{0}));
}

TEST_F(StoreReadsTest, SuggestionsGiveOneEntryPerAddressPersonalBeforeOrgAtEqualWeight) {
    YContact personal = withEmail(contact("p-sam", "Sam", 3), "sam@example.com");
    YContact org = withEmail(contact("o-sam", "Sam", 3, true), "sam@example.com");
    org = withEmail(org, "samuel@corp.example");
    org.contactYuid = "sam-yuid";
    ASSERT_TRUE(store->save("u1", {org, personal}));

    const auto suggestions = store->getSuggestionContacts({.yuid = "u1", .searchStr = "SA", .limit = 10});
    ASSERT_TRUE(suggestions.has_value());
    ASSERT_EQ(suggestions->size(), 2u);
    EXPECT_EQ(suggestions->at(0).email, "sam@example.com");
    EXPECT_EQ(suggestions->at(0).contactId, "p-sam");
    EXPECT_EQ(suggestions->at(1).email, "samuel@corp.example");
    EXPECT_EQ(suggestions->at(1).yuid, "sam-yuid");
    EXPECT_TRUE(suggestions->at(1).isOrg);

    EXPECT_EQ(
        store->getSuggestionContacts({.yuid = "u1", .searchStr = "sam", .limit = 10, .isOrg = true})->front().contactId,
        "o-sam");
    EXPECT_EQ(store->getSuggestionContacts({.yuid = "u1", .searchStr = "sam", .limit = 1})->size(), 1u);
    // Only amy's address that matches is offered when the name does not match.
    const auto byAddress = store->getSuggestionContacts({.yuid = "u1", .searchStr = "amy@c", .limit = 10});
    ASSERT_EQ(byAddress->size(), 1u);
    EXPECT_EQ(byAddress->front().email, "amy@corp.example");
}

TEST_F(StoreReadsTest, CategoryMembersAndCategoryNamesAreReadPerUser) {
    YContact member = contact("m-1", "Member", 2);
    member.categories = std::vector<YContact::Category>{YContact::Category("friends")};
    ASSERT_TRUE(store->save("u1", {member}));
    ASSERT_TRUE(store->addCategories("u1", {YContactCategory("friends"), YContactCategory("Acme")}));
    auto renamed = YContactCategory("friends");
    renamed.categoryName = "Best friends";
    ASSERT_TRUE(store->addCategories("u1", {renamed}));

    EXPECT_EQ(idsOf(store->getContacts("u1", std::string("friends"))), (Ids{"m-1"}));
    EXPECT_TRUE(store->getContacts("u2", std::string("friends"))->empty());
    const auto categories = store->getCategories("u1");
    ASSERT_EQ(categories->size(), 2u);
    EXPECT_EQ(categories->at(1).categoryName, "Best friends");
}

TEST(StoreWithoutTablesTest, FailingReadsAreAbsentFailingWritesAreFalseAndBothAreLogged) {
    YContactsDatabaseService store("StoreWithoutTables-unregistered-path",
                                   std::filesystem::path("/nonexistent-dir/for/sure/contacts.sqlite"));
    testsupport::LogCapture log;
    EXPECT_FALSE(store.save("u1", {contact("a", "A")}));
    EXPECT_FALSE(store.getContacts({.yuid = "u1"}).has_value());
    EXPECT_FALSE(store.getContactByContactId("u1", "a").has_value());
    EXPECT_FALSE(store.getContactCount("u1").has_value());
    EXPECT_FALSE(store.getSuggestionContacts({.yuid = "u1", .searchStr = "a", .limit = 5}).has_value());
    EXPECT_FALSE(store.getCategories("u1").has_value());
    EXPECT_FALSE(log.messages().empty());
}

}  // namespace
}  // namespace ycontacts::storetest

namespace ycontacts::storetest {
namespace {

TEST_F(StoreTest, ChildRowsReachTheirOwnContactInSmallPagesAndWholeListings) {
    EXPECT_TRUE(YContactsDatabaseSchema::createTables(identifier()));
    std::vector<YContact> many;
    for (int index = 0; index < 2100; ++index) {
        YContact made = contact("id-" + std::to_string(index), "Name" + std::to_string(index), index % 7);
        made.phones = {{"tel-" + std::to_string(index), YContact::PhoneType::home}};
        many.push_back(made);
    }
    ASSERT_TRUE(store->save("u1", many));
    const auto checkPhones = [](const std::optional<std::vector<YContact>>& contacts, std::size_t expected) {
        ASSERT_TRUE(contacts.has_value());
        ASSERT_EQ(contacts->size(), expected);
        for (const auto& each : *contacts) {
            ASSERT_EQ(each.phones.size(), 1u) << each.contactId;
            EXPECT_EQ(each.phones.front().phoneNumber, "tel-" + each.contactId.substr(3));
        }
    };
    checkPhones(store->getContacts({.yuid = "u1", .from = 3, .limit = 20}), 20);
    checkPhones(store->getContacts({.yuid = "u1", .from = 0, .limit = 300}), 300);
    checkPhones(store->getContacts({.yuid = "u1"}), 2100);
}

}  // namespace
}  // namespace ycontacts::storetest

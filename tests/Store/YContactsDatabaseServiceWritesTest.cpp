#include <gtest/gtest.h>

#include "Domain/ContactComparison.h"
#include "Store/StoreTestSupport.h"

namespace ycontacts::storetest {
namespace {

using ::ycontacts::testing::fullyPopulatedContact;
using ::ycontacts::testing::sameContactFields;

class StoreWritesTest : public StoreTest {};

TEST_F(StoreWritesTest, EveryStoredFieldSurvivesSaveAndRead) {
    const YContact original = fullyPopulatedContact();
    store->save("u1", {original});

    const auto read = store->getContactByContactId("u1", original.contactId);
    ASSERT_TRUE(read.has_value());
    const YContact& expected = original;
    EXPECT_TRUE(sameContactFields(expected, *read));

    const auto listed = store->getContacts("u1", std::nullopt, std::nullopt, std::nullopt, std::nullopt);
    ASSERT_TRUE(listed.has_value());
    ASSERT_EQ(listed->size(), 1u);
    EXPECT_TRUE(sameContactFields(expected, listed->front()));
}

TEST_F(StoreWritesTest, AbsentOptionalFieldsStayAbsent) {
    YContact bare("c-1", "Bo", 5);
    bare.hasPhoto = true;
    store->save("u1", {bare});
    const auto read = store->getContactByContactId("u1", "c-1");
    ASSERT_TRUE(read.has_value());
    EXPECT_TRUE(sameContactFields(bare, *read));
}

TEST_F(StoreWritesTest, SavingAgainReplacesChildRowsTheContactNoLongerHas) {
    YContact first = fullyPopulatedContact();
    store->save("u1", {first});
    ASSERT_EQ(countRows("YContactPhoneTable"), 2);

    YContact second = first;
    second.phones = {first.phones.front()};
    second.emails = {first.emails.front()};
    second.categories.reset();
    store->save("u1", {second});

    EXPECT_EQ(countRows("YContactPhoneTable"), 1);
    EXPECT_EQ(countRows("YContactPhoneTable", "phoneNumber = '+1 555 0199'"), 0);
    EXPECT_EQ(countRows("YContactEmailTable"), 1);
    EXPECT_EQ(countRows("YContactCategoryTable"), 0);
    const auto read = store->getContactByContactId("u1", first.contactId);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->phones, second.phones);
    EXPECT_FALSE(read->categories.has_value());
}

TEST_F(StoreWritesTest, PersonalAndOrgContactWithOneIdShareOneRowAndTheLaterWriteWins) {
    store->save("u1", {contact("same", "Personal", 1, false)});
    store->save("u1", {contact("same", "Colleague", 2, true)});

    EXPECT_EQ(countRows("YContactDetail"), 1);
    const auto read = store->getContactByContactId("u1", "same");
    ASSERT_TRUE(read.has_value());
    EXPECT_TRUE(read->isOrg);
    EXPECT_EQ(read->firstName, "Colleague");
    EXPECT_EQ(store->getContactCount("u1"), std::make_pair(std::int64_t{1}, std::int64_t{0}));
}

TEST_F(StoreWritesTest, UsersNeverSeeOrTouchEachOthersRows) {
    store->save("alice", {withEmail(contact("c-1", "Ann"), "ann@example.com")});
    store->save("bob", {withEmail(contact("c-1", "Ben"), "ben@example.com")});
    store->addCategories("alice", {YContactCategory("cat")});

    EXPECT_EQ(store->getContactByContactId("alice", "c-1")->firstName, "Ann");
    EXPECT_EQ(store->getContactByContactId("bob", "c-1")->firstName, "Ben");
    EXPECT_FALSE(store->getContactByEmailId("bob", "ann@example.com", true).has_value());
    EXPECT_TRUE(store->getCategories("bob")->empty());

    store->deleteContacts("bob", {"c-1"});
    store->deleteAllDetails("bob");
    EXPECT_FALSE(store->getContactByContactId("bob", "c-1").has_value());
    const auto alice = store->getContactByContactId("alice", "c-1");
    ASSERT_TRUE(alice.has_value());
    EXPECT_EQ(alice->emails.size(), 1u);
}

TEST_F(StoreWritesTest, IdsCarryingQuotesOrColumnNamesOnlyEverReachThemselves) {
    const std::vector<std::string> hostile{"x' or '1'='1", "y\" or \"1\"=\"1", "contactId", "YUID", "rowid",
                                           "q\"\")--"};
    std::vector<YContact> contacts{contact("plain-1", "Plain"), contact("plain-2", "Other")};
    for (const auto& id : hostile) contacts.push_back(contact(id, "Hostile"));
    store->save("u1", contacts);
    store->save("it's me", {contact("plain-1", "Victim")});
    store->save("other", {contact("plain-1", "Bystander")});
    ASSERT_EQ(countRows("YContactDetail"), 10);

    for (const auto& id : hostile) {
        ASSERT_TRUE(store->getContactByContactId("u1", id).has_value()) << id;
        store->deleteContacts("u1", {id});
        EXPECT_FALSE(store->getContactByContactId("u1", id).has_value()) << id;
    }
    EXPECT_EQ(countRows("YContactDetail"), 4);
    EXPECT_TRUE(store->getContactByContactId("u1", "plain-2").has_value());

    store->deleteAllDetails("it' or '1'='1");
    store->deleteContacts("x' or yuid <> '", {"plain-1"});
    store->updateUsageCount("u1' or '1'='1", "plain-1", "99");
    store->fixPersonalContacts("u1' or '1'='1");
    EXPECT_EQ(countRows("YContactDetail"), 4);
    EXPECT_EQ(countRows("YContactDetail", "weightage = 99"), 0);

    store->deleteAllDetails("it's me");
    EXPECT_EQ(countRows("YContactDetail"), 3);
    EXPECT_EQ(store->getContactByContactId("other", "plain-1")->firstName, "Bystander");
}

TEST_F(StoreWritesTest, StatementsForOrdinaryIdsKeepTheirDocumentedText) {
    EXPECT_EQ(YContactsDatabaseService::userCondition("u-1"), "yuid = 'u-1'");
    EXPECT_EQ(YContactsDatabaseService::idList({"a", "b", "c"}), "\"a\", \"b\", \"c\"");
    EXPECT_EQ(YContactsDatabaseService::idList({"only"}), "\"only\"");
    EXPECT_EQ(YContactsDatabaseService::idList({}), "");
    EXPECT_EQ(YContactsDatabaseService::fixPersonalContactsStatement("u-1"),
              "UPDATE YContactDetail SET type = IFNULL((SELECT type from YContactDetail as c1 WHERE c1.primaryEmail "
              "= YContactDetail.primaryEmail and c1.isOrg = 1), type) , contactYuid = IFNULL((SELECT contactYuid "
              "from YContactDetail as c1 WHERE c1.primaryEmail = YContactDetail.primaryEmail and c1.isOrg = 1), "
              "contactYuid) WHERE isOrg = 0 and yuid = 'u-1'");
}

TEST_F(StoreWritesTest, EmptyDeleteChangesNothingAndClearingAUserKeepsItsCategories) {
    store->save("u1", {fullyPopulatedContact()});
    store->addCategories("u1", {YContactCategory("cat-1"), YContactCategory("cat-2")});
    store->deleteContacts("u1", {});
    EXPECT_EQ(countRows("YContactDetail"), 1);

    store->deleteAllDetails("u1");
    for (const char* table : {"YContactDetail", "YContactEmailTable", "YContactPhoneTable", "YContactIMTable",
                              "YContactUrlTable", "YContactCategoryTable"}) {
        EXPECT_EQ(countRows(table), 0) << table;
    }
    EXPECT_EQ(store->getCategories("u1")->size(), 2u);

    store->deleteCategories("u1", {"cat-1"});
    const auto left = store->getCategories("u1");
    ASSERT_EQ(left->size(), 1u);
    EXPECT_EQ(left->front().categoryId, "cat-2");
}

TEST_F(StoreWritesTest, RenumberingCopiesTheContactAndKeepsTheOldRows) {
    store->save("u1", {fullyPopulatedContact()});
    store->updateContactId("u1", "missing", "new-id");
    EXPECT_EQ(countRows("YContactDetail"), 1);

    store->updateContactId("u1", "c-17", "new-id");
    const auto renamed = store->getContactByContactId("u1", "new-id");
    ASSERT_TRUE(renamed.has_value());
    EXPECT_EQ(renamed->phones.size(), 2u);
    EXPECT_TRUE(store->getContactByContactId("u1", "c-17").has_value());
}

TEST_F(StoreWritesTest, PersonalRowsTakeTypeAndUserIdFromAnOrgRowWithTheSamePrimaryAddress) {
    YContact colleague = withEmail(contact("org-1", "Ann", 0, true), "ann@corp.example");
    colleague.contactYuid = "ann-yuid";
    colleague.type = YContactType::group;
    YContact friendCopy = withEmail(contact("p-1", "Annie"), "ann@corp.example");
    YContact stranger = withEmail(contact("p-2", "Sam"), "sam@home.example");
    stranger.contactYuid = "sam-own";
    store->save("u1", {colleague, friendCopy, stranger});

    store->fixPersonalContacts("u1");

    const auto fixed = store->getContactByContactId("u1", "p-1");
    EXPECT_EQ(fixed->contactYuid, "ann-yuid");
    EXPECT_EQ(fixed->type, YContactType::group);
    const auto untouched = store->getContactByContactId("u1", "p-2");
    EXPECT_EQ(untouched->contactYuid, "sam-own");
    EXPECT_EQ(untouched->type, YContactType::user);
}

TEST_F(StoreWritesTest, UsageCountsSetTheWeightOfEachListedContact) {
    store->save("u1", {contact("a", "A"), contact("b", "B"), contact("c", "C")});
    store->updateContactsUsageCount("u1", {{"a", "7"}, {"b", "3"}, {"zzz", "9"}});
    EXPECT_EQ(store->getContactByContactId("u1", "a")->weightage, 7);
    EXPECT_EQ(store->getContactByContactId("u1", "b")->weightage, 3);
    EXPECT_EQ(store->getContactByContactId("u1", "c")->weightage, 0);
}

TEST(StoreSharedInstanceTest, LaterCallsReturnTheFirstStoreWhateverTheirArguments) {
    testsupport::TemporaryDirectory directory;
    const auto first = YContactsDatabaseService::getSharedInstance("SharedStoreTest", directory.file("a.sqlite"));
    const auto second = YContactsDatabaseService::getSharedInstance("Elsewhere", directory.file("b.sqlite"));
    EXPECT_EQ(first.get(), second.get());
    EXPECT_EQ(second->identifier, "SharedStoreTest");
    YSqliteHelper::getShared().unregisterDB("SharedStoreTest");
}

}  // namespace
}  // namespace ycontacts::storetest

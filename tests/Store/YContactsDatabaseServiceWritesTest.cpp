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
    ASSERT_TRUE(store->save("u1", {original}));

    const auto read = store->getContactByContactId("u1", original.contactId);
    ASSERT_TRUE(read.has_value());
    const YContact& expected = original;
    EXPECT_TRUE(sameContactFields(expected, *read));

    const auto listed = store->getContacts({.yuid = "u1"});
    ASSERT_TRUE(listed.has_value());
    ASSERT_EQ(listed->size(), 1u);
    EXPECT_TRUE(sameContactFields(expected, listed->front()));
}

TEST_F(StoreWritesTest, AbsentOptionalFieldsStayAbsent) {
    YContact bare("c-1", "Bo", 5);
    bare.hasPhoto = true;
    ASSERT_TRUE(store->save("u1", {bare}));
    const auto read = store->getContactByContactId("u1", "c-1");
    ASSERT_TRUE(read.has_value());
    EXPECT_TRUE(sameContactFields(bare, *read));
}

TEST_F(StoreWritesTest, SavingAgainReplacesChildRowsTheContactNoLongerHas) {
    YContact first = fullyPopulatedContact();
    ASSERT_TRUE(store->save("u1", {first}));
    ASSERT_EQ(countRows("YContactPhoneTable"), 2);

    YContact second = first;
    second.phones = {first.phones.front()};
    second.emails = {first.emails.front()};
    second.categories.reset();
    ASSERT_TRUE(store->save("u1", {second}));

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
    ASSERT_TRUE(store->save("u1", {contact("same", "Personal", 1, false)}));
    ASSERT_TRUE(store->save("u1", {contact("same", "Colleague", 2, true)}));

    EXPECT_EQ(countRows("YContactDetail"), 1);
    const auto read = store->getContactByContactId("u1", "same");
    ASSERT_TRUE(read.has_value());
    EXPECT_TRUE(read->isOrg);
    EXPECT_EQ(read->firstName, "Colleague");
    EXPECT_EQ(store->getContactCount("u1"), std::make_pair(std::int64_t{1}, std::int64_t{0}));
}

// The users' ids are bound like every other value, so ids that would read as SQL reach only their own rows.
TEST_F(StoreWritesTest, UsersNeverSeeOrTouchEachOthersRows) {
    const std::string alice = "it's me";
    const std::string bob = "x' or yuid <> '";
    ASSERT_TRUE(store->save(alice, {withEmail(contact("c-1", "Ann"), "ann@example.com")}));
    ASSERT_TRUE(store->save(bob, {withEmail(contact("c-1", "Ben"), "ben@example.com")}));
    ASSERT_TRUE(store->addCategories(alice, {YContactCategory("cat")}));

    EXPECT_EQ(store->getContactByContactId(alice, "c-1")->firstName, "Ann");
    EXPECT_EQ(store->getContactByContactId(bob, "c-1")->firstName, "Ben");
    EXPECT_FALSE(store->getContactByEmailId(bob, "ann@example.com", true).has_value());
    EXPECT_TRUE(store->getCategories(bob)->empty());

    ASSERT_TRUE(store->updateUsageCount(bob, "c-1", "99"));
    ASSERT_TRUE(store->fixPersonalContacts(bob));
    ASSERT_TRUE(store->deleteContacts(bob, {"c-1"}));
    ASSERT_TRUE(store->deleteAllDetails(bob));
    EXPECT_FALSE(store->getContactByContactId(bob, "c-1").has_value());
    const auto kept = store->getContactByContactId(alice, "c-1");
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ(kept->emails.size(), 1u);
    EXPECT_EQ(kept->weightage, 0);
}

// Ids as a server may send them. "nul" is both the NUL id's prefix and the bystander's id.
const std::vector<std::string> hostileIds{
    "x' or '1'='1", "y\" or \"1\"=\"1", std::string("nul\0id", 6), "contactId", "YUID", "rowid", "q\"\")--",
    "1); DROP TABLE YContactDetail; --", std::string(10000, 'k'), "Zo\u00eb \u5c71\u7530 \U0001F600"};

TEST_F(StoreWritesTest, AnyIdIsStoredFoundUpdatedAndDeletedExactlyAndTouchesNoOtherRow) {
    const YContact bystander = withEmail(contact("nul", "Bystander", 3), "by@example.com");
    for (const auto& id : hostileIds) {
        SCOPED_TRACE(::testing::PrintToString(id.substr(0, 40)));
        ASSERT_TRUE(store->save("u1", {bystander, withEmail(contact(id, "Hostile"), "hostile@example.com")}));
        const auto read = store->getContactByContactId("u1", id);
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->contactId, id);
        EXPECT_EQ(read->emails.size(), 1u);
        EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .searchStr = "hostile"})), std::vector<std::string>{id});

        ASSERT_TRUE(store->updateContacts("u1", {contact(id, "Changed")}));
        ASSERT_TRUE(store->updateContactsUsageCount("u1", {{id, "42"}}));
        const auto updated = store->getContactByContactId("u1", id);
        ASSERT_TRUE(updated.has_value());
        EXPECT_EQ(updated->firstName, "Changed");
        EXPECT_EQ(updated->weightage, 42);

        ASSERT_TRUE(store->deleteContacts("u1", {id}));
        EXPECT_FALSE(store->getContactByContactId("u1", id).has_value());
        const auto kept = store->getContactByContactId("u1", "nul");
        ASSERT_TRUE(kept.has_value());
        EXPECT_TRUE(sameContactFields(bystander, *kept));
        EXPECT_EQ(countRows("YContactDetail"), 1);
        EXPECT_EQ(countRows("YContactEmailTable"), 1);
    }
}

TEST_F(StoreWritesTest, EmptyDeleteChangesNothingAndClearingAUserKeepsItsCategories) {
    ASSERT_TRUE(store->save("u1", {fullyPopulatedContact()}));
    ASSERT_TRUE(store->addCategories("u1", {YContactCategory("cat-1"), YContactCategory("cat-2")}));
    ASSERT_TRUE(store->deleteContacts("u1", {}));
    EXPECT_EQ(countRows("YContactDetail"), 1);

    ASSERT_TRUE(store->deleteAllDetails("u1"));
    for (const char* table : {"YContactDetail", "YContactEmailTable", "YContactPhoneTable", "YContactIMTable",
                              "YContactUrlTable", "YContactCategoryTable"}) {
        EXPECT_EQ(countRows(table), 0) << table;
    }
    EXPECT_EQ(store->getCategories("u1")->size(), 2u);

    ASSERT_TRUE(store->deleteCategories("u1", {"cat-1"}));
    const auto left = store->getCategories("u1");
    ASSERT_EQ(left->size(), 1u);
    EXPECT_EQ(left->front().categoryId, "cat-2");
}

TEST_F(StoreWritesTest, RenumberingCopiesTheContactAndKeepsTheOldRows) {
    ASSERT_TRUE(store->save("u1", {fullyPopulatedContact()}));
    EXPECT_FALSE(store->updateContactId("u1", "missing", "new-id"));
    EXPECT_EQ(countRows("YContactDetail"), 1);

    ASSERT_TRUE(store->updateContactId("u1", "c-17", "new-id"));
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
    ASSERT_TRUE(store->save("u1", {colleague, friendCopy, stranger}));

    ASSERT_TRUE(store->fixPersonalContacts("u1"));

    const auto fixed = store->getContactByContactId("u1", "p-1");
    EXPECT_EQ(fixed->contactYuid, "ann-yuid");
    EXPECT_EQ(fixed->type, YContactType::group);
    const auto untouched = store->getContactByContactId("u1", "p-2");
    EXPECT_EQ(untouched->contactYuid, "sam-own");
    EXPECT_EQ(untouched->type, YContactType::user);
}

TEST_F(StoreWritesTest, UsageCountsSetTheWeightOfEachListedContact) {
    ASSERT_TRUE(store->save("u1", {contact("a", "A"), contact("b", "B"), contact("c", "C")}));
    ASSERT_TRUE(store->updateContactsUsageCount("u1", {{"a", "7"}, {"b", "3"}, {"zzz", "9"}}));
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

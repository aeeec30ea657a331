#include <gtest/gtest.h>

#include "Domain/ContactComparison.h"
#include "Store/StoreTestSupport.h"
#include "Support/LogCapture.h"

namespace ycontacts::storetest {
namespace {

using ::ycontacts::testing::fullyPopulatedContact;
using ::ycontacts::testing::sameContactFields;

// The list form carries what a list shows: names, addresses, phones, photo and work title, not the rest.
YContact listForm(YContact contact) {
    if (contact.workInfo) contact.workInfo->address.reset();
    contact.address.reset();
    contact.IMs.clear();
    contact.urls.clear();
    contact.categories.reset();
    contact.birthDate = contact.birthMonth = contact.birthYear = std::nullopt;
    contact.notes.reset();
    contact.gender.reset();
    return contact;
}

TEST_F(StoreTest, EveryStoredFieldSurvivesSaveAndReadAndAbsentOptionalsStayAbsent) {
    YContact bare("c-1", "Bo", 5);
    bare.hasPhoto = true;
    for (const auto& original : {fullyPopulatedContact(), bare}) {
        SCOPED_TRACE(original.contactId);
        const std::string& user = original.contactId;  // a user of its own, so that each is alone in its list
        ASSERT_TRUE(store->save(user, {original}));
        const auto read = store->getContactByContactId(user, original.contactId);
        ASSERT_TRUE(read.has_value());
        EXPECT_TRUE(sameContactFields(original, *read));
        for (const auto& searchStr : {std::optional<std::string>(), std::optional(original.firstName)}) {
            const YContactsQuery query{.yuid = user, .searchStr = searchStr, .from = 0, .limit = 1};
            const auto full = store->getContacts(query);
            const auto light = store->getContactsList(query);
            ASSERT_TRUE(full && light && full->size() == 1 && light->size() == 1);
            EXPECT_TRUE(sameContactFields(original, full->front()));
            EXPECT_TRUE(sameContactFields(listForm(original), light->front()));
        }
    }
}

TEST_F(StoreTest, SavingAgainReplacesTheRowsAndSearchEntriesOfTheEarlierVersion) {
    YContact first = fullyPopulatedContact();
    ASSERT_TRUE(store->save("u1", {first}));
    ASSERT_EQ(countRows("YContactPhoneTable"), 2);
    YContact second = first;
    second.phones = {first.phones.front()};
    second.emails = {first.emails.front()};
    second.categories.reset();
    ASSERT_TRUE(store->save("u1", {second}));
    EXPECT_EQ(countRows("YContactPhoneTable"), 1);
    EXPECT_EQ(countRows("YContactEmailTable"), 1);
    EXPECT_EQ(countRows("YContactCategoryTable"), 0);
    const auto read = store->getContactByContactId("u1", first.contactId);
    ASSERT_TRUE(read.has_value());
    EXPECT_EQ(read->phones, second.phones);
    EXPECT_FALSE(read->categories.has_value());

    // A personal and an org contact with one id share one row; the later write wins, within a page too.
    ASSERT_TRUE(store->save("u1", {contact("same", "Personal", 1, false)}));
    ASSERT_TRUE(store->save("u1", {withEmail(contact("same", "Early", 0, true), "early@example.com"),
                                   withEmail(contact("same", "Later", 2, true), "later@example.com")}));
    EXPECT_EQ(countRows("YContactDetail", "contactId = 'same'"), 1);
    EXPECT_EQ(store->getContactByContactId("u1", "same")->firstName, "Later");
    EXPECT_EQ(store->getContactCount("u1"), std::make_pair(std::int64_t{2}, std::int64_t{0}));
    for (const char* text : {"personal", "early", "early@"}) {
        EXPECT_TRUE(store->getContacts({.yuid = "u1", .searchStr = text})->empty()) << text;
    }
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .searchStr = "later", .isOrg = true})),
              std::vector<std::string>{"same"});
}

// Ids as a server may send them, bound like every other value so that none reaches another row. "nul" is both
// the NUL id's prefix and a bystander's id; the empty id is the other bystander, the text a list of ids could
// be padded with. Each id also serves as a user's id, whose rows are the bystanders' namesakes.
TEST_F(StoreTest, AnyIdIsStoredFoundUpdatedAndDeletedExactlyAndTouchesNoOtherRow) {
    // clang-format off
    const std::vector<std::string> hostileIds{"x' or '1'='1", "y\" or \"1\"=\"1", std::string("nul\0id", 6),
        "contactId", "YUID", "rowid", "q\"\")--", "it's me", "x' or yuid <> '", "1); DROP TABLE YContactDetail; --",
        std::string(10000, 'k'), "Zo\u00eb \u5c71\u7530 \U0001F600"};
    // clang-format on
    const YContact bystanders[] = {withEmail(contact("nul", "Bystander", 3), "by@example.com"),
                                   withEmail(contact("", "Nobody", 1), "no@example.com")};
    ASSERT_TRUE(store->addCategories("u1", {YContactCategory("cat")}));
    for (const auto& id : hostileIds) {
        SCOPED_TRACE(::testing::PrintToString(id.substr(0, 40)));
        ASSERT_TRUE(
            store->save("u1", {bystanders[0], bystanders[1], withEmail(contact(id, "Hostile"), "h@example.com")}));
        ASSERT_TRUE(store->save(id, {withEmail(contact("nul", "Namesake"), "by@example.com")}));
        const auto read = store->getContactByContactId("u1", id);
        ASSERT_TRUE(read.has_value());
        EXPECT_EQ(read->contactId, id);
        EXPECT_EQ(read->emails.size(), 1u);
        EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .searchStr = "hostile"})), std::vector<std::string>{id});
        EXPECT_EQ(store->getContactByEmailId(id, "by@example.com", true)->firstName, "Namesake");
        EXPECT_TRUE(store->getCategories(id)->empty());

        ASSERT_TRUE(store->updateContacts("u1", {contact(id, "Changed")}));
        ASSERT_TRUE(store->updateContactsUsageCount("u1", {{id, "42"}, {"unknown", "9"}}));
        const auto updated = store->getContactByContactId("u1", id);
        ASSERT_TRUE(updated.has_value());
        EXPECT_EQ(updated->firstName, "Changed");
        EXPECT_EQ(updated->weightage, 42);

        ASSERT_TRUE(store->addCategories("u1", {YContactCategory(id)}));
        ASSERT_TRUE(store->deleteCategories("u1", {id}));
        ASSERT_TRUE(store->deleteContacts("u1", {id}));
        ASSERT_TRUE(store->deleteAllDetails(id));
        EXPECT_FALSE(store->getContactByContactId("u1", id).has_value());
        EXPECT_FALSE(store->getContactByContactId(id, "nul").has_value());
        for (const auto& bystander : bystanders) {
            const auto kept = store->getContactByContactId("u1", bystander.contactId);
            ASSERT_TRUE(kept.has_value());
            EXPECT_TRUE(sameContactFields(bystander, *kept));
        }
        EXPECT_EQ(countRows("YContactDetail"), 2);
        EXPECT_EQ(countRows("YContactEmailTable"), 2);
        EXPECT_EQ(store->getCategories("u1")->size(), 1u);
    }
}

// A personal contact takes its user id and type from the organisation member with its primary address;
// one without such a member keeps its own, and another user's rows are not looked at.
TEST_F(StoreTest, PersonalContactsTakeUserIdAndTypeFromTheOrganisationMemberWithTheirAddress) {
    YContact member = withEmail(contact("m", "Member", 0, true), "ann@example.com");
    member.contactYuid = "ann-yuid";
    member.type = YContactType::group;
    ASSERT_TRUE(store->save("u1", {withEmail(contact("p", "Ann"), "ann@example.com"), member,
                                   withEmail(contact("q", "Bob"), "bob@example.com")}));
    ASSERT_TRUE(store->save("u2", {withEmail(contact("p", "Ann"), "ann@example.com")}));
    ASSERT_TRUE(store->fixPersonalContacts("u1"));
    const auto fixed = store->getContactByContactId("u1", "p");
    ASSERT_TRUE(fixed.has_value());
    EXPECT_EQ(fixed->contactYuid, "ann-yuid");
    EXPECT_EQ(fixed->type, YContactType::group);
    EXPECT_EQ(store->getContactByContactId("u1", "q")->contactYuid, std::nullopt);
    EXPECT_EQ(store->getContactByContactId("u2", "p")->contactYuid, std::nullopt);
}

TEST_F(StoreTest, ClearingAUserEmptiesEveryTable) {
    ASSERT_TRUE(store->save("u1", {fullyPopulatedContact()}));
    ASSERT_TRUE(store->addCategories("u1", {YContactCategory("cat-1")}));
    ASSERT_TRUE(store->deleteAllDetails("u1"));
    for (const char* table : {"YContactDetail", "YContactEmailTable", "YContactPhoneTable", "YContactIMTable",
                              "YContactUrlTable", "YContactCategoryTable", "YContactSearchTable"}) {
        EXPECT_EQ(countRows(table), 0) << table;
    }
}

// A save whose last table cannot be written leaves the store as it was: no contact without its
// typeahead rows, and the earlier version of a re-saved contact kept whole.
TEST_F(StoreTest, AFailedSaveLeavesTheStoreAsItWas) {
    ASSERT_TRUE(store->save("u1", {withEmail(contact("kept", "Ada"), "ada@example.com")}));
    ASSERT_EQ(countRows("YContactSearchTable", "contactId = 'kept'"), 2);

    testsupport::LogCapture log{Logger::Level::error};
    ASSERT_TRUE(YSqliteHelper::getShared()
                    .execute("CREATE TRIGGER refuse BEFORE INSERT ON YContactSearchTable BEGIN "
                             "SELECT RAISE(ABORT, 'search rows refused'); END",
                             true, identifier())
                    .ok());
    EXPECT_FALSE(store->save("u1", {withEmail(contact("kept", "Bea"), "bea@example.com"),
                                    withEmail(contact("new", "Cy"), "cy@example.com")}));

    EXPECT_TRUE(log.contains("search rows refused"));
    EXPECT_EQ(countRows("YContactDetail"), 1);
    EXPECT_EQ(countRows("YContactEmailTable", "email = 'ada@example.com'"), 1);
    EXPECT_EQ(countRows("YContactEmailTable"), 1);
    EXPECT_EQ(countRows("YContactSearchTable", "contactId = 'kept'"), 2);
    const auto kept = store->getContactByContactId("u1", "kept");
    ASSERT_TRUE(kept.has_value());
    EXPECT_EQ(kept->firstName, "Ada");
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

// The list operations' routing by request type, their local step, and the local-only look-ups.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DataManager/QueriesTestSupport.h"

namespace ycontacts::querytest {
namespace {

using ::testing::_;
using ::testing::Return;

class QueriesListTest : public QueriesTest {
protected:
    ContactsAnswers got;
};

enum class ListOperation { contacts, contactsList };

struct RoutingRow {
    std::string name;
    RequestType requestType;
    std::optional<std::vector<YContact>> storeAnswer;
    bool serverAsked;
    // Answers before the server replies, then after it.
    std::vector<std::optional<Ids>> before;
    std::vector<std::optional<Ids>> after;
};

class QueriesRoutingTest : public QueriesListTest,
                           public ::testing::WithParamInterface<std::tuple<ListOperation, RoutingRow>> {};

TEST_P(QueriesRoutingTest, AnswersInTheOrderTheRequestTypeAsks) {
    const auto& [operation, row] = GetParam();
    ON_CALL(*database, getContacts(_)).WillByDefault(Return(row.storeAnswer));
    ON_CALL(*database, getContactsList(_)).WillByDefault(Return(row.storeAnswer));
    std::vector<std::string> log;
    network->onSearch = [&] { log.push_back("server asked"); };

    auto queries = makeQueries();
    auto run = operation == ListOperation::contacts ? &YContactsQueries::getContacts
                                                    : &YContactsQueries::getContactsList;
    ((*queries).*run)({.yuid = "u", .searchStr = "ann", .isOrg = false, .requestType = row.requestType},
                      got.callback(&log, "answer"));

    EXPECT_EQ(got.answers, row.before);
    ASSERT_EQ(network->searches().size(), row.serverAsked ? 1U : 0U);
    if (!row.serverAsked) return;
    // Whatever the store said, it was said before the server was asked.
    EXPECT_EQ(log.back(), "server asked");
    network->answerSearch(0, std::vector<YContact>{contact("9", "Anna")});
    EXPECT_EQ(got.answers, row.after);
}

const std::vector<YContact> storeRows{contact("1", "Ann")};

INSTANTIATE_TEST_SUITE_P(
    EveryRequestType, QueriesRoutingTest,
    ::testing::Combine(
        ::testing::Values(ListOperation::contacts, ListOperation::contactsList),
        ::testing::Values(
            RoutingRow{"local", RequestType::local, storeRows, false, {some({"1"})}, {}},
            RoutingRow{"localNone", RequestType::local, std::nullopt, false, {std::nullopt}, {}},
            RoutingRow{"server", RequestType::server, storeRows, true, {}, {some({"9"})}},
            RoutingRow{"both", RequestType::both, storeRows, true, {some({"1"})}, {some({"1"}), some({"9"})}},
            RoutingRow{"bothNone", RequestType::both, std::nullopt, true, {std::nullopt},
                       {std::nullopt, some({"9"})}},
            RoutingRow{"preferLocal", RequestType::preferLocal, storeRows, false, {some({"1"})}, {}},
            // An empty list is an answer: the server is not asked.
            RoutingRow{"preferLocalEmpty", RequestType::preferLocal, std::vector<YContact>{}, false, {some({})}, {}},
            RoutingRow{"preferLocalNone", RequestType::preferLocal, std::nullopt, true, {std::nullopt},
                       {std::nullopt, some({"9"})}})),
    [](const auto& info) {
        return (std::get<0>(info.param) == ListOperation::contacts ? "contacts_" : "contactsList_") +
               std::get<1>(info.param).name;
    });

TEST_F(QueriesListTest, PreferLocalWithoutDatabaseAnswersNoneThenTheServer) {
    auto queries = makeQueries(1000, /*withDatabase=*/false);
    queries->getContacts({.yuid = "u", .searchStr = "ann", .isOrg = true, .requestType = RequestType::preferLocal},
                         got.callback());
    ASSERT_EQ(network->searches().size(), 1U);
    EXPECT_TRUE(network->searches()[0].isOrg);
    network->answerSearch(0, std::vector<YContact>{contact("9", "Anna")});
    EXPECT_EQ(got.answers, (std::vector<std::optional<Ids>>{std::nullopt, some({"9"})}));
}

TEST_F(QueriesListTest, LocalStepPassesTheCallersValuesAndTheListSearchAsksForAThousand) {
    EXPECT_CALL(*database, getContacts(storeQuery("u", true, "an", 5, 7)));
    EXPECT_CALL(*database, getContactsList(storeQuery("u", _, "an", _, 1000)));
    EXPECT_CALL(*database, getContactsList(storeQuery("u", _, "an", _, 30)));
    EXPECT_CALL(*database, getContactsList(storeQuery("u", _, std::nullopt, _, std::nullopt)));
    auto queries = makeQueries();
    queries->getContacts(
        {.yuid = "u", .searchStr = "an", .from = 5, .limit = 7, .isOrg = true, .requestType = RequestType::local},
        got.callback());
    queries->getContactsList({.yuid = "u", .searchStr = "an", .requestType = RequestType::local}, got.callback());
    queries->getContactsList({.yuid = "u", .searchStr = "an", .limit = 30, .requestType = RequestType::local},
                             got.callback());
    queries->getContactsList({.yuid = "u", .requestType = RequestType::local}, got.callback());
    EXPECT_EQ(timerRestarts, 0);
}

TEST_F(QueriesListTest, PlainServerListingSendsNoTextAndTheCallersLimit) {
    auto queries = makeQueries();
    queries->getContacts({.yuid = "u", .yoid = "org", .limit = 25, .requestType = RequestType::server}, got.callback());
    ASSERT_EQ(network->searches().size(), 1U);
    EXPECT_EQ(network->searches()[0].searchText, std::nullopt);
    EXPECT_EQ(network->searches()[0].limit, 25);
    EXPECT_EQ(network->searches()[0].yoid, "org");
    EXPECT_FALSE(network->searches()[0].isOrg);
    network->answerSearch(0, std::vector<YContact>{contact("1", "Ann"), contact("2", "Bob")});
    EXPECT_EQ(got.answers, (std::vector<std::optional<Ids>>{some({"1", "2"})}));
    EXPECT_EQ(timerRestarts, 1);
}

TEST_F(QueriesListTest, WithoutCollaboratorsEveryQueryAnswersNoneAtMostOnce) {
    auto queries = makeQueries(1000, false, false);
    for (RequestType type : {RequestType::local, RequestType::both, RequestType::preferLocal}) {
        queries->getContacts({.yuid = "u", .searchStr = "a", .requestType = type}, got.callback());
    }
    queries->getContactsList({.yuid = "u", .searchStr = "a", .requestType = RequestType::server}, got.callback());
    EXPECT_EQ(got.answers, (std::vector<std::optional<Ids>>(3, std::nullopt)));

    queries->getContactsFromIds(byAddresses(Ids{"a@x"}, false), got.callback());
    EXPECT_EQ(got.answers.size(), 4U);
    EXPECT_EQ(got.answers.back(), std::nullopt);

    int contactAnswers = 0;
    queries->getContact(lookUp("1", std::nullopt, std::nullopt), [&](std::optional<YContact> found) {
        ++contactAnswers;
        EXPECT_FALSE(found);
    });
    EXPECT_EQ(contactAnswers, 1);
    EXPECT_EQ(queries->getContactCount("u"), std::nullopt);
}

TEST_F(QueriesListTest, ContactsFromIdsIsSilentWithoutAddressesAndReadsTheStoreByAddress) {
    EXPECT_CALL(*database, getContactsFromEmailIds(_, _, _)).Times(0);
    auto queries = makeQueries();
    queries->getContactsFromIds(byAddresses(std::nullopt, false, Ids{"1"}), got.callback());
    EXPECT_TRUE(got.answers.empty());
    ::testing::Mock::VerifyAndClearExpectations(database.get());

    EXPECT_CALL(*database, getContactsFromEmailIds("u", Ids{"a@x", "b@x"}, std::optional<bool>(true)))
        .WillOnce(Return(std::vector<YContact>{contact("1", "Ann")}));
    queries->getContactsFromIds(byAddresses(Ids{"a@x", "b@x"}, true, Ids{"7"}), got.callback());
    EXPECT_EQ(got.answers, (std::vector<std::optional<Ids>>{some({"1"})}));
    EXPECT_TRUE(network->searches().empty());
}

TEST_F(QueriesListTest, GetContactLooksUpOnceByIdThenYuidThenAddress) {
    auto queries = makeQueries();
    std::vector<std::optional<std::string>> found;
    auto record = [&](std::optional<YContact> c) { found.push_back(c ? std::optional(c->contactId) : std::nullopt); };

    {
        ::testing::InSequence order;
        EXPECT_CALL(*database, getContactByContactId("u", "id")).WillOnce(Return(contact("id", "A")));
        EXPECT_CALL(*database, getContactByContactYuid("u", "cy")).WillOnce(Return(contact("cy", "B")));
        EXPECT_CALL(*database, getContactByEmailId("u", "e@x", true)).WillOnce(Return(std::nullopt));
    }
    queries->getContact(lookUp("id", "cy", "e@x", true), record);
    queries->getContact(lookUp(std::nullopt, "cy", "e@x", true), record);
    queries->getContact(lookUp(std::nullopt, std::nullopt, "e@x", true), record);
    queries->getContact(lookUp(std::nullopt, std::nullopt, std::nullopt, true), record);
    EXPECT_EQ(found, (std::vector<std::optional<std::string>>{"id", "cy", std::nullopt, std::nullopt}));
}

TEST_F(QueriesListTest, ContactCountComesFromTheStore) {
    EXPECT_CALL(*database, getContactCount("u")).WillOnce(Return(YContactsDatabaseContract::ContactCount{3, 4}));
    EXPECT_EQ(makeQueries()->getContactCount("u"), (YContactsQueries::ContactCount{3, 4}));
}

}  // namespace
}  // namespace ycontacts::querytest

// The query component: routing by request type, the store reads, the server search with its first-letter cache
// and newest-search-wins rule, the suggestion cache, and the contact filter.

#include "DataManager/DataManagerTestSupport.h"

namespace ycontacts::dmtest {
namespace {

using Answers = std::vector<std::optional<Ids>>;

inline std::optional<Ids> some(Ids ids) { return std::optional<Ids>(std::move(ids)); }

// Every answer a contacts callback received, in order.
struct ContactsAnswers {
    Answers answers;
    YContactsQueries::ContactsCallback callback() {
        return [this](std::optional<std::vector<YContact>> found) {
            answers.push_back(found ? some(idsOf(*found)) : std::nullopt);
        };
    }
};

enum class ListOperation { contacts, contactsList };

struct RoutingRow {
    std::string name;
    RequestType requestType;
    std::optional<std::vector<YContact>> storeAnswer;
    bool serverAsked;
    Answers before;  // answers before the server replies
    Answers after;
};

class QueriesRoutingTest : public QueriesTest,
                           public ::testing::WithParamInterface<std::tuple<ListOperation, RoutingRow>> {};

TEST_P(QueriesRoutingTest, AnswersInTheOrderTheRequestTypeAsks) {
    const auto& [operation, row] = GetParam();
    ON_CALL(*database, getContacts(_)).WillByDefault(Return(row.storeAnswer));
    ON_CALL(*database, getContactsList(_)).WillByDefault(Return(row.storeAnswer));
    ContactsAnswers got;

    auto queries = makeQueries();
    auto run =
        operation == ListOperation::contacts ? &YContactsQueries::getContacts : &YContactsQueries::getContactsList;
    ((*queries).*run)({.yuid = "u", .searchStr = "ann", .isOrg = false, .requestType = row.requestType},
                      got.callback());

    EXPECT_EQ(got.answers, row.before);
    ASSERT_EQ(network->searches().size(), row.serverAsked ? 1U : 0U);
    if (!row.serverAsked) return;
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
            RoutingRow{"bothNone", RequestType::both, std::nullopt, true, {std::nullopt}, {std::nullopt, some({"9"})}},
            RoutingRow{"preferLocal", RequestType::preferLocal, storeRows, false, {some({"1"})}, {}},
            // An empty list is an answer: the server is not asked.
            RoutingRow{"preferLocalEmpty", RequestType::preferLocal, std::vector<YContact>{}, false, {some({})}, {}},
            RoutingRow{"preferLocalNone",
                       RequestType::preferLocal,
                       std::nullopt,
                       true,
                       {std::nullopt},
                       {std::nullopt, some({"9"})}})),
    [](const auto& info) {
        return (std::get<0>(info.param) == ListOperation::contacts ? "contacts_" : "contactsList_") +
               std::get<1>(info.param).name;
    });

TEST_F(QueriesTest, StoreReadsPassTheCallersValuesAndAListSearchReadsAtMostAThousandRows) {
    EXPECT_CALL(*database, getContacts(storeQuery("u", true, "an", 5, 7)));
    EXPECT_CALL(*database, getContactsList(storeQuery("u", _, "an", _, 1000)));
    EXPECT_CALL(*database, getContactsList(storeQuery("u", _, "an", _, 30)));
    EXPECT_CALL(*database, getContactsList(storeQuery("u", _, std::nullopt, _, std::nullopt)));
    EXPECT_CALL(*database, getContactCount("u")).WillOnce(Return(YContactsDatabaseContract::ContactCount{3, 4}));
    auto queries = makeQueries();
    ContactsAnswers got;
    queries->getContacts(
        {.yuid = "u", .searchStr = "an", .from = 5, .limit = 7, .isOrg = true, .requestType = RequestType::local},
        got.callback());
    queries->getContactsList({.yuid = "u", .searchStr = "an", .requestType = RequestType::local}, got.callback());
    queries->getContactsList({.yuid = "u", .searchStr = "an", .limit = 30, .requestType = RequestType::local},
                             got.callback());
    queries->getContactsList({.yuid = "u", .requestType = RequestType::local}, got.callback());
    EXPECT_EQ(queries->getContactCount("u"), (YContactsQueries::ContactCount{3, 4}));
    EXPECT_EQ(timerRestarts, 0);
}

TEST_F(QueriesTest, ContactsFromIdsIsSilentWithoutAddressesAndReadsTheStoreByAddress) {
    EXPECT_CALL(*database, getContactsFromEmailIds("u", Ids{"a@x", "b@x"}, std::optional<bool>(true)))
        .WillOnce(Return(std::vector<YContact>{contact("1", "Ann")}));
    auto queries = makeQueries();
    ContactsAnswers got;
    YGetContactsFromIdsRequest request("u");
    request.contactIds = Ids{"7"};
    request.isOrg = true;
    queries->getContactsFromIds(request, got.callback());
    EXPECT_TRUE(got.answers.empty());
    request.emailIds = Ids{"a@x", "b@x"};
    queries->getContactsFromIds(request, got.callback());
    EXPECT_EQ(got.answers, Answers{some({"1"})});
    EXPECT_TRUE(network->searches().empty());
}

TEST_F(QueriesTest, GetContactLooksUpOnceByIdThenYuidThenAddress) {
    auto queries = makeQueries();
    std::vector<std::optional<std::string>> found;
    const auto lookUp = [&](std::optional<std::string> id, std::optional<std::string> yuid,
                            std::optional<std::string> email) {
        YGetContactRequest request("u");
        request.contactId = std::move(id);
        request.contactYuid = std::move(yuid);
        request.emailId = std::move(email);
        request.preferPersonalInfo = true;
        queries->getContact(request, [&](std::optional<YContact> c) {
            found.push_back(c ? std::optional(c->contactId) : std::nullopt);
        });
    };
    {
        ::testing::InSequence order;
        EXPECT_CALL(*database, getContactByContactId("u", "id")).WillOnce(Return(contact("id", "A")));
        EXPECT_CALL(*database, getContactByContactYuid("u", "cy")).WillOnce(Return(contact("cy", "B")));
        EXPECT_CALL(*database, getContactByEmailId("u", "e@x", true)).WillOnce(Return(std::nullopt));
    }
    lookUp("id", "cy", "e@x");
    lookUp(std::nullopt, "cy", "e@x");
    lookUp(std::nullopt, std::nullopt, "e@x");
    lookUp(std::nullopt, std::nullopt, std::nullopt);
    EXPECT_EQ(found, (std::vector<std::optional<std::string>>{"id", "cy", std::nullopt, std::nullopt}));
}

TEST_F(QueriesTest, WithoutCollaboratorsEveryQueryAnswersNoneAtMostOnce) {
    auto queries = makeQueries(1000, false, false);
    ContactsAnswers got;
    for (RequestType type : {RequestType::local, RequestType::both, RequestType::preferLocal}) {
        queries->getContacts({.yuid = "u", .searchStr = "a", .requestType = type}, got.callback());
    }
    queries->getContactsList({.yuid = "u", .searchStr = "a", .requestType = RequestType::server}, got.callback());
    YGetContactsFromIdsRequest byAddress("u");
    byAddress.emailIds = Ids{"a@x"};
    queries->getContactsFromIds(byAddress, got.callback());
    EXPECT_EQ(got.answers, Answers(4, std::nullopt));

    int contactAnswers = 0;
    YGetContactRequest byId("u");
    byId.contactId = "1";
    queries->getContact(byId, [&](std::optional<YContact> found) { contactAnswers += found ? 10 : 1; });
    EXPECT_EQ(contactAnswers, 1);
    EXPECT_EQ(queries->getContactCount("u"), std::nullopt);

    // With a server but no store, prefer-local answers none and then asks the server.
    queries = makeQueries(1000, false, true);
    queries->getContacts({.yuid = "u", .searchStr = "ann", .isOrg = true, .requestType = RequestType::preferLocal},
                         got.callback());
    ASSERT_EQ(network->searches().size(), 1U);
    EXPECT_TRUE(network->searches()[0].isOrg);
    network->answerSearch(0, std::vector<YContact>{contact("9", "Anna")});
    EXPECT_EQ(got.answers,
              (Answers{std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt, some({"9"})}));
}

class ServerSearchTest : public QueriesTest {
protected:
    void search(const std::string& keyword, ContactsAnswers& answers, std::optional<int> limit = std::nullopt,
                std::optional<bool> isOrg = false, const std::string& yuid = "u") {
        queries->getContacts(
            {.yuid = yuid, .searchStr = keyword, .limit = limit, .isOrg = isOrg, .requestType = RequestType::server},
            answers.callback());
    }

    std::shared_ptr<YContactsQueries> queries = makeQueries(250);
    const std::vector<YContact> letterA{contact("1", "Ann", "Lee"), contact("2", "Abe", "Zed"),
                                        contact("3", "Carl", "Abbot"), contact("4", "Ava")};
};

TEST_F(ServerSearchTest, AsksForTheBatchLimitAndCutsTheAnswerToTheCallersLimit) {
    ContactsAnswers got, plain;
    search("ann", got, 2, true);
    ASSERT_EQ(network->searches().size(), 1U);
    EXPECT_EQ(network->searches()[0].limit, 250);
    EXPECT_EQ(network->searches()[0].searchText, "ann");
    EXPECT_TRUE(network->searches()[0].isOrg);
    network->answerSearch(0, letterA);
    EXPECT_EQ(got.answers, Answers{some({"1", "2"})});

    // A plain listing sends no text and the caller's own limit.
    queries->getContacts({.yuid = "u", .yoid = "org", .limit = 25, .requestType = RequestType::server},
                         plain.callback());
    const auto listing = network->searches().at(1);
    EXPECT_EQ(listing.searchText, std::nullopt);
    EXPECT_EQ(listing.limit, 25);
    EXPECT_EQ(listing.yoid, "org");
    EXPECT_FALSE(listing.isOrg);
    network->answerSearch(1, letterA);
    EXPECT_EQ(plain.answers, Answers{some({"1", "2", "3", "4"})});
    EXPECT_EQ(timerRestarts, 2);
}

TEST_F(ServerSearchTest, FirstLetterThenLongerThenNewLetter) {
    ContactsAnswers a, ab, b;
    search("a", a);
    network->answerSearch(0, letterA);
    EXPECT_EQ(a.answers, Answers{some({"1", "2", "3", "4"})});

    // "ab" answers at once from the cache (Abe by first name, Carl Abbot by last name, names descending),
    // then asks the server all the same.
    search("ab", ab);
    EXPECT_EQ(ab.answers, Answers{some({"3", "2"})});
    ASSERT_EQ(network->searches().size(), 2U);
    EXPECT_EQ(network->searches()[1].searchText, "ab");
    network->answerSearch(1, std::vector<YContact>{contact("2", "Abe")});
    EXPECT_EQ(ab.answers, (Answers{some({"3", "2"}), some({"2"})}));
    // A longer keyword's reply does not replace the first letter's cache.
    EXPECT_EQ(queries->inMemoryState().currentNetworkCache.at("u").size(), 4U);

    search("b", b);
    const auto state = queries->inMemoryState();
    EXPECT_EQ(state.currentNetworkKeywordStart.at("u"), "b");
    EXPECT_EQ(state.currentNetworkCache.count("u"), 0U);
    EXPECT_TRUE(b.answers.empty());
    network->answerSearch(2, std::vector<YContact>{contact("5", "Bob")});
    EXPECT_EQ(b.answers, Answers{some({"5"})});
}

TEST_F(ServerSearchTest, OnlyTheNewestSearchOfAUserIsAnswered) {
    ContactsAnswers first, second, third, other;
    search("ab", first);
    search("zed", other, std::nullopt, false, "u2");  // another user's search supersedes nothing here
    search("abc", second);
    network->answerSearch(2, std::vector<YContact>{contact("3", "Abc")});
    network->answerSearch(0, std::vector<YContact>{contact("2", "Ab")});
    network->answerSearch(1, std::vector<YContact>{contact("7", "Zed")});
    EXPECT_TRUE(first.answers.empty());
    EXPECT_EQ(second.answers, Answers{some({"3"})});
    EXPECT_EQ(other.answers, Answers{some({"7"})});

    // The same keyword again: only the newest request's reply reaches the newest callback.
    search("abc", third);
    network->answerSearch(2, std::vector<YContact>{contact("3", "Abc")});
    EXPECT_TRUE(third.answers.empty());
    network->answerSearch(3, std::nullopt);
    EXPECT_EQ(third.answers, Answers{std::nullopt});
}

TEST_F(ServerSearchTest, TheCacheIsFilledByALateFirstLetterReplyAndServesOnlyItsPopulation) {
    ContactsAnswers a, ab, abe, orgAb;
    search("a", a);
    search("ab", ab);
    EXPECT_TRUE(ab.answers.empty());
    network->answerSearch(0, letterA);
    EXPECT_TRUE(a.answers.empty());
    search("abe", abe);
    EXPECT_EQ(abe.answers, Answers{some({"2"})});
    search("ab", orgAb, std::nullopt, true);
    EXPECT_TRUE(orgAb.answers.empty());
}

// A server that answers inside the call and callbacks that query again: neither runs under the state lock
// (were it held, this test would block instead of finishing).
TEST_F(ServerSearchTest, CallbacksAndTheServerMayCallBackIntoTheQueries) {
    ON_CALL(*network, searchContacts)
        .WillByDefault([](auto&&, auto&&, bool, auto, const std::optional<std::string>& text,
                          YContactsNetworkContract::SearchCallback reply) {
            reply(std::vector<YContact>{contact("1", *text + "x")});
        });
    std::vector<std::string> seen;
    const YContactsQuery first{.yuid = "u", .searchStr = "a", .isOrg = false, .requestType = RequestType::server};
    queries->getContacts(first, [&](std::optional<std::vector<YContact>>) {
        seen.push_back(queries->inMemoryState().currentNetworkKeyword.at("u"));
        if (seen.size() == 1) {
            auto longer = first;
            longer.searchStr = "ab";
            queries->getContacts(longer, [&](auto) { seen.push_back("ab"); });
        }
    });
    // "a" answered, then "ab" answered from the cache and by the server.
    EXPECT_EQ(seen, (Ids{"a", "ab", "ab"}));
}

struct SuggestionAnswer {
    std::string searchStr;
    std::optional<Ids> emails;
    bool operator==(const SuggestionAnswer&) const = default;
};

class SuggestionsTest : public QueriesTest {
protected:
    void suggest(const std::string& text, int limit = 20, std::optional<bool> isOrg = false,
                 RequestType type = RequestType::local, const std::string& yuid = "u") {
        queries->getSuggestionContacts(
            {.yuid = yuid, .searchStr = text, .limit = limit, .isOrg = isOrg, .requestType = type},
            [this](std::string searchStr, std::optional<std::vector<YSuggestionContact>> suggestions) {
                std::optional<Ids> emails;
                if (suggestions) {
                    emails.emplace();
                    for (const auto& s : *suggestions) emails->push_back(s.email);
                    last = *suggestions;
                }
                answers.push_back({std::move(searchStr), std::move(emails)});
            });
    }

    std::shared_ptr<YContactsQueries> queries = makeQueries();
    std::vector<SuggestionAnswer> answers;
    std::vector<YSuggestionContact> last;
    const std::vector<YSuggestionContact> anRows{YSuggestionContact("1", "ann@x", "Ann", false),
                                                 YSuggestionContact("1", "ann@home", "Ann", false),
                                                 YSuggestionContact("2", "z@x", "Andy", false)};
};

TEST_F(SuggestionsTest, AKeywordExtendingACompleteCacheIsNarrowedInMemory) {
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", false, "an", _, 20))).WillOnce(Return(anRows));
    suggest("an");
    suggest("Ann", 1);
    suggest("andy");
    EXPECT_EQ(answers, (std::vector<SuggestionAnswer>{
                           {"an", Ids{"ann@x", "ann@home", "z@x"}}, {"Ann", Ids{"ann@x"}}, {"andy", Ids{"z@x"}}}));
    ASSERT_EQ(last.size(), 1U);
    EXPECT_EQ(last[0].contactId, "2");
    EXPECT_EQ(queries->inMemoryState().currentSearchKeyword, "andy");
    EXPECT_EQ(timerRestarts, 3);
}

TEST_F(SuggestionsTest, TheStoreIsAskedAgainWhenTheCacheCannotAnswer) {
    // Three rows for a limit of three: the store may have had more, so "ann" cannot be narrowed from it.
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", _, "an", _, 3))).WillOnce(Return(anRows));
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", _, "ann", _, 3))).WillOnce(Return(anRows));
    // Complete now, but for another user, another population, and a keyword that does not extend it.
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", _, "ann", _, 20))).WillOnce(Return(anRows));
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("v", _, "anne", _, 20))).WillOnce(Return(std::nullopt));
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", true, "anne", _, 20)));
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", false, "b", _, 20)));
    suggest("an", 3);
    suggest("ann", 3);
    suggest("ann", 20);
    suggest("anne", 20, false, RequestType::local, "v");
    suggest("anne", 20, true);
    suggest("b", 20);
    EXPECT_EQ(answers[3], (SuggestionAnswer{"anne", std::nullopt}));
}

TEST_F(SuggestionsTest, ServerContactsBecomeOneSuggestionPerAddressAndOnlyTheNewestIsAnswered) {
    YContact ann = contact("1", "Ann", "Lee", 0, true);
    ann.primaryEmail = YContact::Email("ann@x");
    ann.emails = {YContact::Email("ann@x"), YContact::Email("ann@home")};
    ann.contactYuid = "y1";
    YContact sameAddress = contact("3", "Other");
    sameAddress.emails = {YContact::Email("ann@home"), YContact::Email("o@x"), YContact::Email("p@x")};

    suggest("a", 20, false, RequestType::server);
    suggest("an", 3, std::nullopt, RequestType::server);
    ASSERT_EQ(network->searches().size(), 2U);
    EXPECT_EQ(network->searches()[1].limit, 3);
    EXPECT_FALSE(network->searches()[1].isOrg);
    network->answerSearch(1, std::vector<YContact>{ann, contact("2", "Nobody"), sameAddress});
    network->answerSearch(0, std::vector<YContact>{ann});
    EXPECT_EQ(answers, (std::vector<SuggestionAnswer>{{"an", Ids{"ann@x", "ann@home", "o@x"}}}));
    const YSuggestionContact& first = last[0];
    EXPECT_EQ(first.contactId, "1");
    EXPECT_EQ(first.yuid, "y1");
    EXPECT_TRUE(first.isOrg);
    EXPECT_EQ(last[2].contactId, "3");

    suggest("ann", 3, std::nullopt, RequestType::server);
    network->answerSearch(2, std::nullopt);
    EXPECT_EQ(answers.back(), (SuggestionAnswer{"ann", std::nullopt}));
    EXPECT_EQ(timerRestarts, 3);
}

TEST_F(SuggestionsTest, RoutesLikeTheListQueries) {
    ON_CALL(*database, getSuggestionContacts(_)).WillByDefault(Return(std::nullopt));
    suggest("a", 20, false, RequestType::preferLocal);
    ASSERT_EQ(network->searches().size(), 1U);
    network->answerSearch(0, std::vector<YContact>{});
    EXPECT_EQ(answers, (std::vector<SuggestionAnswer>{{"a", std::nullopt}, {"a", Ids{}}}));

    answers.clear();
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery(_, _, "b", _, _)))
        .WillOnce(Return(std::vector<YSuggestionContact>{}));
    suggest("b", 20, false, RequestType::preferLocal);
    EXPECT_EQ(network->searches().size(), 1U);
    suggest("b", 20, false, RequestType::both);
    ASSERT_EQ(network->searches().size(), 2U);
    EXPECT_EQ(answers, (std::vector<SuggestionAnswer>{{"b", Ids{}}, {"b", Ids{}}}));
}

TEST(QueriesFilterTest, OrdersByWeightageThenPersonalFirstThenNameDescendingKeepingTies) {
    const std::vector<YContact> list{
        contact("1", "Ann", "Able", 1),
        contact("2", "ann", "able", 1),  // equal names keep their order
        contact("3", "Anton", std::nullopt, 1, /*isOrg=*/true),
        contact("4", "Amy", std::nullopt, 5),
        contact("5", "Anna", "Zane", 1),
        contact("6", "Ann", "Abbot", 1),
    };
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(list, "A", std::nullopt)), (Ids{"4", "5", "1", "2", "6", "3"}));
    // The limit applies after sorting.
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(list, "a", 2)), (Ids{"4", "5"}));
}

TEST(QueriesFilterTest, KeepsPrefixMatchesOfNamesAndAddressesOnceEach) {
    YContact nick = contact("3", "Robert");
    nick.nickName = "Bobby";
    YContact mail = contact("4", "Xavier");
    mail.emails = {YContact::Email("x@corp"), YContact::Email("BO@home")};
    const std::vector<YContact> list{
        contact("1", "Bob", "Stone"), contact("2", "Ann", "Bolt"),     nick, mail,
        contact("5", "Abo"),          contact("1", "Duplicate", "Bo"),
    };
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(list, "BO", std::nullopt)), (Ids{"4", "3", "1", "2"}));
    // "first last" matches across the space; a middle-of-word match does not.
    EXPECT_EQ(idsOf(YContactsQueries::filterContacts(list, "ann b", std::nullopt)), Ids{"2"});
    EXPECT_TRUE(YContactsQueries::filterContacts(list, "tone", std::nullopt).empty());
}

}  // namespace
}  // namespace ycontacts::dmtest

// The server search step: the batch limit, the first-letter cache, newest-search-wins and the in-memory lifetime.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DataManager/QueriesTestSupport.h"

namespace ycontacts::querytest {
namespace {


class QueriesServerSearchTest : public QueriesTest {
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

TEST_F(QueriesServerSearchTest, AsksForTheBatchLimitAndCutsTheAnswerToTheCallersLimit) {
    ContactsAnswers got;
    search("ann", got, 2, true);
    ASSERT_EQ(network->searches().size(), 1U);
    EXPECT_EQ(network->searches()[0].limit, 250);
    EXPECT_EQ(network->searches()[0].searchText, "ann");
    EXPECT_TRUE(network->searches()[0].isOrg);
    network->answerSearch(0, letterA);
    EXPECT_EQ(got.answers, (std::vector<std::optional<Ids>>{some({"1", "2"})}));
    EXPECT_EQ(timerRestarts, 1);
}

TEST_F(QueriesServerSearchTest, FirstLetterThenLongerThenNewLetter) {
    ContactsAnswers a, ab, b;
    search("a", a);
    network->answerSearch(0, letterA);
    EXPECT_EQ(a.answers, (std::vector<std::optional<Ids>>{some({"1", "2", "3", "4"})}));
    EXPECT_EQ(queries->inMemoryState().currentNetworkCache.at("u").size(), 4U);

    // "ab" answers at once from the cache (Abe by first name, Carl Abbot by last name, names descending),
    // then asks the server all the same.
    search("ab", ab);
    EXPECT_EQ(ab.answers, (std::vector<std::optional<Ids>>{some({"3", "2"})}));
    ASSERT_EQ(network->searches().size(), 2U);
    EXPECT_EQ(network->searches()[1].searchText, "ab");
    network->answerSearch(1, std::vector<YContact>{contact("2", "Abe")});
    EXPECT_EQ(ab.answers, (std::vector<std::optional<Ids>>{some({"3", "2"}), some({"2"})}));
    // A longer keyword's reply does not replace the first letter's cache.
    EXPECT_EQ(queries->inMemoryState().currentNetworkCache.at("u").size(), 4U);

    search("b", b);
    const auto state = queries->inMemoryState();
    EXPECT_EQ(state.currentNetworkKeywordStart.at("u"), "b");
    EXPECT_EQ(state.currentNetworkCache.count("u"), 0U);
    EXPECT_TRUE(b.answers.empty());
    ASSERT_EQ(network->searches().size(), 3U);
    network->answerSearch(2, std::vector<YContact>{contact("5", "Bob")});
    EXPECT_EQ(b.answers, (std::vector<std::optional<Ids>>{some({"5"})}));
}

TEST_F(QueriesServerSearchTest, RepliesToSupersededSearchesAreNotDelivered) {
    ContactsAnswers first, second, third;
    search("ab", first);
    search("abc", second);
    network->answerSearch(1, std::vector<YContact>{contact("3", "Abc")});
    network->answerSearch(0, std::vector<YContact>{contact("2", "Ab")});
    EXPECT_TRUE(first.answers.empty());
    EXPECT_EQ(second.answers, (std::vector<std::optional<Ids>>{some({"3"})}));

    // The same keyword again: only the newest request's reply reaches the newest callback.
    search("abc", third);
    network->answerSearch(1, std::vector<YContact>{contact("3", "Abc")});
    EXPECT_EQ(third.answers.size(), 0U);
    network->answerSearch(2, std::nullopt);
    EXPECT_EQ(third.answers, (std::vector<std::optional<Ids>>{std::nullopt}));
}

TEST_F(QueriesServerSearchTest, UsersDoNotSupersedeEachOther) {
    ContactsAnswers mine, theirs;
    search("ann", mine, std::nullopt, false, "u1");
    search("bob", theirs, std::nullopt, false, "u2");
    network->answerSearch(0, std::vector<YContact>{contact("1", "Ann")});
    network->answerSearch(1, std::vector<YContact>{contact("2", "Bob")});
    EXPECT_EQ(mine.answers, (std::vector<std::optional<Ids>>{some({"1"})}));
    EXPECT_EQ(theirs.answers, (std::vector<std::optional<Ids>>{some({"2"})}));
}

TEST_F(QueriesServerSearchTest, ALateFirstLetterReplyStillFillsTheCache) {
    ContactsAnswers a, ab, abe;
    search("a", a);
    search("ab", ab);
    EXPECT_TRUE(ab.answers.empty());
    network->answerSearch(0, letterA);
    EXPECT_TRUE(a.answers.empty());

    search("abe", abe);
    EXPECT_EQ(abe.answers, (std::vector<std::optional<Ids>>{some({"2"})}));
}

TEST_F(QueriesServerSearchTest, TheCacheServesOnlyThePopulationItWasFilledFor) {
    ContactsAnswers a, orgA, orgAb;
    search("a", a, std::nullopt, false);
    network->answerSearch(0, letterA);
    search("ab", orgAb, std::nullopt, true);
    EXPECT_TRUE(orgAb.answers.empty());
    // The same letter for the other population starts a fresh cache.
    search("a", orgA, std::nullopt, true);
    EXPECT_EQ(queries->inMemoryState().currentNetworkCache.count("u"), 0U);
}

TEST_F(QueriesServerSearchTest, DestroyInMemoryEmptiesTheMapsAndDropsPendingReplies) {
    EXPECT_CALL(*database, getSuggestionContacts).WillOnce(::testing::Return(std::vector<YSuggestionContact>{
        YSuggestionContact("1", "ann@x", "Ann", false)}));
    queries->getSuggestionContacts(
        {.yuid = "u", .searchStr = "an", .limit = 20, .isOrg = false, .requestType = RequestType::both},
        [](auto, auto) {});
    ContactsAnswers a, ab;
    search("a", a);
    network->answerSearch(1, letterA);
    search("ab", ab);

    auto state = queries->inMemoryState();
    EXPECT_FALSE(state.currentNetworkCache.empty());
    EXPECT_FALSE(state.currentSuggestionsNetworkCallback.empty());
    queries->destroyInMemory();
    state = queries->inMemoryState();
    EXPECT_TRUE(state.networkMostUsedContacts.empty());
    EXPECT_TRUE(state.currentNetworkCache.empty());
    EXPECT_TRUE(state.currentNetworkKeywordStart.empty());
    EXPECT_TRUE(state.currentNetworkKeyword.empty());
    EXPECT_TRUE(state.currentSuggestionsNetworkCallback.empty());
    EXPECT_TRUE(state.currentContactsNetworkCallback.empty());
    ASSERT_TRUE(state.currentCache.has_value());
    EXPECT_EQ(state.currentCache->size(), 1U);
    EXPECT_EQ(state.currentSearchKeywordStart, "an");

    const std::size_t before = ab.answers.size();
    network->answerSearch(2, letterA);
    EXPECT_EQ(ab.answers.size(), before);
}

TEST_F(QueriesServerSearchTest, AReplyAfterTheQueriesAreGoneIsDropped) {
    ContactsAnswers got;
    search("ann", got);
    queries.reset();
    network->answerSearch(0, letterA);
    EXPECT_TRUE(got.answers.empty());
}

// A server that answers inside the call and callbacks that query again: neither runs under the state lock
// (were it held, this test would block instead of finishing).
TEST_F(QueriesServerSearchTest, CallbacksAndTheServerMayCallBackIntoTheQueries) {
    ON_CALL(*network, searchContacts)
        .WillByDefault([](const std::string&, const std::optional<std::string>&, bool, std::optional<int>,
                          const std::optional<std::string>& text, YContactsNetworkContract::SearchCallback reply) {
            reply(std::vector<YContact>{contact("1", *text + "x")});
        });
    std::vector<std::string> seen;
    const YContactsQuery search{.yuid = "u", .searchStr = "a", .isOrg = false, .requestType = RequestType::server};
    queries->getContacts(search, [&](std::optional<std::vector<YContact>>) {
        seen.push_back(queries->inMemoryState().currentNetworkKeyword.at("u"));
        if (seen.size() == 1) {
            auto longer = search;
            longer.searchStr = "ab";
            queries->getContacts(longer, [&](auto) { seen.push_back("ab"); });
        }
    });
    // "a" answered, then "ab" answered from the cache and by the server.
    EXPECT_EQ(seen, (std::vector<std::string>{"a", "ab", "ab"}));
}

}  // namespace
}  // namespace ycontacts::querytest

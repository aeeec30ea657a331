// Suggestions: the store answer and its in-memory narrowing, the server answer turned into addresses, routing.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DataManager/QueriesTestSupport.h"

namespace ycontacts::querytest {
namespace {

using ::testing::_;
using ::testing::Return;

struct SuggestionAnswer {
    std::string searchStr;
    std::optional<std::vector<std::string>> emails;
    bool operator==(const SuggestionAnswer&) const = default;
};

class SuggestionsTest : public QueriesTest {
protected:
    YContactsQueries::SuggestionsCallback record() {
        return [this](std::string searchStr, std::optional<std::vector<YSuggestionContact>> suggestions) {
            std::optional<std::vector<std::string>> emails;
            if (suggestions) {
                emails.emplace();
                for (const auto& s : *suggestions) emails->push_back(s.email);
                last = *suggestions;
            }
            answers.push_back({std::move(searchStr), std::move(emails)});
        };
    }
    void suggest(const std::string& text, int limit = 20, std::optional<bool> isOrg = false,
                 RequestType type = RequestType::local, const std::string& yuid = "u") {
        queries->getSuggestionContacts(
            {.yuid = yuid, .searchStr = text, .limit = limit, .isOrg = isOrg, .requestType = type}, record());
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
    EXPECT_EQ(answers, (std::vector<SuggestionAnswer>{{"an", Ids{"ann@x", "ann@home", "z@x"}},
                                                      {"Ann", Ids{"ann@x"}},
                                                      {"andy", Ids{"z@x"}}}));
    ASSERT_EQ(last.size(), 1U);
    EXPECT_EQ(last[0].contactId, "2");
    const auto state = queries->inMemoryState();
    EXPECT_EQ(state.currentSearchKeywordStart, "an");
    EXPECT_EQ(state.currentSearchKeyword, "andy");
    EXPECT_EQ(timerRestarts, 3);
}

TEST_F(SuggestionsTest, TheStoreIsAskedAgainWhenTheCacheCannotAnswer) {
    // Three rows for a limit of three: the store may have had more, so "ann" cannot be narrowed from it.
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", _, "an", _, 3))).WillOnce(Return(anRows));
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", _, "ann", _, 3))).WillOnce(Return(anRows));
    // Complete now, but for another user, another population, and a keyword that does not extend it.
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("v", _, "anne", _, 20))).WillOnce(Return(std::nullopt));
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", true, "anne", _, 20)));
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", false, "b", _, 20)));
    suggest("an", 3);
    suggest("ann", 3);
    EXPECT_CALL(*database, getSuggestionContacts(storeQuery("u", _, "ann", _, 20))).WillOnce(Return(anRows));
    suggest("ann", 20);
    suggest("anne", 20, false, RequestType::local, "v");
    suggest("anne", 20, true);
    suggest("b", 20);
    EXPECT_EQ(answers[3], (SuggestionAnswer{"anne", std::nullopt}));
}

TEST_F(SuggestionsTest, ServerContactsBecomeOneSuggestionPerAddress) {
    YContact ann = contact("1", "Ann", "Lee", 0, true);
    ann.primaryEmail = YContact::Email("ann@x");
    ann.emails = {YContact::Email("ann@x"), YContact::Email("ann@home")};
    ann.contactYuid = "y1";
    ann.nickName = "Annie";
    ann.hasPhoto = false;
    YContact noMail = contact("2", "Nobody");
    YContact sameAddress = contact("3", "Other");
    sameAddress.emails = {YContact::Email("ann@home"), YContact::Email("o@x"), YContact::Email("p@x")};

    suggest("an", 3, std::nullopt, RequestType::server);
    ASSERT_EQ(network->searches().size(), 1U);
    EXPECT_EQ(network->searches()[0].limit, 3);
    EXPECT_FALSE(network->searches()[0].isOrg);
    network->answerSearch(0, std::vector<YContact>{ann, noMail, sameAddress});
    EXPECT_EQ(answers, (std::vector<SuggestionAnswer>{{"an", Ids{"ann@x", "ann@home", "o@x"}}}));
    const YSuggestionContact& first = last[0];
    EXPECT_EQ(first.contactId, "1");
    EXPECT_EQ(first.yuid, "y1");
    EXPECT_EQ(first.firstName, "Ann");
    EXPECT_EQ(first.lastName, "Lee");
    EXPECT_EQ(first.nickName, "Annie");
    EXPECT_TRUE(first.isOrg);
    EXPECT_FALSE(first.hasPhoto);
    EXPECT_EQ(last[2].contactId, "3");
}

TEST_F(SuggestionsTest, OnlyTheNewestServerSuggestionIsAnswered) {
    suggest("a", 20, false, RequestType::server);
    suggest("ab", 20, false, RequestType::server);
    network->answerSearch(1, std::nullopt);
    network->answerSearch(0, std::vector<YContact>{});
    EXPECT_EQ(answers, (std::vector<SuggestionAnswer>{{"ab", std::nullopt}}));
    EXPECT_EQ(timerRestarts, 2);
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

TEST_F(SuggestionsTest, OrgSuggestionsReadTheStoreAndEchoTheSearchText) {
    const YContactsQuery query{.yuid = "u", .searchStr = "an", .from = 10, .limit = 100};
    EXPECT_CALL(*database, getOrgContactSuggestions(query))
        .WillOnce(Return(std::vector<YContact>{contact("1", "Ann")}));
    std::optional<std::string> echoed;
    std::optional<Ids> ids;
    queries->getOrgContactSuggestions(query, [&](std::optional<std::string> s, std::optional<std::vector<YContact>> c) {
        echoed = s;
        if (c) ids = idsOf(*c);
    });
    EXPECT_EQ(echoed, "an");
    EXPECT_EQ(ids, some({"1"}));
    EXPECT_EQ(timerRestarts, 0);
}

}  // namespace
}  // namespace ycontacts::querytest

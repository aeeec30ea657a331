// The store's reads. Searches and suggestions are checked against a plain reference that filters and sorts
// every contact in memory the way the store's reads are defined.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "Store/StoreTestSupport.h"
#include "Support/LogCapture.h"

namespace ycontacts::storetest {
namespace {

using Ids = std::vector<std::string>;

std::string folded(std::string text) {
    for (auto& character : text) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return text;
}

bool startsWith(const std::string& text, const std::string& prefix) {
    return folded(text).compare(0, folded(prefix).size(), folded(prefix)) == 0;
}

std::string fullName(const YContact& contact) {
    std::string name = contact.firstName;
    if (contact.middleName) name += " " + *contact.middleName;
    if (contact.lastName) name += " " + *contact.lastName;
    return name;
}

bool matchesByName(const YContact& contact, const std::string& text, bool withNickName) {
    return startsWith(fullName(contact), text) || (contact.displayName && startsWith(*contact.displayName, text)) ||
           (contact.lastName && startsWith(*contact.lastName, text)) ||
           (withNickName && contact.nickName && startsWith(*contact.nickName, text));
}

std::vector<std::string> addressesOf(const YContact& contact) {
    std::vector<std::string> addresses;
    if (contact.primaryEmail) addresses.push_back(contact.primaryEmail->emailId);
    for (const auto& email : contact.emails) {
        if (std::find(addresses.begin(), addresses.end(), email.emailId) == addresses.end()) {
            addresses.push_back(email.emailId);
        }
    }
    return addresses;
}

bool matches(const YContact& contact, const std::string& text, bool withNickName) {
    if (matchesByName(contact, text, withNickName)) return true;
    const auto addresses = addressesOf(contact);
    return std::any_of(addresses.begin(), addresses.end(), [&](const auto& each) { return startsWith(each, text); });
}

bool inListOrder(const YContact& left, const YContact& right) {
    if (left.weightage != right.weightage) return left.weightage > right.weightage;
    if (folded(left.getDisplayName()) != folded(right.getDisplayName())) {
        return folded(left.getDisplayName()) < folded(right.getDisplayName());
    }
    return left.contactId < right.contactId;
}

Ids page(std::vector<YContact> contacts, std::optional<int> from, std::optional<int> limit) {
    std::sort(contacts.begin(), contacts.end(), inListOrder);
    Ids ids;
    for (std::size_t index = static_cast<std::size_t>(std::max(0, from.value_or(0))); index < contacts.size();
         ++index) {
        if (limit && *limit >= 0 && ids.size() >= static_cast<std::size_t>(*limit)) break;
        ids.push_back(contacts[index].contactId);
    }
    return ids;
}

// A mixed address book: names in every case, some non-ASCII, shared and equal weights, display names that
// differ from the names, nick names, several or no addresses, personal and org contacts, groups.
std::vector<YContact> mixedContacts() {
    const char* names[] = {"ann",  "Anna", "ANDREW", "anton", "Émile",     "Ærin",   "bob",  "Bea",
                           "carl", "Zoë",  "al",     "Al",    "Ann-Marie", "o'neil", "100%", "under_score"};
    std::mt19937 random(42);
    std::vector<YContact> contacts;
    for (int index = 0; index < 240; ++index) {
        YContact made("id-" + std::to_string(1000 + index), names[random() % std::size(names)], 1700000000);
        made.weightage = static_cast<int>(random() % 4);
        made.isOrg = random() % 3 == 0;
        if (random() % 2) made.lastName = names[random() % std::size(names)];
        if (random() % 5 == 0) made.middleName = "M";
        if (random() % 4 == 0) made.nickName = std::string("nick") + names[random() % std::size(names)];
        if (random() % 4 == 0) made.displayName = std::string(random() % 2 ? "Dr " : "") + names[random() % 16];
        if (random() % 7 == 0) made.type = YContactType::group;
        if (random() % 3 == 0) made.contactYuid = "y" + made.contactId;
        const int addresses = static_cast<int>(random() % 3);
        for (int each = 0; each < addresses; ++each) {
            made = withEmail(
                made, std::string(names[random() % std::size(names)]) + std::to_string(random() % 5) + "@Example.com");
        }
        contacts.push_back(made);
    }
    return contacts;
}

// One suggestion as the address and what it carries of its contact.
std::string suggestionLine(const std::string& address, const std::string& contactId, const std::string& firstName,
                           const std::optional<std::string>& yuid, bool isOrg) {
    return address + " " + contactId + " " + firstName + " " + yuid.value_or("-") + (isOrg ? " org" : "");
}

class StoreSearchTest : public StoreTest {
protected:
    void SetUp() override {
        StoreTest::SetUp();
        contacts = mixedContacts();
        // Saved in pages, as a download does.
        for (std::size_t start = 0; start < contacts.size(); start += 100) {
            const auto end = std::min(start + 100, contacts.size());
            ASSERT_TRUE(store->save("u1", std::vector<YContact>(contacts.begin() + static_cast<std::ptrdiff_t>(start),
                                                                contacts.begin() + static_cast<std::ptrdiff_t>(end))));
        }
        ASSERT_TRUE(store->save("u2", {contact("other", "Ann", 99)}));
    }

    Ids expected(const std::string& text, std::optional<bool> isOrg, std::optional<int> from, std::optional<int> limit,
                 bool withNickNames = true, bool withoutGroups = false) const {
        std::vector<YContact> found;
        for (const auto& each : contacts) {
            if ((isOrg && each.isOrg != *isOrg) || (withoutGroups && each.type == YContactType::group)) continue;
            if (text.empty() || matches(each, text, withNickNames)) found.push_back(each);
        }
        return page(found, from, limit);
    }

    std::vector<YContact> contacts;
};

const std::string searchTexts[] = {"a",    "A",    "an", "ANN",  "ann-", "anna", "Al",     "al ",   "dr",
                                   "dr b", "nick", "É",  "\xC3", "zo",   "100%", "under_", "bob1@", "ANN3@example.COM",
                                   "q",    "m",    ""};

TEST_F(StoreSearchTest, SearchPagesMatchTheReferenceForEveryTextPopulationAndPage) {
    const std::pair<std::optional<int>, std::optional<int>> pages[] = {
        {std::nullopt, std::nullopt}, {0, 10}, {7, 5}, {3, std::nullopt}, {25, 50}, {400, 10}, {0, 0}, {-4, 3}};
    for (const auto& text : searchTexts) {
        for (const auto isOrg : {std::optional<bool>(), std::optional<bool>(true), std::optional<bool>(false)}) {
            for (const auto& [from, limit] : pages) {
                const auto want = expected(text, isOrg, from, limit);
                const auto full =
                    store->getContacts({.yuid = "u1", .searchStr = text, .from = from, .limit = limit, .isOrg = isOrg});
                const auto light = store->getContactsList(
                    {.yuid = "u1", .searchStr = text, .from = from, .limit = limit, .isOrg = isOrg});
                ASSERT_TRUE(full.has_value() && light.has_value());
                EXPECT_EQ(idsOf(full), want) << "'" << text << "' from " << from.value_or(-1) << " limit "
                                             << limit.value_or(-1) << " isOrg " << isOrg.value_or(-1);
                EXPECT_EQ(idsOf(light), want) << "'" << text << "'";
            }
        }
    }
}

TEST_F(StoreSearchTest, UsageCountsReorderSearchesAndDeletedContactsLeaveThem) {
    std::map<std::string, std::string> usage;
    for (std::size_t index = 0; index < contacts.size(); index += 3) {
        contacts[index].weightage = static_cast<int>(index % 11);
        usage[contacts[index].contactId] = std::to_string(index % 11);
    }
    ASSERT_TRUE(store->updateContactsUsageCount("u1", usage));
    for (const char* text : {"a", "ann", "nick"}) {
        EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .searchStr = text, .from = 2, .limit = 20})),
                  expected(text, std::nullopt, 2, 20))
            << text;
    }

    const Ids removed{contacts[0].contactId, contacts[1].contactId, contacts[2].contactId};
    ASSERT_TRUE(store->deleteContacts("u1", removed));
    contacts.erase(contacts.begin(), contacts.begin() + 3);
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .searchStr = "a"})),
              expected("a", std::nullopt, std::nullopt, std::nullopt));
}

TEST_F(StoreSearchTest, SuggestionsMatchTheReferenceOneEntryPerAddressAtItsBestContact) {
    const auto reference = [&](const std::string& text, std::optional<bool> isOrg, int limit) {
        struct Entry {
            const YContact* contact;
            std::size_t position;
            std::string address;
        };
        std::vector<Entry> entries;
        for (const auto& each : contacts) {
            if (isOrg && each.isOrg != *isOrg) continue;
            const bool byName = matchesByName(each, text, true);
            const auto addresses = addressesOf(each);
            for (std::size_t position = 0; position < addresses.size(); ++position) {
                if (byName || startsWith(addresses[position], text))
                    entries.push_back({&each, position, addresses[position]});
            }
        }
        std::stable_sort(entries.begin(), entries.end(), [](const Entry& left, const Entry& right) {
            if (left.contact->weightage != right.contact->weightage) {
                return left.contact->weightage > right.contact->weightage;
            }
            if (left.contact->isOrg != right.contact->isOrg) return !left.contact->isOrg;
            if (left.contact != right.contact) return inListOrder(*left.contact, *right.contact);
            return left.position < right.position;
        });
        std::vector<std::string> picked;
        std::set<std::string> offered;
        for (const auto& entry : entries) {
            if (static_cast<int>(picked.size()) == limit) break;
            const auto& chosen = *entry.contact;
            if (offered.insert(entry.address).second) {
                picked.push_back(suggestionLine(entry.address, chosen.contactId, chosen.firstName, chosen.contactYuid,
                                                chosen.isOrg));
            }
        }
        return picked;
    };
    for (const auto& text : searchTexts) {
        for (const auto isOrg : {std::optional<bool>(), std::optional<bool>(true)}) {
            // 60 addresses need several batches of contacts, since many contacts have no address.
            for (const int limit : {1, 10, 60}) {
                const auto suggestions =
                    store->getSuggestionContacts({.yuid = "u1", .searchStr = text, .limit = limit, .isOrg = isOrg});
                ASSERT_TRUE(suggestions.has_value());
                std::vector<std::string> got;
                for (const auto& each : *suggestions) {
                    got.push_back(suggestionLine(each.email, each.contactId, each.firstName, each.yuid, each.isOrg));
                }
                EXPECT_EQ(got, reference(text, isOrg, limit)) << "'" << text << "' limit " << limit;
            }
        }
    }
}

TEST_F(StoreSearchTest, OrgSuggestionsMatchTheReferenceWithAndWithoutNickNamesAndGroups) {
    for (const auto& text : searchTexts) {
        for (const bool withNickNames : {true, false}) {
            for (const bool withoutGroups : {true, false}) {
                EXPECT_EQ(idsOf(store->getOrgContactSuggestions({.yuid = "u1",
                                                                 .searchStr = text,
                                                                 .from = 2,
                                                                 .limit = 15,
                                                                 .excludeGroups = withoutGroups,
                                                                 .shouldSearchNickname = withNickNames})),
                          expected(text, true, 2, 15, withNickNames, withoutGroups))
                    << "'" << text << "' nick " << withNickNames << " groups out " << withoutGroups;
            }
        }
    }
}

TEST_F(StoreTest, SearchesWalkThePrefixIndexesInListOrderWithoutSortingTheMatches) {
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

TEST_F(StoreTest, LookupsByAddressUserIdIdAndCategoryPickTheRightContacts) {
    YContact personal = withEmail(contact("p-ann", "Ann at home", 0), "shared@example.com");
    YContact org = withEmail(contact("o-ann", "Ann at work", 0, true), "shared@example.com");
    org.contactYuid = "ann-yuid";
    YContact amy = withEmail(withEmail(contact("amy", "Amy", 9), "amy@home.example"), "amy@corp.example");
    amy.categories = std::vector<YContact::Category>{YContact::Category("friends")};
    ASSERT_TRUE(store->save("u1", {personal, org, amy}));
    ASSERT_TRUE(store->save("u2", {contact("amy", "Amy of u2", 99)}));

    EXPECT_EQ(store->getContactByEmailId("u1", "SHARED@example.com", true)->contactId, "p-ann");
    EXPECT_EQ(store->getContactByEmailId("u1", "shared@example.com", false)->contactId, "o-ann");
    EXPECT_FALSE(store->getContactByEmailId("u1", "nobody@example.com", true).has_value());
    EXPECT_EQ(store->getContactByContactYuid("u1", "ann-yuid")->contactId, "o-ann");
    EXPECT_EQ(store->getContactByContactId("u2", "amy")->firstName, "Amy of u2");
    EXPECT_EQ(idsOf(store->getContactsFromEmailIds("u1", {"AMY@corp.example", "amy@home.example", "shared@example.com"},
                                                   std::nullopt)),
              (Ids{"amy", "p-ann", "o-ann"}));
    EXPECT_EQ(idsOf(store->getContactsFromEmailIds("u1", {"shared@example.com"}, true)), (Ids{"o-ann"}));
    EXPECT_TRUE(store->getContactsFromEmailIds("u1", {}, std::nullopt)->empty());
    EXPECT_EQ(store->getContactCount("u1"), std::make_pair(std::int64_t{1}, std::int64_t{2}));
    EXPECT_EQ(store->getContactCount("nobody"), std::make_pair(std::int64_t{0}, std::int64_t{0}));

    ASSERT_TRUE(store->addCategories("u1", {YContactCategory("friends"), YContactCategory("Acme")}));
    auto renamed = YContactCategory("friends");
    renamed.categoryName = "Best friends";
    ASSERT_TRUE(store->addCategories("u1", {renamed}));
    EXPECT_EQ(idsOf(store->getContacts("u1", std::string("friends"))), (Ids{"amy"}));
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
    EXPECT_FALSE(store.getSuggestionContacts({.yuid = "u1", .searchStr = "a", .limit = 5}).has_value());
    EXPECT_FALSE(store.getCategories("u1").has_value());
    EXPECT_FALSE(log.messages().empty());
}

TEST_F(StoreTest, ChildRowsReachTheirOwnContactInSmallPagesAndWholeListings) {
    std::vector<YContact> many;
    for (int index = 0; index < 2100; ++index) {
        YContact made = contact("id-" + std::to_string(index), "Name" + std::to_string(index), index % 7);
        made.phones = {{"tel-" + std::to_string(index), YContact::PhoneType::home}};
        many.push_back(made);
    }
    ASSERT_TRUE(store->save("u1", many));
    for (const auto& [from, limit, expected] :
         {std::tuple{3, std::optional(20), 20u}, std::tuple{0, std::optional(300), 300u},
          std::tuple{0, std::optional<int>(), 2100u}}) {
        const auto contacts = store->getContacts({.yuid = "u1", .from = from, .limit = limit});
        ASSERT_TRUE(contacts.has_value());
        ASSERT_EQ(contacts->size(), expected);
        for (const auto& each : *contacts) {
            ASSERT_EQ(each.phones.size(), 1u) << each.contactId;
            EXPECT_EQ(each.phones.front().phoneNumber, "tel-" + each.contactId.substr(3));
        }
    }
}

}  // namespace
}  // namespace ycontacts::storetest

// Searches, suggestions and the list form, checked against a plain reference that filters and sorts every
// contact in memory the way the store's reads are defined.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>

#include "Domain/ContactComparison.h"
#include "Store/StoreTestSupport.h"

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
    const char* names[] = {"ann", "Anna", "ANDREW", "anton", "Émile", "Ærin", "bob", "Bea", "carl", "Zoë",
                           "al",  "Al",   "Ann-Marie", "o'neil", "100%", "under_score"};
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
        const int addresses = static_cast<int>(random() % 3);
        for (int each = 0; each < addresses; ++each) {
            made = withEmail(made, std::string(names[random() % std::size(names)]) + std::to_string(random() % 5) +
                                       "@Example.com");
        }
        contacts.push_back(made);
    }
    return contacts;
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

    Ids expected(const std::string& text, std::optional<bool> isOrg, std::optional<int> from,
                 std::optional<int> limit) const {
        std::vector<YContact> found;
        for (const auto& each : contacts) {
            if ((!isOrg || each.isOrg == *isOrg) && (text.empty() || matches(each, text, true))) found.push_back(each);
        }
        return page(found, from, limit);
    }

    std::vector<YContact> contacts;
};

const std::string searchTexts[] = {"a", "A", "an", "ANN", "ann-", "anna", "Al", "al ", "dr", "dr b", "nick", "É",
                                   "\xC3", "zo", "100%", "under_", "bob1@", "ANN3@example.COM", "q", "m", ""};

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

    ASSERT_TRUE(store->deleteAllDetails("u1"));
    EXPECT_EQ(countRows("YContactSearchTable", "yuid = 'u1'"), 0);
    EXPECT_EQ(countRows("YContactSearchTable", "yuid = 'u2'"), 1);
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
                if (byName || startsWith(addresses[position], text)) entries.push_back({&each, position, addresses[position]});
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
        std::vector<std::pair<std::string, std::string>> picked;
        std::set<std::string> offered;
        for (const auto& entry : entries) {
            if (static_cast<int>(picked.size()) == limit) break;
            if (offered.insert(entry.address).second) picked.emplace_back(entry.address, entry.contact->contactId);
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
                std::vector<std::pair<std::string, std::string>> got;
                for (const auto& each : *suggestions) got.emplace_back(each.email, each.contactId);
                EXPECT_EQ(got, reference(text, isOrg, limit)) << "'" << text << "' limit " << limit;
            }
        }
    }
}

TEST_F(StoreSearchTest, OrgSuggestionsMatchTheReferenceWithAndWithoutNickNamesAndGroups) {
    for (const auto& text : searchTexts) {
        for (const bool withNickNames : {true, false}) {
            for (const bool withoutGroups : {true, false}) {
                std::vector<YContact> found;
                for (const auto& each : contacts) {
                    if (!each.isOrg || (withoutGroups && each.type == YContactType::group)) continue;
                    if (text.empty() || matches(each, text, withNickNames)) found.push_back(each);
                }
                EXPECT_EQ(idsOf(store->getOrgContactSuggestions({.yuid = "u1",
                                                                 .searchStr = text,
                                                                 .from = 2,
                                                                 .limit = 15,
                                                                 .excludeGroups = withoutGroups,
                                                                 .shouldSearchNickname = withNickNames})),
                          page(found, 2, 15))
                    << "'" << text << "' nick " << withNickNames << " groups out " << withoutGroups;
            }
        }
    }
}

TEST_F(StoreTest, DisplayNameIsStoredListedBySearchedAndAbsentStaysAbsent) {
    YContact named = contact("named", "Zed", 1);
    named.lastName = "Young";
    named.displayName = "Aaron the Builder";
    YContact plain = contact("plain", "Bert", 1);
    ASSERT_TRUE(store->save("u1", {named, plain}));

    EXPECT_EQ(store->getContactByContactId("u1", "named")->displayName, "Aaron the Builder");
    EXPECT_FALSE(store->getContactByContactId("u1", "plain")->displayName.has_value());
    // Listed by its display name, found by it and still by its own names.
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1"})), (Ids{"named", "plain"}));
    for (const char* text : {"aaron t", "ZED Y", "you"}) {
        EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .searchStr = text})), (Ids{"named"})) << text;
    }
    EXPECT_EQ(store->getContactsList({.yuid = "u1", .searchStr = "aaron", .from = 0, .limit = 5})->front().displayName,
              "Aaron the Builder");

    // A later save without it clears it, and the search by it.
    named.displayName.reset();
    ASSERT_TRUE(store->save("u1", {named}));
    EXPECT_FALSE(store->getContactByContactId("u1", "named")->displayName.has_value());
    EXPECT_TRUE(store->getContacts({.yuid = "u1", .searchStr = "aaron"})->empty());
}

TEST_F(StoreTest, ListFormCarriesWhatAListShowsAndLeavesTheRestOut) {
    const YContact rich = testing::fullyPopulatedContact();
    ASSERT_TRUE(store->save("u1", {rich}));
    YContact expectedLight = rich;
    expectedLight.workInfo->address.reset();
    expectedLight.address.reset();
    expectedLight.IMs.clear();
    expectedLight.urls.clear();
    expectedLight.categories.reset();
    expectedLight.birthDate = expectedLight.birthMonth = expectedLight.birthYear = std::nullopt;
    expectedLight.notes.reset();
    expectedLight.gender.reset();

    for (const auto& searchStr : {std::optional<std::string>(), std::optional<std::string>("ann")}) {
        const auto listed = store->getContactsList({.yuid = "u1", .searchStr = searchStr});
        ASSERT_TRUE(listed.has_value());
        ASSERT_EQ(listed->size(), 1u);
        EXPECT_TRUE(testing::sameContactFields(expectedLight, listed->front()));
    }
    // The full form still has everything.
    const auto full = store->getContacts({.yuid = "u1", .searchStr = "ann"});
    ASSERT_EQ(full->size(), 1u);
    EXPECT_TRUE(testing::sameContactFields(rich, full->front()));
}

TEST_F(StoreTest, AContactSavedTwiceInOnePageIsSearchedAsItsLastVersion) {
    YContact first = withEmail(contact("dup", "Early", 0), "early@example.com");
    YContact second = withEmail(contact("dup", "Later", 0, true), "later@example.com");
    ASSERT_TRUE(store->save("u1", {first, second}));

    EXPECT_TRUE(store->getContacts({.yuid = "u1", .searchStr = "early"})->empty());
    EXPECT_EQ(idsOf(store->getContacts({.yuid = "u1", .searchStr = "later", .isOrg = true})), (Ids{"dup"}));
    EXPECT_TRUE(store->getContacts({.yuid = "u1", .searchStr = "later", .isOrg = false})->empty());
}

}  // namespace
}  // namespace ycontacts::storetest

// The facade as a host builds it: the library's own store, preference service and data manager, with only
// the contacts server faked. Contacts are seeded through the store and read back through the use cases.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Support/FakeAuthentication.h"
#include "Support/FakeContactsNetworkService.h"
#include "Support/TemporaryDirectory.h"
#include "Support/UsecaseSupport.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

namespace ycontacts {
namespace {

using namespace testsupport;
using Ids = std::vector<std::string>;

YContact seeded(const std::string& id, const std::string& firstName, int weightage, bool isOrg,
                const std::string& email) {
    YContact contact(id, firstName, 1700000000000);
    contact.weightage = weightage;
    contact.isOrg = isOrg;
    YContact::Email primary(email);
    primary.isPrimary = true;
    contact.primaryEmail = primary;
    contact.emails = {primary};
    return contact;
}

std::optional<Ids> idsOf(const std::optional<std::vector<YContact>>& contacts) {
    if (!contacts) return std::nullopt;
    Ids ids;
    for (const auto& contact : *contacts) ids.push_back(contact.contactId);
    return ids;
}

class YContactServiceStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        auto builders = YContactService::Builders::defaults();
        builders.database = [this, makeStore = builders.database](const std::filesystem::path& url) {
            store = makeStore(url);
            return store;
        };
        builders.network = [this](const auto&) -> std::shared_ptr<YContactsNetworkContract> { return network; };
        service = std::make_unique<YContactService>(std::move(builders));
        service->config = YContactService::Config(std::make_shared<FakeAuthentication>(),
                                                  folder.file("contacts.sqlite"), std::nullopt);

        // The first call builds every component; the host then makes the tables and the store is filled.
        ASSERT_NE(service->syncHandler(), nullptr);
        ASSERT_NE(store, nullptr);
        ASSERT_TRUE(YContactsDatabaseSchema::createTables(YContactService::databaseIdentifier));
        YContact ann = seeded("ann", "Ann", 5, false, "ann@home.example");
        ann.lastName = "Lee";
        YContact bob = seeded("bob", "Bob", 9, true, "bob@corp.example");
        bob.contactYuid = "bob-yuid";
        ASSERT_TRUE(store->save("u1", {ann, bob, seeded("andy", "Andy", 1, false, "andy@home.example"),
                                       seeded("carl", "Carl", 0, true, "an.carl@corp.example"),
                                       seeded("p-sam", "Sam", 2, false, "sam@shared.example"),
                                       seeded("o-sam", "Sam", 2, true, "sam@shared.example")}));
        ASSERT_TRUE(store->save("u2", {seeded("anna", "Anna", 50, false, "anna@home.example")}));
    }

    void TearDown() override {
        service.reset();
        YSqliteHelper::getShared().unregisterDB(YContactService::databaseIdentifier);
    }

    std::optional<Ids> contacts(const std::optional<std::string>& searchStr, std::optional<int> limit,
                                std::optional<bool> isOrg) {
        Received<std::optional<std::vector<YContact>>> answers;
        service->getContacts("u1", std::nullopt, searchStr, limit, isOrg, RequestType::local,
                             [&](std::optional<std::vector<YContact>> found) { answers.add(std::move(found)); });
        EXPECT_TRUE(answers.waitFor(1));
        return answers.values().empty() ? std::nullopt : idsOf(answers.values().front());
    }

    std::optional<YContact> contact(const std::optional<std::string>& emailId,
                                    const std::optional<std::string>& contactId) {
        Received<std::optional<YContact>> answers;
        service->getContact("u1", emailId, contactId, std::nullopt,
                            [&](std::optional<YContact> found) { answers.add(std::move(found)); });
        EXPECT_TRUE(answers.waitFor(1));
        return answers.values().empty() ? std::nullopt : answers.values().front();
    }

    TemporaryDirectory folder;
    std::shared_ptr<::testing::NiceMock<FakeContactsNetworkService>> network =
        std::make_shared<::testing::NiceMock<FakeContactsNetworkService>>();
    std::shared_ptr<YContactsDatabaseContract> store;
    std::unique_ptr<YContactService> service;
};

TEST_F(YContactServiceStoreTest, ListingsComeFromTheStoreByWeightThenNameThenIdForTheUserAlone) {
    EXPECT_EQ(contacts(std::nullopt, std::nullopt, std::nullopt),
              (Ids{"bob", "ann", "o-sam", "p-sam", "andy", "carl"}));
    EXPECT_EQ(contacts(std::nullopt, 2, std::nullopt), (Ids{"bob", "ann"}));
    EXPECT_EQ(contacts(std::nullopt, std::nullopt, true), (Ids{"bob", "o-sam", "carl"}));
    // Ann and Andy by name, Carl by address; u2's Anna is not u1's.
    EXPECT_EQ(contacts("an", std::nullopt, std::nullopt), (Ids{"ann", "andy", "carl"}));
    EXPECT_EQ(contacts("zz", std::nullopt, std::nullopt), Ids{});
}

TEST_F(YContactServiceStoreTest, AContactIsFoundByIdOrByAddressPreferringTheOrganisationsEntry) {
    const auto ann = contact(std::nullopt, "ann");
    ASSERT_TRUE(ann);
    EXPECT_EQ(ann->firstName, "Ann");
    EXPECT_EQ(ann->lastName, "Lee");
    ASSERT_EQ(ann->emails.size(), 1u);
    EXPECT_EQ(ann->emails.front().emailId, "ann@home.example");

    EXPECT_EQ(contact("bob@corp.example", std::nullopt)->contactYuid, "bob-yuid");
    // The facade never prefers personal information: of the two entries sharing the address, the org one.
    EXPECT_EQ(contact("sam@shared.example", std::nullopt)->contactId, "o-sam");
    // The id wins over the address when both are given.
    EXPECT_EQ(contact("bob@corp.example", "andy")->contactId, "andy");
    EXPECT_FALSE(contact("nobody@home.example", std::nullopt));
    EXPECT_FALSE(contact(std::nullopt, "anna"));
}

TEST_F(YContactServiceStoreTest, SuggestionsGiveOneEntryPerAddressInRankOrderAndNameTheirText) {
    // Each answer as its search text, then "address id" per suggestion.
    const auto suggest = [&](const std::string& text) {
        Received<Ids> answers;
        auto collect = [&](std::string searchStr, std::optional<std::vector<YSuggestionContact>> found) {
            Ids answer{std::move(searchStr)};
            for (const auto& each : found.value_or(std::vector<YSuggestionContact>{})) {
                answer.push_back(each.email + " " + each.contactId);
            }
            answers.add(answer);
        };
        service->getSuggestionContacts("u1", text, std::nullopt, 10, std::nullopt, RequestType::local, collect);
        EXPECT_TRUE(answers.waitFor(1));
        return answers.values().empty() ? Ids{} : answers.values().front();
    };
    EXPECT_EQ(suggest("an"),
              (Ids{"an", "ann@home.example ann", "andy@home.example andy", "an.carl@corp.example carl"}));
    // Two entries share Sam's address: the one suggestion is the personal entry's.
    EXPECT_EQ(suggest("sa"), (Ids{"sa", "sam@shared.example p-sam"}));
}

TEST_F(YContactServiceStoreTest, BothAnswersTheStoreFirstAndThenTheServer) {
    Received<std::optional<Ids>> answers;
    service->getContacts("u1", "o1", "bo", std::nullopt, true, RequestType::both,
                         [&](std::optional<std::vector<YContact>> found) { answers.add(idsOf(found)); });
    ASSERT_TRUE(network->waitForSearches(1));
    EXPECT_EQ(network->searches().front().searchText, "bo");
    network->answerSearch(0, std::vector<YContact>{seeded("bo-2", "Bodil", 0, true, "bodil@corp.example")});
    ASSERT_TRUE(answers.waitFor(2));
    EXPECT_EQ(answers.values(), (std::vector<std::optional<Ids>>{Ids{"bob"}, Ids{"bo-2"}}));

    // Suggestions from the network ask the server alone.
    Received<std::string> suggested;
    service->getSuggestionContactsFromNetwork("u1", "o1", "bod", 5, true, [&](std::string text, auto found) {
        suggested.add(text + " " + (found && !found->empty() ? found->front().email : "none"));
    });
    ASSERT_TRUE(network->waitForSearches(2));
    EXPECT_EQ(network->searches()[1].limit, 5);
    network->answerSearch(1, std::vector<YContact>{seeded("bo-2", "Bodil", 0, true, "bodil@corp.example")});
    ASSERT_TRUE(suggested.waitFor(1));
    EXPECT_EQ(suggested.values(), std::vector<std::string>{"bod bodil@corp.example"});
}

TEST_F(YContactServiceStoreTest, AddressLookUpsAndRemovalGoThroughToTheStore) {
    Received<std::optional<Ids>> byAddress;
    service->getContactsFromIds("u1", std::nullopt, Ids{"bob@corp.example", "andy@home.example"}, std::nullopt,
                                std::nullopt, RequestType::local, [&](auto found) { byAddress.add(idsOf(found)); });
    ASSERT_TRUE(byAddress.waitFor(1));
    ASSERT_TRUE(byAddress.values().front());
    EXPECT_THAT(*byAddress.values().front(), ::testing::UnorderedElementsAre("bob", "andy"));

    service->removeAllData("u1");
    ASSERT_TRUE(drainUsecaseQueue());
    EXPECT_EQ(contacts(std::nullopt, std::nullopt, std::nullopt), Ids{});
    EXPECT_FALSE(contact(std::nullopt, "ann"));
}

// The library's own preference builder keeps the progress in the database file it is given.
TEST(YContactServiceDefaultsTest, ProgressIsKeptInTheNamedDatabaseFile) {
    TemporaryDirectory folder;
    const auto build = YContactService::Builders::defaults().preference;
    build(folder.file("a.sqlite"))->setStartIndex("u1", 7, false);
    EXPECT_EQ(build(folder.file("a.sqlite"))->startIndex("u1", false), 7);
    EXPECT_EQ(build(folder.file("b.sqlite"))->startIndex("u1", false), 1);
    EXPECT_EQ(build(std::nullopt)->startIndex("u1", false), 1);
}

}  // namespace
}  // namespace ycontacts

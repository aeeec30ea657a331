// Downloads from the sample server through the facade: initial and incremental syncs, several users at once,
// and removing a user while a download is under way.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/EndToEndFixture.h"

namespace ycontacts::endtoend {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Optional;
using Counts = std::pair<std::int64_t, std::int64_t>;

TEST_F(EndToEndTest, InitialSyncsStoreWhatTheServerHasAndReportEachPageInOrder) {
    auto sync = harness->sync();
    sync->start("u1", "o1");
    sync->start("u2", "o1");
    ASSERT_TRUE(waitForFinish("u1", 1));
    ASSERT_TRUE(waitForFinish("u2", 1));
    const auto personal = idsOf(serverContacts(server, "u1", false));
    const auto org = idsOf(serverContacts(server, "u1", true));
    EXPECT_THAT(harness->observer().log.texts("u1"), ElementsAreArray(expectedInitialDownloadLines(personal, org)));
    // 120 contacts are two full pages, a short one and the empty page the short one calls for.
    EXPECT_THAT(requestsSince("u1"), ElementsAre("personal page 1", "personal page 2", "personal page 3",
                                                 "personal page 4", "org page 1", "org page 2", "org page 3"));
    EXPECT_THAT(sync->getContactCount("u1"), Optional(Counts(80, 120)));
    EXPECT_GT(sync->lastUpdatedTime("u1").value_or(0), 0);
    // u1 and u2 share an organisation; each stores its contacts under its own yuid.
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u2"));

    // Users without an organisation: without a yoid nothing is asked about one; with one, the server's
    // not-found envelope reads as an empty last page.
    ASSERT_TRUE(startAndWait("u3", std::nullopt));
    EXPECT_THAT(harness->observer().log.texts("u3"),
                ElementsAreArray(expectedInitialDownloadLines(idsOf(serverContacts(server, "u3", false)), {})));
    EXPECT_THAT(requestsSince("u3"),
                ElementsAre("personal page 1", "personal page 2", "personal page 3", "personal page 4"));
    ASSERT_TRUE(startAndWait("u4", "o1"));
    auto lines = expectedInitialDownloadLines(idsOf(serverContacts(server, "u4", false)), {});
    lines.insert(lines.end() - 2, "countUpdate org=0 personal=120");
    EXPECT_THAT(harness->observer().log.texts("u4"), ElementsAreArray(lines));
    EXPECT_THAT(requestsSince("u4"),
                ElementsAre("personal page 1", "personal page 2", "personal page 3", "personal page 4", "org page 1"));
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u3"));
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u4"));
}

// Changes a contact the way another device of the user would.
sample_server::SampleContact edited(sample_server::SampleContact contact, const std::string& tag) {
    contact.firstName += "-" + tag;
    contact.lastName = "Edited";
    contact.phones.push_back({"+1 555 0" + contact.contactId, "work"});
    if (!contact.emails.empty()) contact.emails.erase(contact.emails.begin() + 1, contact.emails.end());
    contact.categories.clear();
    contact.notes = "edited \"" + tag + "\"\n";
    return contact;
}

TEST_F(EndToEndTest, AnIncrementalSyncBringsAddsChangesAndDeletesOfBothPopulations) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    const auto synced = harness->sync()->lastUpdatedTime("u1");
    ASSERT_TRUE(synced);
    const auto personal = serverContacts(server, "u1", false);
    const auto org = serverContacts(server, "u1", true);
    // 55 changes, 1 addition and 2 deletions: more than one page of 50. The store has lost two of the changed
    // contacts, which must come back whole.
    ASSERT_TRUE(forgetContact(harness->databasePath(), "u1", personal[7].contactId));
    ASSERT_TRUE(forgetContact(harness->databasePath(), "u1", org[5].contactId));
    for (std::size_t index = 0; index < 55; ++index) {
        ASSERT_TRUE(server.updateContact("u1", false, edited(personal[index], "p")));
    }
    sample_server::SampleContact fresh;
    fresh.firstName = "Fresh";
    fresh.emails = {{"fresh@example.com", true}};
    const auto added = server.addContact("u1", false, fresh);
    ASSERT_TRUE(added);
    ASSERT_TRUE(server.deleteContact("u1", false, personal[100].contactId));
    ASSERT_TRUE(server.deleteContact("u1", false, personal[119].contactId));
    ASSERT_TRUE(server.updateContact("o1", true, edited(org[5], "o")));
    ASSERT_TRUE(server.deleteContact("o1", true, org[6].contactId));
    sample_server::SampleContact member;
    member.firstName = "Newcomer";
    member.yuid = "u-new";
    const auto orgAdded = server.addContact("o1", true, member);
    ASSERT_TRUE(orgAdded);

    const auto from = networkLines("u1");
    harness->sync()->syncContacts("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 2));
    ASSERT_EQ(count("u1", "downloadComplete sync"), 1u);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    // 58 personal items: a full page, a page short by 42 and an empty page; 3 org items and an empty page.
    EXPECT_THAT(requestsSince("u1", from),
                ElementsAre("personal page 1", "personal page 2", "personal page 3", "org page 1", "org page 2"));
    const auto lines = harness->observer().log.texts("u1");
    EXPECT_THAT(lines, Contains("contactsAdded personal " + *added));
    EXPECT_THAT(lines, Contains("contactsDeleted personal " + personal[100].contactId + " " + personal[119].contactId));
    EXPECT_THAT(lines, Contains("contactsAdded org " + *orgAdded));
    EXPECT_THAT(lines, Contains("contactsUpdated org " + org[5].contactId));
    EXPECT_THAT(lines, Contains("contactsDeleted org " + org[6].contactId));
    EXPECT_EQ(lines.back(), "downloadComplete sync");
    EXPECT_THAT(harness->sync()->getContactCount("u1"), Optional(Counts(80, 119)));
    EXPECT_GT(harness->sync()->lastUpdatedTime("u1").value_or(0), *synced);
}

TEST_F(EndToEndTest, RemovingAUsersDataCancelsItsDownloadAndNothingOfItComesBack) {
    auto& network = harness->network().log;
    ASSERT_TRUE(startAndWait("u2", "o1"));
    // u1's second page is held back far longer than the test waits for it; the removal must end the wait.
    server.injectFault({.pathContains = "/self/contacts", .page = 2, .delay = std::chrono::minutes(1)});
    harness->sync()->start("u1", "o1");
    ASSERT_TRUE(network.waitForCount("u1", {"sent personal page 2"}, 1));
    ASSERT_GT(rowsOfUser(harness->databasePath(), "u1"), 0);
    harness->service().removeAllData("u1");
    ASSERT_TRUE(harness->preference().log.waitForCount("u1", {"removed"}, 1));
    ASSERT_TRUE(network.waitForCount("u1", {"reply personal page 2"}, 1, std::chrono::seconds(20)));
    server.clearFaults();
    EXPECT_EQ(rowsOfUser(harness->databasePath(), "u1"), 0);
    EXPECT_FALSE(harness->sync()->isSyncInProgress("u1"));
    EXPECT_EQ(count("u1", "downloadFailed") + count("u1", "downloadComplete"), 0u);
    EXPECT_EQ(harness->sync()->lastUpdatedTime("u1").value_or(0.0), 0.0);
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u2"));
    // Nothing of the old download is kept: the next start begins again at page 1.
    const auto from = networkLines("u1");
    ASSERT_TRUE(startAndWait("u1", "o1"));
    EXPECT_EQ(requestsSince("u1", from).at(0), "personal page 1");
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
}

}  // namespace
}  // namespace ycontacts::endtoend

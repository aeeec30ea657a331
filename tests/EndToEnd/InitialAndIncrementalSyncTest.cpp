#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "EndToEnd/EndToEndFixture.h"

namespace ycontacts::endtoend {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Optional;

TEST_F(EndToEndTest, AnInitialSyncStoresBothPopulationsAsTheServerHasThemAndReportsEachPageInOrder) {
    ASSERT_TRUE(startAndWait("u1", "o1"));

    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    const auto personal = idsOf(serverContacts(server, "u1", false));
    const auto org = idsOf(serverContacts(server, "u1", true));
    ASSERT_EQ(personal.size(), 120u);
    ASSERT_EQ(org.size(), 80u);
    EXPECT_THAT(harness->observer().log.texts("u1"), ElementsAreArray(expectedInitialDownloadLines(personal, org, 50)));
    // 120 contacts are two full pages, a short one and the empty page the short one calls for.
    EXPECT_THAT(requestsSince("u1", 0), ElementsAre("personal page 1", "personal page 2", "personal page 3",
                                                    "personal page 4", "org page 1", "org page 2", "org page 3"));

    auto sync = harness->sync();
    EXPECT_FALSE(sync->isSyncInProgress("u1"));
    EXPECT_THAT(sync->getContactCount("u1"), Optional(std::pair<std::int64_t, std::int64_t>(80, 120)));
    const auto completions = harness->observer().completionTimes("u1");
    ASSERT_EQ(completions.size(), 1u);
    EXPECT_THAT(sync->lastUpdatedTime("u1"), Optional(completions.front()));
    // Another user's data is not touched.
    EXPECT_EQ(rowsOfUser(harness->databasePath(), "u2"), 0);
}

TEST_F(EndToEndTest, UsersWithoutAnOrganisationCompleteWithTheirPersonalContactsWhetherOrNotAYoidIsGiven) {
    // Without a yoid nothing is asked about an organisation.
    ASSERT_TRUE(startAndWait("u3", std::nullopt));
    const auto u3Personal = idsOf(serverContacts(server, "u3", false));
    EXPECT_THAT(harness->observer().log.texts("u3"),
                ElementsAreArray(expectedInitialDownloadLines(u3Personal, std::nullopt, 50)));
    EXPECT_EQ(requestsSince("u3", 0).back(), "personal page 4");
    EXPECT_TRUE(storeMatchesServer(*harness, server, "u3"));

    // With one, the server answers the organisation request with its not-found envelope: an empty last page.
    ASSERT_TRUE(startAndWait("u4", "o1"));
    auto lines = expectedInitialDownloadLines(idsOf(serverContacts(server, "u4", false)), std::nullopt, 50);
    lines.insert(lines.end() - 2, "countUpdate org=0 personal=120");
    EXPECT_THAT(harness->observer().log.texts("u4"), ElementsAreArray(lines));
    EXPECT_EQ(requestsSince("u4", 0).back(), "org page 1");
    EXPECT_EQ(count("u4", "downloadFailed"), 0u);
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

TEST_F(EndToEndTest, AnIncrementalSyncBringsServerAddsChangesAndDeletesOfBothPopulations) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    const auto synced = harness->sync()->lastUpdatedTime("u1");
    ASSERT_TRUE(synced);

    auto personal = serverContacts(server, "u1", false);
    auto org = serverContacts(server, "u1", true);
    // 55 changes, 3 additions and 2 deletions: more than one page of 50.
    for (std::size_t index = 0; index < 55; ++index) {
        ASSERT_TRUE(server.updateContact("u1", false, edited(personal[index], "p")));
    }
    std::vector<std::string> added;
    for (int index = 0; index < 3; ++index) {
        sample_server::SampleContact fresh;
        fresh.firstName = "Fresh" + std::to_string(index);
        fresh.emails = {{"fresh" + std::to_string(index) + "@example.com", true}};
        const auto id = server.addContact("u1", false, fresh);
        ASSERT_TRUE(id);
        added.push_back(*id);
    }
    ASSERT_TRUE(server.deleteContact("u1", false, personal[100].contactId));
    ASSERT_TRUE(server.deleteContact("u1", false, personal[119].contactId));
    ASSERT_TRUE(server.updateContact("o1", true, edited(org[5], "o")));
    ASSERT_TRUE(server.deleteContact("o1", true, org[6].contactId));
    sample_server::SampleContact member;
    member.firstName = "Newcomer";
    member.yuid = "u-new";
    const auto orgAdded = server.addContact("o1", true, member);
    ASSERT_TRUE(orgAdded);

    const auto lineCount = harness->network().log.texts("u1").size();
    harness->sync()->syncContacts("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 2));
    ASSERT_EQ(count("u1", "downloadComplete sync"), 1u);

    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    // 60 personal items: a full page, a page short by 40 and an empty page; 3 org items and an empty page.
    EXPECT_THAT(requestsSince("u1", lineCount), ElementsAre("personal page 1", "personal page 2", "personal page 3",
                                                            "org page 1", "org page 2"));
    // Every incremental request asks for changes since the stored sync time, tombstones included.
    std::size_t incremental = 0;
    for (const auto& request : server.requestLog()) {
        if (request.path.find("/sync/") == std::string::npos) continue;
        ++incremental;
        EXPECT_EQ(request.param("filter_updated_time"), std::to_string(static_cast<std::int64_t>(*synced)));
        EXPECT_NE(request.param("include").find("show_deleted"), std::string::npos);
    }
    EXPECT_EQ(incremental, 5u);

    const auto lines = harness->observer().log.texts("u1");
    const auto has = [&](const std::string& text) { return std::find(lines.begin(), lines.end(), text) != lines.end(); };
    EXPECT_TRUE(has("contactsAdded personal " + added[0] + " " + added[1] + " " + added[2]));
    EXPECT_TRUE(has("contactsDeleted personal " + personal[100].contactId + " " + personal[119].contactId));
    EXPECT_TRUE(has("contactsAdded org " + *orgAdded));
    EXPECT_TRUE(has("contactsUpdated org " + org[5].contactId));
    EXPECT_TRUE(has("contactsDeleted org " + org[6].contactId));
    EXPECT_EQ(lines.back(), "downloadComplete sync");
    EXPECT_THAT(harness->sync()->getContactCount("u1"), Optional(std::pair<std::int64_t, std::int64_t>(80, 121)));
    EXPECT_GT(harness->sync()->lastUpdatedTime("u1").value_or(0), *synced);
}

TEST_F(EndToEndTest, UpdatedContactsReachTheStoreWhetherOrNotTheStoreKnewThem) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    const auto personal = serverContacts(server, "u1", false);
    const auto org = serverContacts(server, "u1", true);
    // The store loses two contacts; the server then changes them and one the store still has.
    forgetContact(harness->databasePath(), "u1", personal[7].contactId);
    forgetContact(harness->databasePath(), "u1", org[70].contactId);
    ASSERT_FALSE(storeMatchesServer(*harness, server, "u1"));
    ASSERT_TRUE(server.updateContact("u1", false, edited(personal[7], "lost")));
    ASSERT_TRUE(server.updateContact("u1", false, edited(personal[8], "kept")));
    ASSERT_TRUE(server.updateContact("o1", true, edited(org[70], "lost")));

    harness->sync()->syncContacts("u1", "o1");
    ASSERT_TRUE(waitForFinish("u1", 2));
    ASSERT_EQ(count("u1", "downloadComplete sync"), 1u);

    EXPECT_TRUE(storeMatchesServer(*harness, server, "u1"));
    const auto lines = harness->observer().log.texts("u1");
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        "contactsUpdated personal " + personal[7].contactId + " " + personal[8].contactId),
              lines.end());
    EXPECT_NE(std::find(lines.begin(), lines.end(), "contactsUpdated org " + org[70].contactId), lines.end());
}

}  // namespace
}  // namespace ycontacts::endtoend

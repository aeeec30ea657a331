#pragma once
// ServerExpectations: what the store and the observers should show after syncing the sample server's data.

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "EndToEnd/EndToEndHarness.h"
#include "sample_server/SampleContactsServer.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"

namespace ycontacts::endtoend {

// The record a client should hold for a server contact, worked out from the wire format's rules: type words
// mapped, empty address parts and empty sections absent. The display name is not kept by the store, so it
// is expected absent.
YContact expectedContact(const sample_server::SampleContactsServer& server,
                         const sample_server::SampleContact& contact, bool isOrg);

// The server's contacts of the user's population: personal ones, or those of the user's organisation
// (none for a user without one).
std::vector<sample_server::SampleContact> serverContacts(const sample_server::SampleContactsServer& server,
                                                         const std::string& yuid, bool isOrg);
std::vector<std::string> idsOf(const std::vector<sample_server::SampleContact>& contacts);

// Succeeds when the stored contacts of the population are exactly `expected`: the same ids, each once,
// and every field of every contact equal, child lists included.
::testing::AssertionResult storeHolds(SyncHarness& harness, const sample_server::SampleContactsServer& server,
                                      const std::string& yuid, bool isOrg,
                                      const std::vector<sample_server::SampleContact>& expected);
// storeHolds for both populations with everything the server has for the user.
::testing::AssertionResult storeMatchesServer(SyncHarness& harness,
                                              const sample_server::SampleContactsServer& server,
                                              const std::string& yuid);

// The ids of each page the page loop asks for, in order: full pages, then the short last page, then one
// empty page when the short page fell short of the limit by fewer than 50 contacts.
std::vector<std::vector<std::string>> expectedPages(const std::vector<std::string>& ids, int limit);

// The observer lines of a complete initial download: personal pages (each followed by the counts), the
// counts when the personal part completes, then the same for the organisation when `orgIds` is given
// (without it the organisation part completes at once), and the completion.
std::vector<std::string> expectedInitialDownloadLines(const std::vector<std::string>& personalIds,
                                                      const std::optional<std::vector<std::string>>& orgIds,
                                                      int limit);

// Rows with the user's yuid in the six contact tables, read with sqlite3 directly.
long long rowsOfUser(const std::filesystem::path& database, const std::string& yuid);
// Deletes the contact's rows of the user in the six contact tables, as if the store had never held it.
void forgetContact(const std::filesystem::path& database, const std::string& yuid, const std::string& contactId);
// The answer of PRAGMA integrity_check ("ok" for an intact database), or the error text.
std::string integrityCheck(const std::filesystem::path& database);

}  // namespace ycontacts::endtoend

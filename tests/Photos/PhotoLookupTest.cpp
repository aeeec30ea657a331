// Which photo a request by contact id or address asks the server for, once the contacts are in the store.

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>

#include "EndToEnd/EndToEndFixture.h"
#include "Support/Waiting.h"

namespace ycontacts::endtoend {
namespace {

using sample_server::SampleContact;

// A stored user with an account of its own is asked for by its user id; a group, or a contact without an
// account, by contact id within its population; an id the store does not know still by that id.
TEST_F(EndToEndTest, APhotoAskedByIdOrAddressUsesTheStoredContactsOwnUserIdWhenItHasOne) {
    ASSERT_TRUE(startAndWait("u1", "o1"));
    const auto find = [&](bool isOrg, const std::function<bool(const SampleContact&)>& wanted) {
        for (const auto& contact : serverContacts(server, "u1", isOrg))
            if (wanted(contact) && !contact.emails.empty()) return contact;
        ADD_FAILURE() << "no such contact";
        return SampleContact{};
    };
    const auto member = find(true, [](const SampleContact& c) { return c.yuid && c.contactType == "user"; });
    const auto group = find(false, [](const SampleContact& c) { return c.contactType == "group"; });

    struct Row {
        const char* name;
        std::optional<std::string> contactId, emailId;
        std::string path, idParam, idValue, isOrg;
    };
    const Row rows[] = {
        {"member by id", member.contactId, std::nullopt, "/file/download", "ID", *member.yuid, ""},
        {"member by address", std::nullopt, member.emails[0].address, "/file/download", "ID", *member.yuid, ""},
        {"group by id", group.contactId, std::nullopt, "/syncapi/contact/photo", "contactId", group.contactId, "false"},
        {"unknown id", "no-such-contact", std::nullopt, "/syncapi/contact/photo", "contactId", "no-such-contact",
         "false"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto before = server.requestLog().size();
        testsupport::Received<std::optional<std::string>> answered;
        harness->service().getContactImage("u1", row.emailId, row.contactId, std::nullopt, true, std::nullopt,
                                           RequestType::server,
                                           [&](auto, std::optional<std::string> path) { answered.add(path); });
        ASSERT_TRUE(answered.waitFor(1));
        const auto log = server.requestLog();
        ASSERT_EQ(log.size(), before + 1);
        EXPECT_EQ(log.back().path, row.path);
        EXPECT_EQ(log.back().param(row.idParam), row.idValue);
        EXPECT_EQ(log.back().param("isOrg"), row.isOrg);
    }

    const auto before = server.requestLog().size();
    testsupport::Received<bool> answered;
    harness->service().getContactImage("u1", "nobody@nowhere.example", std::nullopt, std::nullopt, true, std::nullopt,
                                       RequestType::server, [&](auto data, auto) { answered.add(data.has_value()); });
    ASSERT_TRUE(answered.waitFor(1));
    EXPECT_FALSE(answered.values().front()) << "an unknown address has no photo to ask for";
    EXPECT_EQ(server.requestLog().size(), before);
}

}  // namespace
}  // namespace ycontacts::endtoend

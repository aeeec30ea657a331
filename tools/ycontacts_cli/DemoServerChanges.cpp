#include "ycontacts_cli/DemoServerChanges.h"

namespace ycontacts_cli {

namespace {

void change(DemoServerChanges& changes, sample_server::SampleContactsServer& server, const std::string& owner,
            bool isOrg, int adds, int updates, int deletes) {
    for (int i = 1; i <= adds; ++i) {
        sample_server::SampleContact contact;
        contact.firstName = "Demo";
        contact.lastName = std::string(isOrg ? "Colleague" : "Friend") + std::to_string(i);
        contact.emails.push_back(
            {"demo." + std::string(isOrg ? "colleague" : "friend") + std::to_string(i) + "@example.com", true});
        contact.isEditable = !isOrg;
        if (auto id = server.addContact(owner, isOrg, contact)) {
            changes.addedIds.push_back(*id);
            changes.added.add(isOrg, 1);
        }
    }
    auto existing = server.contacts(owner, isOrg);
    // Skip the first few: an organisation lists its own users first.
    for (int i = 0; i < updates && static_cast<std::size_t>(10 + i) < existing.size(); ++i) {
        auto contact = existing[static_cast<std::size_t>(10 + i)];
        contact.nickName = "Renamed" + std::to_string(i + 1);
        contact.notes = "Changed on another device during the demo.";
        if (server.updateContact(owner, isOrg, contact)) changes.updated.add(isOrg, 1);
    }
    for (int i = 0; i < deletes && static_cast<std::size_t>(20 + i) < existing.size(); ++i) {
        const auto& id = existing[static_cast<std::size_t>(20 + i)].contactId;
        if (server.deleteContact(owner, isOrg, id)) {
            changes.deletedIds.push_back(id);
            changes.deleted.add(isOrg, 1);
        }
    }
}

}  // namespace

DemoServerChanges DemoServerChanges::make(sample_server::SampleContactsServer& server, const std::string& yuid,
                                          const std::optional<std::string>& yoid) {
    DemoServerChanges changes;
    change(changes, server, yuid, false, 5, 3, 2);
    if (yoid) change(changes, server, *yoid, true, 2, 1, 1);
    return changes;
}

}  // namespace ycontacts_cli

#pragma once
// expectedContact: the record a client should hold for a sample server contact.

#include "sample_server/SampleContactsServer.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"

namespace ycontacts::endtoend {

// Worked out from the wire format's rules: type words mapped, empty address parts and empty sections
// absent. The display name is not kept by the store, so it is expected absent.
YContact expectedContact(const sample_server::SampleContactsServer& server,
                         const sample_server::SampleContact& contact, bool isOrg);

}  // namespace ycontacts::endtoend

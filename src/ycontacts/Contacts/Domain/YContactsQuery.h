#pragma once
// YContactsQuery: which contacts a list, search or suggestion query asks for, passed whole from the use case to the
// store.

#include <optional>
#include <string>

#include "ycontacts/Contacts/Domain/RequestType.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// One value with named fields instead of a row of positional optionals, so that no layer can swap two of
// them. Build it with designated initializers, leaving out what keeps its default:
// YContactsQuery{.yuid = "u1", .searchStr = "ann", .limit = 20}.
struct YCONTACTS_EXPORT YContactsQuery {
    // The signed-in user.
    std::string yuid{};
    // The user's organisation, which a server search of organisation contacts needs.
    std::optional<std::string> yoid{};
    // Absent for a plain listing.
    std::optional<std::string> searchStr{};
    // Rows of the local store skipped before the first one answered.
    std::optional<int> from{};
    // The most rows wanted; absent asks for all.
    std::optional<int> limit{};
    // Organisation contacts (true), personal ones (false), or both (absent).
    std::optional<bool> isOrg{};
    RequestType requestType = RequestType::preferLocal;
    // Organisation suggestions only: leave group entries out; look at nick names too.
    bool excludeGroups = true;
    bool shouldSearchNickname = false;

    bool operator==(const YContactsQuery& other) const = default;
};

}  // namespace ycontacts

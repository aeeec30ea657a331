#pragma once
// DemoServerChanges: the contacts another device of the user adds, updates and deletes on the server during the demo.

#include <optional>
#include <string>
#include <vector>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts_cli/SyncWatcher.h"

namespace ycontacts_cli {

struct DemoServerChanges {
    SyncTally added;
    SyncTally updated;
    SyncTally deleted;
    std::vector<std::string> addedIds;
    std::vector<std::string> deletedIds;

    // Five personal contacts added, three updated and two deleted; two, one and one of the organisation's.
    static DemoServerChanges make(sample_server::SampleContactsServer& server, const std::string& yuid,
                                  const std::optional<std::string>& yoid);
};

}  // namespace ycontacts_cli

#pragma once
// Session: sets up the process's YContactService for one run of the tool over one data directory.

#include <map>
#include <optional>
#include <string>

#include <ycontacts/YContacts.h>

#include "ycontacts_cli/DataDirectory.h"
#include "ycontacts_cli/ServerAddress.h"

namespace ycontacts_cli {

struct SessionSettings {
    DataDirectory data;
    // Absent when the run needs no server (local queries, status, remove).
    std::optional<ServerAddress> server;
    bool viaProxy = false;
    // Authorization values by user, sent verbatim.
    std::map<std::string, std::string> tokens;
    // Shows the library's own log lines on stderr.
    bool verbose = false;
};

// The library's facade is one instance per process and takes its configuration once, so a run opens one
// session before its first call.
class Session {
public:
    // Creates the tables that are missing, hands the facade its configuration and builds the sync handler
    // (which registers the database and keeps the sync progress in it). Gives the problem when the database
    // cannot be set up.
    static std::optional<std::string> open(const SessionSettings& settings);

    static ycontacts::YContactService& service() { return ycontacts::YContactService::sharedInstance(); }
    static ycontacts::YContactSyncHandlerContract& syncHandler();
};

// Quiets the library's log unless asked for; call before anything else of the library.
void configureLogging(bool verbose);

}  // namespace ycontacts_cli

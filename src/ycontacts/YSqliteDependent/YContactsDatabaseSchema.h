#pragma once
// YContactsDatabaseSchema: creates the store's tables and the indexes its reads use, for hosts and tests.

#include <string>

namespace ycontacts {

// The library never calls this; the host does, once the database is registered with YSqliteHelper.
struct YContactsDatabaseSchema {
    // Creates whatever of the tables and indexes is missing under `identifier` of the shared YSqliteHelper,
    // in one transaction; running it again changes nothing. False (and a log line) when a statement fails.
    static bool createTables(const std::string& identifier);

    // The statements createTables runs, built from the table descriptors' column lists. Tables that
    // already exist are kept as they are: a database made by an older build without the store's added
    // columns and search table is not upgraded and has to be created anew.
    static std::string createStatements();
};

}  // namespace ycontacts

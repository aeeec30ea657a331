#pragma once
// YContactsDatabaseSchema: creates the store's tables and the indexes its reads use, for hosts and tests.

#include <filesystem>
#include <string>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// The library never calls this; the host does, once, before the first call that needs the store.
struct YCONTACTS_EXPORT YContactsDatabaseSchema {
    // Creates whatever of the tables and indexes is missing in the database file (the one the host names as
    // the config's database location), in one transaction, on a connection of its own that it closes again;
    // running it again changes nothing. The file is created when missing, its folder is not. False (and a
    // log line) when the file cannot be opened or a statement fails.
    static bool createTablesInFile(const std::filesystem::path& databaseFile);

    // The same on the database registered under `identifier` with the shared YSqliteHelper.
    static bool createTables(const std::string& identifier);

    // The statements createTables runs, built from the table descriptors' column lists. Tables that
    // already exist are kept as they are: a database made by an older build without the store's added
    // columns and search table is not upgraded and has to be created anew.
    static std::string createStatements();
};

}  // namespace ycontacts

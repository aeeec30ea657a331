#pragma once
// YContactsDatabaseSchema: creates the store's seven tables and the indexes its reads use, for hosts and tests.

#include <string>

namespace ycontacts {

// The library never calls this; the host does, once the database is registered with YSqliteHelper.
struct YContactsDatabaseSchema {
    // Creates whatever of the tables and indexes is missing under `identifier` of the shared YSqliteHelper,
    // in one transaction; running it again changes nothing. False (and a log line) when a statement fails.
    static bool createTables(const std::string& identifier);

    // The statements createTables runs, built from the table descriptors' column lists.
    static std::string createStatements();

    // A contact's full name as the store sorts and searches it: the first name, then " " and the middle
    // name when present, then " " and the last name when present. Indexed, so queries must use this text.
    static const std::string fullNameExpression;
};

}  // namespace ycontacts

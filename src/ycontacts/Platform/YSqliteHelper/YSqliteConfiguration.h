#pragma once
// YSqliteConfiguration: how and where YSqliteHelper opens the database registered under one identifier.

#include <string>
#include <utility>

namespace ycontacts {

// readWrite comes first: it is the mode a configuration gets when nothing else is asked for.
enum class YSqliteConnectionMode { readWrite, readOnly };

struct YSqliteConfiguration {
    YSqliteConfiguration(YSqliteConnectionMode connectionMode, std::string dbPath)
        : connectionMode(connectionMode), dbPath(std::move(dbPath)) {}

    YSqliteConnectionMode connectionMode;
    // The database file itself; readWrite creates it when missing, readOnly requires it to exist.
    std::string dbPath;
};

}  // namespace ycontacts

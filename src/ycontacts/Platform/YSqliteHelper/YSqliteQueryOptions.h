#pragma once
// YSqliteConflictResolution and YSqliteSortDescriptor: the optional clauses of YSqliteHelper's update and select.

#include <string>

namespace ycontacts {

// SQLite's ON CONFLICT algorithms, written into "UPDATE OR <algorithm>".
enum class YSqliteConflictResolution { rollback, abort, fail, ignore, replace };

struct YSqliteSortDescriptor {
    std::string column;
    bool ascending;
};

}  // namespace ycontacts

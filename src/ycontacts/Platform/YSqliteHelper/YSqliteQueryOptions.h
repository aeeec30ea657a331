#pragma once
// YSqliteConflictResolution: the optional conflict clause of YSqliteHelper's update.

namespace ycontacts {

// SQLite's ON CONFLICT algorithms, written into "UPDATE OR <algorithm>".
enum class YSqliteConflictResolution { rollback, abort, fail, ignore, replace };

}  // namespace ycontacts

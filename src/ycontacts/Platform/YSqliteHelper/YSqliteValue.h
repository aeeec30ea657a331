#pragma once
// YSqliteValue and YSqliteRow: one column value, and one row as a map from column name to value.

#include <cstdint>
#include <string>
#include <unordered_map>
#include <variant>

namespace ycontacts {

// Text, 64-bit integer, boolean (stored as 0 or 1, read back as an integer) or real. A BLOB reads back as
// a string holding its bytes.
using YSqliteValue = std::variant<std::string, std::int64_t, bool, double>;

// A column that is NULL is absent from the map; a column absent from a saved row is stored as NULL.
using YSqliteRow = std::unordered_map<std::string, YSqliteValue>;

}  // namespace ycontacts

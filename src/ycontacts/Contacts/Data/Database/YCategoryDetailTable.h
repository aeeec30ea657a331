#pragma once
// YCategoryDetailTable: names, column lists and key of the table of the names of a user's categories.

#include <string>
#include <vector>

namespace ycontacts {

struct YCategoryDetailTable {
    inline static const std::string tableName = "YCategoryDetailTable";

    inline static const std::string yuid = "yuid";
    inline static const std::string categoryId = "categoryId";
    inline static const std::string categoryName = "categoryName";

    inline static const std::vector<std::string> textColumns{"yuid", "categoryId", "categoryName"};
    inline static const std::vector<std::string> integerColumns{};
    inline static const std::vector<std::string> boolColumns{};
    inline static const std::vector<std::string> primaryKeys{"yuid", "categoryId"};
};

}  // namespace ycontacts

#pragma once
// YContactCategoryTable: names, column lists and key of the table of which contact belongs to which category.

#include <string>
#include <vector>

namespace ycontacts {

struct YContactCategoryTable {
    inline static const std::string tableName = "YContactCategoryTable";

    inline static const std::string yuid = "yuid";
    inline static const std::string contactId = "contactId";
    inline static const std::string categoryId = "categoryId";

    inline static const std::vector<std::string> textColumns{"yuid", "contactId", "categoryId"};
    inline static const std::vector<std::string> integerColumns{};
    inline static const std::vector<std::string> boolColumns{};
    inline static const std::vector<std::string> primaryKeys{"yuid", "contactId", "categoryId"};
};

}  // namespace ycontacts

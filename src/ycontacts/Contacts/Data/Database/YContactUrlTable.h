#pragma once
// YContactUrlTable: names, column lists and key of the table of a contact's web addresses.

#include <string>
#include <vector>

namespace ycontacts {

struct YContactUrlTable {
    inline static const std::string tableName = "YContactUrlTable";

    inline static const std::string yuid = "yuid";
    inline static const std::string contactId = "contactId";
    inline static const std::string urlAddress = "urlAddress";
    inline static const std::string urlType = "urlType";

    inline static const std::vector<std::string> textColumns{"yuid", "contactId", "urlAddress", "urlType"};
    inline static const std::vector<std::string> integerColumns{};
    inline static const std::vector<std::string> boolColumns{};
    inline static const std::vector<std::string> primaryKeys{"yuid", "contactId", "urlAddress"};
};

}  // namespace ycontacts

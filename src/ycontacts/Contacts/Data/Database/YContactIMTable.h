#pragma once
// YContactIMTable: names, column lists and key of the table of a contact's instant-messaging addresses.

#include <string>
#include <vector>

namespace ycontacts {

struct YContactIMTable {
    inline static const std::string tableName = "YContactIMTable";

    inline static const std::string yuid = "yuid";
    inline static const std::string contactId = "contactId";
    inline static const std::string imAddress = "imAddress";
    inline static const std::string imType = "imType";

    inline static const std::vector<std::string> textColumns{"yuid", "contactId", "imAddress", "imType"};
    inline static const std::vector<std::string> integerColumns{};
    inline static const std::vector<std::string> boolColumns{};
    inline static const std::vector<std::string> primaryKeys{"yuid", "contactId", "imAddress"};
};

}  // namespace ycontacts

#pragma once
// YContactPhoneTable: names, column lists and key of the table of a contact's phone numbers.

#include <string>
#include <vector>

namespace ycontacts {

struct YContactPhoneTable {
    inline static const std::string tableName = "YContactPhoneTable";

    inline static const std::string yuid = "yuid";
    inline static const std::string contactId = "contactId";
    inline static const std::string phoneNumber = "phoneNumber";
    inline static const std::string phoneType = "phoneType";

    inline static const std::vector<std::string> textColumns{"yuid", "contactId", "phoneNumber", "phoneType"};
    inline static const std::vector<std::string> integerColumns{};
    inline static const std::vector<std::string> boolColumns{};
    inline static const std::vector<std::string> primaryKeys{"yuid", "contactId", "phoneNumber"};
};

}  // namespace ycontacts

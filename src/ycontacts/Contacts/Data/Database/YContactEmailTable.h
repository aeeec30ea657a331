#pragma once
// YContactEmailTable: names, column lists and key of the e-mail table (it repeats isOrg to spare a join).

#include <string>
#include <vector>

namespace ycontacts {

struct YContactEmailTable {
    inline static const std::string tableName = "YContactEmailTable";

    inline static const std::string yuid = "yuid";
    inline static const std::string contactId = "contactId";
    inline static const std::string email = "email";
    inline static const std::string isPrimary = "isPrimary";
    inline static const std::string isOrg = "isOrg";

    inline static const std::vector<std::string> textColumns{"yuid", "email", "contactId"};
    inline static const std::vector<std::string> integerColumns{};
    inline static const std::vector<std::string> boolColumns{"isPrimary", "isOrg"};
    inline static const std::vector<std::string> primaryKeys{"yuid", "contactId", "email"};
};

}  // namespace ycontacts

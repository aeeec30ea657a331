#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

#include <vector>

#include "ycontacts/Contacts/Data/Database/YCategoryDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactCategoryTable.h"
#include "ycontacts/Contacts/Data/Database/YContactDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactEmailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactIMTable.h"
#include "ycontacts/Contacts/Data/Database/YContactPhoneTable.h"
#include "ycontacts/Contacts/Data/Database/YContactUrlTable.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

namespace ycontacts {

namespace {

std::string joined(const std::vector<std::string>& items) {
    std::string text;
    for (const auto& item : items) {
        if (!text.empty()) text += ", ";
        text += item;
    }
    return text;
}

template <class Table>
std::string createTable() {
    std::vector<std::string> columns;
    for (const auto& column : Table::textColumns) columns.push_back(column + " TEXT");
    for (const auto& column : Table::integerColumns) columns.push_back(column + " INTEGER");
    // Flags are INTEGER columns holding 0 or 1.
    for (const auto& column : Table::boolColumns) columns.push_back(column + " INTEGER");
    columns.push_back("PRIMARY KEY (" + joined(Table::primaryKeys) + ")");
    return "CREATE TABLE IF NOT EXISTS " + Table::tableName + " (" + joined(columns) + ");\n";
}

std::string createIndex(const std::string& name, const std::string& table, const std::string& columns) {
    return "CREATE INDEX IF NOT EXISTS " + name + " ON " + table + " (" + columns + ");\n";
}

}  // namespace

const std::string YContactsDatabaseSchema::fullNameExpression =
    "(firstName || IFNULL(' ' || middleName, '') || IFNULL(' ' || lastName, ''))";

std::string YContactsDatabaseSchema::createStatements() {
    const std::string& detail = YContactDetailTable::tableName;
    const std::string listOrder = "weightage DESC, " + fullNameExpression + " COLLATE NOCASE, contactId";
    std::string sql = "BEGIN;\n";
    sql += createTable<YContactDetailTable>();
    sql += createTable<YContactEmailTable>();
    sql += createTable<YContactPhoneTable>();
    sql += createTable<YContactIMTable>();
    sql += createTable<YContactUrlTable>();
    sql += createTable<YContactCategoryTable>();
    sql += createTable<YCategoryDetailTable>();
    // Listing pages walk these in order instead of sorting the user's contacts.
    sql += createIndex("YContactDetailListOrder", detail, "yuid, " + listOrder);
    sql += createIndex("YContactDetailKindListOrder", detail, "yuid, isOrg, " + listOrder);
    // Prefix searches are range scans on case-folded keys. The first name needs none of its own: the full
    // name begins with it.
    sql += createIndex("YContactDetailFullName", detail, "yuid, " + fullNameExpression + " COLLATE NOCASE");
    sql += createIndex("YContactDetailLastName", detail, "yuid, lastName COLLATE NOCASE");
    sql += createIndex("YContactDetailNickName", detail, "yuid, nickName COLLATE NOCASE");
    sql += createIndex("YContactDetailPrimaryEmail", detail, "yuid, primaryEmail COLLATE NOCASE");
    sql += createIndex("YContactDetailContactYuid", detail, "yuid, contactYuid");
    sql += createIndex("YContactEmailAddress", YContactEmailTable::tableName, "yuid, email COLLATE NOCASE");
    sql += createIndex("YContactCategoryMembers", YContactCategoryTable::tableName, "yuid, categoryId");
    sql += "COMMIT;\n";
    return sql;
}

bool YContactsDatabaseSchema::createTables(const std::string& identifier) {
    return YSqliteHelper::getShared().execute(createStatements(), true, identifier).ok();
}

}  // namespace ycontacts

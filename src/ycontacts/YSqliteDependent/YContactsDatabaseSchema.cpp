#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

#include <atomic>
#include <vector>

#include "ycontacts/Contacts/Data/Database/YCategoryDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactCategoryTable.h"
#include "ycontacts/Contacts/Data/Database/YContactDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactEmailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactIMTable.h"
#include "ycontacts/Contacts/Data/Database/YContactPhoneTable.h"
#include "ycontacts/Contacts/Data/Database/YContactSearchTable.h"
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
std::string createTable(const std::vector<std::string>& addedTextColumns = {}) {
    std::vector<std::string> columns;
    for (const auto& column : Table::textColumns) columns.push_back(column + " TEXT");
    for (const auto& column : addedTextColumns) columns.push_back(column + " TEXT");
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

std::string YContactsDatabaseSchema::createStatements() {
    const std::string& detail = YContactDetailTable::tableName;
    const std::string& search = YContactSearchTable::tableName;
    const std::string listOrder = "weightage DESC, sortName, contactId";
    std::string sql = "BEGIN;\n";
    sql += createTable<YContactDetailTable>(YContactDetailTable::addedTextColumns);
    sql += createTable<YContactEmailTable>();
    sql += createTable<YContactPhoneTable>();
    sql += createTable<YContactIMTable>();
    sql += createTable<YContactUrlTable>();
    sql += createTable<YContactCategoryTable>();
    sql += createTable<YCategoryDetailTable>();
    sql += createTable<YContactSearchTable>();
    // Listing pages walk these in order instead of sorting the user's contacts.
    sql += createIndex("YContactDetailListOrder", detail, "yuid, " + listOrder);
    sql += createIndex("YContactDetailKindListOrder", detail, "yuid, isOrg, " + listOrder);
    // Look-ups by address and by the contact's own user id.
    sql += createIndex("YContactDetailPrimaryEmail", detail, "yuid, primaryEmail COLLATE NOCASE");
    sql += createIndex("YContactDetailContactYuid", detail, "yuid, contactYuid");
    sql += createIndex("YContactEmailAddress", YContactEmailTable::tableName, "yuid, email COLLATE NOCASE");
    sql += createIndex("YContactCategoryMembers", YContactCategoryTable::tableName, "yuid, categoryId");
    // Typeahead: the terms that start with a text of one, two or three bytes come out of one of these in
    // list order, with the kind of each term, so that a search reads no table rows. A longer text is looked
    // for among the terms sharing its first three bytes, so only that index carries the term itself; the
    // others stay small, which keeps the pages a page save dirties few.
    for (std::size_t length = 1; length <= YContactSearchTable::prefixLengths; ++length) {
        const std::string number = std::to_string(length);
        std::string columns = "yuid, isOrg, prefix";
        columns += number + ", " + listOrder + ", kind";
        if (length == YContactSearchTable::prefixLengths) columns += ", term";
        sql += createIndex("YContactSearchPrefix" + number, search, columns);
    }
    sql += "COMMIT;\n";
    return sql;
}

bool YContactsDatabaseSchema::createTables(const std::string& identifier) {
    return YSqliteHelper::getShared().execute(createStatements(), true, identifier).ok();
}

bool YContactsDatabaseSchema::createTablesInFile(const std::filesystem::path& databaseFile) {
    // Registered under a name of its own, so that the store's connection, if there is one, is left alone.
    static std::atomic<unsigned> made{0};
    const std::string identifier = "YContactsDatabaseSchema-" + std::to_string(made++);
    auto& helper = YSqliteHelper::getShared();
    const YSqliteConfiguration configuration(YSqliteConnectionMode::readWrite, databaseFile.string());
    if (!helper.registerDB(identifier, configuration).ok()) return false;
    const bool created = createTables(identifier);
    helper.unregisterDB(identifier);
    return created;
}

}  // namespace ycontacts

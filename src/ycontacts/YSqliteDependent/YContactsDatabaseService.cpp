// Construction, registration and the writes of YContactsDatabaseService. The reads are in
// YContactsDatabaseServiceReads.cpp.
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

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

constexpr bool alert = true;

std::string doubled(const std::string& value, char quote) {
    std::string result;
    result.reserve(value.size());
    for (const char character : value) {
        if (character == quote) result += quote;
        result += character;
    }
    return result;
}

std::string lowercased(const std::string& value) {
    std::string result = value;
    std::transform(result.begin(), result.end(), result.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return result;
}

// A double-quoted word that names a column of the table (or the rowid) is read by SQLite as that column,
// not as text; "contactId" in such a list would match every row of the user.
bool namesColumn(const std::string& id) {
    static const auto names = [] {
        std::vector<std::string> all{"rowid", "oid", "_rowid_"};
        for (const auto* list : {&YContactDetailTable::textColumns, &YContactDetailTable::integerColumns,
                                 &YContactDetailTable::boolColumns, &YContactDetailTable::addedTextColumns,
                                 &YContactSearchTable::textColumns, &YContactSearchTable::integerColumns,
                                 &YContactSearchTable::boolColumns, &YContactEmailTable::textColumns,
                                 &YContactEmailTable::boolColumns, &YContactPhoneTable::textColumns,
                                 &YContactIMTable::textColumns, &YContactUrlTable::textColumns,
                                 &YContactCategoryTable::textColumns, &YCategoryDetailTable::textColumns}) {
            for (const auto& column : *list) all.push_back(lowercased(column));
        }
        return all;
    }();
    const std::string lowered = lowercased(id);
    return std::find(names.begin(), names.end(), lowered) != names.end();
}

// The typeahead rows go last: until the contact's own rows are gone, a search may still find it.
const std::array<std::string, 7>& contactTables() {
    static const std::array<std::string, 7> tables{
        YContactDetailTable::tableName, YContactPhoneTable::tableName, YContactEmailTable::tableName,
        YContactIMTable::tableName,     YContactUrlTable::tableName,   YContactCategoryTable::tableName,
        YContactSearchTable::tableName};
    return tables;
}

}  // namespace

YContactsDatabaseService::YContactsDatabaseService(std::string identifierValue,
                                                   std::filesystem::path databaseURLValue,
                                                   YContactsDataMaper databaseMapperValue)
    : databaseURL(std::move(databaseURLValue)),
      identifier(std::move(identifierValue)),
      databaseMapper(std::move(databaseMapperValue)) {
    // The helper logs a failed registration; later statements then fail and read as absent.
    YSqliteHelper::getShared().registerDB(identifier,
                                          YSqliteConfiguration(YSqliteConnectionMode::readWrite, databaseURL.string()));
}

std::shared_ptr<YContactsDatabaseService> YContactsDatabaseService::getSharedInstance(
    const std::string& identifier, const std::filesystem::path& databaseURL) {
    static const std::shared_ptr<YContactsDatabaseService> shared =
        std::make_shared<YContactsDatabaseService>(identifier, databaseURL);
    return shared;
}

std::string YContactsDatabaseService::userCondition(const std::string& yuid) {
    return "yuid = '" + doubled(yuid, '\'') + "'";
}

std::string YContactsDatabaseService::idList(const std::vector<std::string>& ids) {
    std::string list;
    for (const auto& id : ids) {
        if (!list.empty()) list += ", ";
        const char quote = namesColumn(id) ? '\'' : '"';
        list += quote;
        list += doubled(id, quote);
        list += quote;
    }
    return list;
}

std::string YContactsDatabaseService::fixPersonalContactsStatement(const std::string& yuid) {
    return "UPDATE YContactDetail SET type = IFNULL((SELECT type from YContactDetail as c1 WHERE c1.primaryEmail = "
           "YContactDetail.primaryEmail and c1.isOrg = 1), type) , contactYuid = IFNULL((SELECT contactYuid from "
           "YContactDetail as c1 WHERE c1.primaryEmail = YContactDetail.primaryEmail and c1.isOrg = 1), "
           "contactYuid) WHERE isOrg = 0 and yuid = '" +
           doubled(yuid, '\'') + "'";
}

void YContactsDatabaseService::save(const std::string& yuid, const std::vector<YContact>& contacts) {
    std::vector<std::string> contactIds;
    contactIds.reserve(contacts.size());
    for (const auto& contact : contacts) contactIds.push_back(contact.contactId);
    const std::pair<const std::string*, std::vector<YSqliteRow>> tableRows[] = {
        {&YContactDetailTable::tableName, databaseMapper.contactDetailRows(contacts, yuid)},
        {&YContactPhoneTable::tableName, databaseMapper.phoneRows(contacts, yuid)},
        {&YContactEmailTable::tableName, databaseMapper.emailRows(contacts, yuid)},
        {&YContactIMTable::tableName, databaseMapper.imRows(contacts, yuid)},
        {&YContactUrlTable::tableName, databaseMapper.urlRows(contacts, yuid)},
        {&YContactCategoryTable::tableName, databaseMapper.categoryRows(contacts, yuid)},
        {&YContactSearchTable::tableName, databaseMapper.searchRows(contacts, yuid)}};

    // One transaction for the whole list: the contacts are stored entirely or not at all, and a reader never
    // sees a contact without its child or typeahead rows.
    auto& helper = YSqliteHelper::getShared();
    helper.transaction(
        [&] {
            // Child rows the new data no longer has must go, so every row of these ids is dropped first.
            if (!deleteContactRows(yuid, contactIds)) return false;
            for (const auto& [table, rows] : tableRows) {
                if (!helper.save(*table, rows, true, alert, identifier).ok()) return false;
            }
            return true;
        },
        alert, identifier);
}

void YContactsDatabaseService::updateContacts(const std::string& yuid, const std::vector<YContact>& contacts) {
    save(yuid, contacts);
}

void YContactsDatabaseService::deleteContacts(const std::string& yuid, const std::vector<std::string>& contactIds) {
    YSqliteHelper::getShared().transaction([&] { return deleteContactRows(yuid, contactIds); }, alert, identifier);
}

bool YContactsDatabaseService::deleteContactRows(const std::string& yuid, const std::vector<std::string>& contactIds) {
    const std::string where = userCondition(yuid) + " and " + YContactDetailTable::contactId + " in (" +
                              idList(contactIds) + ")";
    auto& helper = YSqliteHelper::getShared();
    for (const auto& table : contactTables()) {
        if (!helper.deleteFrom(table, where, alert, identifier).ok()) return false;
    }
    return true;
}

void YContactsDatabaseService::deleteAllDetails(const std::string& yuid) {
    const std::string where = userCondition(yuid);
    auto& helper = YSqliteHelper::getShared();
    // Category names stay: they belong to the user, not to the contacts. As with deleteContacts, the tables
    // are emptied together or not at all, so no contact is left with only some of its rows.
    helper.transaction(
        [&] {
            for (const auto* table : {&YContactDetailTable::tableName, &YContactUrlTable::tableName,
                                      &YContactPhoneTable::tableName, &YContactIMTable::tableName,
                                      &YContactEmailTable::tableName, &YContactCategoryTable::tableName,
                                      &YContactSearchTable::tableName}) {
                if (!helper.deleteFrom(*table, where, alert, identifier).ok()) return false;
            }
            return true;
        },
        alert, identifier);
}

void YContactsDatabaseService::updateContactId(const std::string& yuid, const std::string& oldContactId,
                                               const std::string& newContactId) {
    auto contact = getContactByContactId(yuid, oldContactId);
    if (!contact) return;
    contact->contactId = newContactId;
    // Rows under the old id stay; callers that want them gone delete them.
    updateContacts(yuid, {*contact});
}

void YContactsDatabaseService::fixPersonalContacts(const std::string& yuid) {
    YSqliteHelper::getShared().execute(fixPersonalContactsStatement(yuid), alert, identifier);
}

void YContactsDatabaseService::updateUsageCount(const std::string& yuid, const std::string& contactId,
                                                const std::string& usageCount) {
    const std::string where = "contactId = '" + doubled(contactId, '\'') + "' AND " + YContactDetailTable::yuid +
                              " = '" + doubled(yuid, '\'') + "'";
    // Passed as text; the column's integer affinity stores a number. The typeahead rows carry the weight
    // as a list-order key and follow.
    auto& helper = YSqliteHelper::getShared();
    for (const auto* table : {&YContactDetailTable::tableName, &YContactSearchTable::tableName}) {
        helper.update(*table, where, YSqliteRow{{YContactDetailTable::weightage, usageCount}}, std::nullopt, alert,
                      identifier);
    }
}

void YContactsDatabaseService::updateContactsUsageCount(const std::string& yuid,
                                                        const std::map<std::string, std::string>& usageDetails) {
    for (const auto& [contactId, usageCount] : usageDetails) updateUsageCount(yuid, contactId, usageCount);
}

void YContactsDatabaseService::addCategories(const std::string& yuid,
                                             const std::vector<YContactCategory>& categories) {
    YSqliteHelper::getShared().save(YCategoryDetailTable::tableName, databaseMapper.categoryDetailRows(categories, yuid),
                                    true, alert, identifier);
}

void YContactsDatabaseService::deleteCategories(const std::string& yuid, const std::vector<std::string>& categoryIds) {
    const std::string where = userCondition(yuid) + " and " + YCategoryDetailTable::categoryId + " in (" +
                              idList(categoryIds) + ")";
    YSqliteHelper::getShared().deleteFrom(YCategoryDetailTable::tableName, where, alert, identifier);
}

}  // namespace ycontacts

// Construction, registration and the writes of YContactsDatabaseService. The reads are in
// YContactsDatabaseServiceReads.cpp.
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

#include <array>
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
#include "ycontacts/Platform/YSqliteHelper/YSqliteValueList.h"

namespace ycontacts {

namespace {

constexpr bool alert = true;

// Every personal row of the user whose primary address is an org row's takes that row's type and user id.
const std::string fixPersonalContactsStatement =
    "UPDATE YContactDetail SET type = IFNULL((SELECT type from YContactDetail as c1 WHERE c1.primaryEmail = "
    "YContactDetail.primaryEmail and c1.isOrg = 1), type) , contactYuid = IFNULL((SELECT contactYuid from "
    "YContactDetail as c1 WHERE c1.primaryEmail = YContactDetail.primaryEmail and c1.isOrg = 1), contactYuid) "
    "WHERE isOrg = 0 and yuid = ?";

// The typeahead rows go last: until the contact's own rows are gone, a search may still find it.
const std::array<std::string, 7>& contactTables() {
    static const std::array<std::string, 7> tables{
        YContactDetailTable::tableName, YContactPhoneTable::tableName, YContactEmailTable::tableName,
        YContactIMTable::tableName,     YContactUrlTable::tableName,   YContactCategoryTable::tableName,
        YContactSearchTable::tableName};
    return tables;
}

// "yuid = ? and <column> in (?, ...)": the user, then one chunk of a YSqliteValueList.
std::string userAndListCondition(const std::string& column) {
    return YContactDetailTable::yuid + " = ? and " + column + " in " + YSqliteValueList::placeholders();
}

std::vector<YSqliteValue> userAndList(const std::string& yuid, const std::vector<YSqliteValue>& chunk) {
    std::vector<YSqliteValue> bindings{yuid};
    bindings.insert(bindings.end(), chunk.begin(), chunk.end());
    return bindings;
}

}  // namespace

YContactsDatabaseService::YContactsDatabaseService(std::string identifierValue,
                                                   std::filesystem::path databaseURLValue,
                                                   YContactsDataMaper databaseMapperValue)
    : databaseURL(std::move(databaseURLValue)),
      identifier(std::move(identifierValue)),
      databaseMapper(std::move(databaseMapperValue)) {
    // The helper logs a failed registration; later statements then fail: reads answer absent, writes false.
    static_cast<void>(YSqliteHelper::getShared().registerDB(
        identifier, YSqliteConfiguration(YSqliteConnectionMode::readWrite, databaseURL.string())));
}

std::shared_ptr<YContactsDatabaseService> YContactsDatabaseService::getSharedInstance(
    const std::string& identifier, const std::filesystem::path& databaseURL) {
    static const std::shared_ptr<YContactsDatabaseService> shared =
        std::make_shared<YContactsDatabaseService>(identifier, databaseURL);
    return shared;
}

bool YContactsDatabaseService::save(const std::string& yuid, const std::vector<YContact>& contacts) {
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
    return inTransaction([&] {
        // Child rows the new data no longer has must go, so every row of these ids is dropped first.
        if (!deleteContactRows(yuid, contactIds)) return false;
        auto& helper = YSqliteHelper::getShared();
        for (const auto& [table, rows] : tableRows) {
            if (!helper.save(*table, rows, true, alert, identifier).ok()) return false;
        }
        return true;
    });
}

bool YContactsDatabaseService::updateContacts(const std::string& yuid, const std::vector<YContact>& contacts) {
    return save(yuid, contacts);
}

bool YContactsDatabaseService::deleteContacts(const std::string& yuid, const std::vector<std::string>& contactIds) {
    return inTransaction([&] { return deleteContactRows(yuid, contactIds); });
}

bool YContactsDatabaseService::inTransaction(const std::function<bool()>& write) {
    return YSqliteHelper::getShared().transaction(write, alert, identifier).ok();
}

bool YContactsDatabaseService::deleteContactRows(const std::string& yuid, const std::vector<std::string>& contactIds) {
    const std::string where = userAndListCondition(YContactDetailTable::contactId);
    auto& helper = YSqliteHelper::getShared();
    return YSqliteValueList::forEachChunk(contactIds, [&](const std::vector<YSqliteValue>& chunk) {
        const auto bindings = userAndList(yuid, chunk);
        for (const auto& table : contactTables()) {
            if (!helper.deleteFrom(table, where, bindings, alert, identifier).ok()) return false;
        }
        return true;
    });
}

bool YContactsDatabaseService::deleteAllDetails(const std::string& yuid) {
    const std::string where = YContactDetailTable::yuid + " = ?";
    const std::vector<YSqliteValue> bindings{yuid};
    auto& helper = YSqliteHelper::getShared();
    // Category names stay: they belong to the user, not to the contacts. As with deleteContacts, the tables
    // are emptied together or not at all, so no contact is left with only some of its rows.
    return inTransaction([&] {
        for (const auto* table : {&YContactDetailTable::tableName, &YContactUrlTable::tableName,
                                  &YContactPhoneTable::tableName, &YContactIMTable::tableName,
                                  &YContactEmailTable::tableName, &YContactCategoryTable::tableName,
                                  &YContactSearchTable::tableName}) {
            if (!helper.deleteFrom(*table, where, bindings, alert, identifier).ok()) return false;
        }
        return true;
    });
}

bool YContactsDatabaseService::updateContactId(const std::string& yuid, const std::string& oldContactId,
                                               const std::string& newContactId) {
    auto contact = getContactByContactId(yuid, oldContactId);
    if (!contact) return false;
    contact->contactId = newContactId;
    // Rows under the old id stay; callers that want them gone delete them.
    return updateContacts(yuid, {*contact});
}

bool YContactsDatabaseService::fixPersonalContacts(const std::string& yuid) {
    return YSqliteHelper::getShared().execute(fixPersonalContactsStatement, {yuid}, alert, identifier).ok();
}

bool YContactsDatabaseService::updateUsageCount(const std::string& yuid, const std::string& contactId,
                                                const std::string& usageCount) {
    const std::string where = YContactDetailTable::contactId + " = ? AND " + YContactDetailTable::yuid + " = ?";
    const std::vector<YSqliteValue> bindings{contactId, yuid};
    // Passed as text; the column's integer affinity stores a number. The typeahead rows carry the weight
    // as a list-order key and follow.
    auto& helper = YSqliteHelper::getShared();
    return inTransaction([&] {
        for (const auto* table : {&YContactDetailTable::tableName, &YContactSearchTable::tableName}) {
            if (!helper.update(*table, where, bindings, YSqliteRow{{YContactDetailTable::weightage, usageCount}},
                               std::nullopt, alert, identifier)
                     .ok()) {
                return false;
            }
        }
        return true;
    });
}

bool YContactsDatabaseService::updateContactsUsageCount(const std::string& yuid,
                                                        const std::map<std::string, std::string>& usageDetails) {
    return inTransaction([&] {
        for (const auto& [contactId, usageCount] : usageDetails) {
            if (!updateUsageCount(yuid, contactId, usageCount)) return false;
        }
        return true;
    });
}

bool YContactsDatabaseService::addCategories(const std::string& yuid,
                                             const std::vector<YContactCategory>& categories) {
    return YSqliteHelper::getShared()
        .save(YCategoryDetailTable::tableName, databaseMapper.categoryDetailRows(categories, yuid), true, alert,
              identifier)
        .ok();
}

bool YContactsDatabaseService::deleteCategories(const std::string& yuid,
                                                const std::vector<std::string>& categoryIds) {
    const std::string where = userAndListCondition(YCategoryDetailTable::categoryId);
    return inTransaction([&] {
        return YSqliteValueList::forEachChunk(categoryIds, [&](const std::vector<YSqliteValue>& chunk) {
            return YSqliteHelper::getShared()
                .deleteFrom(YCategoryDetailTable::tableName, where, userAndList(yuid, chunk), alert, identifier)
                .ok();
        });
    });
}

}  // namespace ycontacts

// The reads of YContactsDatabaseService. Values typed by a user or sent by the server are bound, never
// spliced into the text. Searches are prefix matches ignoring ASCII case, done as range scans on the NOCASE
// indexes YContactsDatabaseSchema creates.
#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "ycontacts/Contacts/Data/Database/YCategoryDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactCategoryTable.h"
#include "ycontacts/Contacts/Data/Database/YContactDetailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactEmailTable.h"
#include "ycontacts/Contacts/Data/Database/YContactIMTable.h"
#include "ycontacts/Contacts/Data/Database/YContactPhoneTable.h"
#include "ycontacts/Contacts/Data/Database/YContactUrlTable.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

namespace ycontacts {

namespace {

constexpr bool alert = true;
// Above this many contacts the children of the whole user are read at once instead of id by id.
constexpr std::size_t wholeUserChildThreshold = 2048;
// Id lists are padded to one of these lengths so that few statement texts exist and stay cached.
constexpr std::size_t idChunkSizes[] = {1, 16, 128};

const std::string& fullName() { return YContactsDatabaseSchema::fullNameExpression; }

std::string listOrder() { return " ORDER BY weightage DESC, " + fullName() + " COLLATE NOCASE, contactId"; }

// Strings starting with `prefix` ignoring ASCII case are those in [prefix, prefix + 0xFF) under NOCASE:
// no UTF-8 text holds the byte 0xFF, so every continuation sorts below the upper bound.
std::pair<YSqliteValue, YSqliteValue> prefixRange(const std::string& prefix) {
    return {YSqliteValue(prefix), YSqliteValue(prefix + '\xFF')};
}

std::string rangeOn(const std::string& column) {
    return column + " >= ? COLLATE NOCASE AND " + column + " < ? COLLATE NOCASE";
}

// A select of the ids of the user's contacts that match the search in any of the given name columns or in
// an e-mail address; appends its bindings.
std::string matchingIds(const std::string& yuid, const std::string& prefix, bool searchNickname,
                        std::vector<YSqliteValue>& bindings) {
    const auto [low, high] = prefixRange(prefix);
    std::vector<std::string> nameColumns{fullName(), YContactDetailTable::lastName};
    if (searchNickname) nameColumns.push_back(YContactDetailTable::nickName);
    std::string sql;
    for (const auto& column : nameColumns) {
        sql += "SELECT contactId FROM YContactDetail WHERE yuid = ? AND " + rangeOn(column) + " UNION ";
        bindings.insert(bindings.end(), {yuid, low, high});
    }
    sql += "SELECT contactId FROM YContactDetail WHERE yuid = ? AND " + rangeOn("primaryEmail") + " UNION ";
    sql += "SELECT contactId FROM YContactEmailTable WHERE yuid = ? AND " + rangeOn("email");
    bindings.insert(bindings.end(), {yuid, low, high, yuid, low, high});
    return sql;
}

std::string lowercasedAscii(std::string text) {
    for (auto& character : text) {
        if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
    }
    return text;
}

// The list order of the reads, for results gathered from several statements.
void sortInListOrder(std::vector<YContact>& contacts) {
    std::stable_sort(contacts.begin(), contacts.end(), [](const YContact& left, const YContact& right) {
        if (left.weightage != right.weightage) return left.weightage > right.weightage;
        const std::string leftName = lowercasedAscii(left.getDisplayName());
        const std::string rightName = lowercasedAscii(right.getDisplayName());
        if (leftName != rightName) return leftName < rightName;
        return left.contactId < right.contactId;
    });
}

struct ChildRows {
    std::vector<YSqliteRow> rows;
    std::unordered_map<std::string, std::vector<const YSqliteRow*>> byContact;

    void index() {
        for (const auto& row : rows) {
            if (auto id = YContactsDataMaper::text(row, "contactId")) byContact[*id].push_back(&row);
        }
    }
    const std::vector<const YSqliteRow*>& of(const std::string& contactId) const {
        static const std::vector<const YSqliteRow*> none;
        const auto found = byContact.find(contactId);
        return found == byContact.end() ? none : found->second;
    }
};

}  // namespace

std::optional<std::vector<YContact>> YContactsDatabaseService::contactsWithChildren(
    const std::vector<YSqliteRow>& detailRows) const {
    std::vector<YContact> contacts;
    contacts.reserve(detailRows.size());
    for (const auto& row : detailRows) contacts.push_back(databaseMapper.contact(row));
    if (contacts.empty()) return contacts;
    const std::string yuid = YContactsDataMaper::text(detailRows.front(), YContactDetailTable::yuid).value_or("");

    auto& helper = YSqliteHelper::getShared();
    const std::string* tables[] = {&YContactEmailTable::tableName, &YContactPhoneTable::tableName,
                                   &YContactIMTable::tableName, &YContactUrlTable::tableName,
                                   &YContactCategoryTable::tableName};
    ChildRows children[5];
    for (std::size_t table = 0; table < 5; ++table) {
        // rowid order is the order the rows were saved in, which is the order of the contact's lists.
        if (contacts.size() > wholeUserChildThreshold) {
            auto rows = helper.select("SELECT * FROM " + *tables[table] + " WHERE yuid = ? ORDER BY rowid",
                                      std::vector<YSqliteValue>{yuid}, alert, identifier);
            if (!rows.ok()) return std::nullopt;
            children[table].rows = rows.value();
        } else {
            for (std::size_t start = 0; start < contacts.size();) {
                const std::size_t remaining = contacts.size() - start;
                std::size_t chunk = idChunkSizes[2];
                for (const std::size_t size : idChunkSizes) {
                    if (size >= remaining) {
                        chunk = size;
                        break;
                    }
                }
                std::vector<YSqliteValue> bindings{yuid};
                std::string placeholders;
                for (std::size_t index = 0; index < chunk; ++index) {
                    // Padding repeats the last id; a repeated IN item matches nothing new.
                    const auto& contact = contacts[start + std::min(index, remaining - 1)];
                    bindings.emplace_back(contact.contactId);
                    placeholders += index == 0 ? "?" : ", ?";
                }
                auto rows = helper.select("SELECT * FROM " + *tables[table] + " WHERE yuid = ? AND contactId IN (" +
                                              placeholders + ") ORDER BY rowid",
                                          bindings, alert, identifier);
                if (!rows.ok()) return std::nullopt;
                auto& target = children[table].rows;
                target.insert(target.end(), rows.value().begin(), rows.value().end());
                start += std::min(chunk, remaining);
            }
        }
        children[table].index();
    }
    for (auto& contact : contacts) {
        const auto& id = contact.contactId;
        databaseMapper.attachChildRows(contact, children[0].of(id), children[1].of(id), children[2].of(id),
                                       children[3].of(id), children[4].of(id));
    }
    return contacts;
}

std::optional<std::vector<YContact>> YContactsDatabaseService::selectContacts(
    const std::string& sql, const std::vector<YSqliteValue>& bindings) const {
    const auto rows = YSqliteHelper::getShared().select(sql, bindings, alert, identifier);
    if (!rows.ok()) return std::nullopt;
    return contactsWithChildren(rows.value());
}

std::optional<std::vector<YContact>> YContactsDatabaseService::listContacts(
    const std::string& yuid, std::optional<bool> isOrg, const std::optional<std::string>& searchStr,
    std::optional<int> from, std::optional<int> limit) const {
    std::vector<YSqliteValue> bindings{yuid};
    std::string sql = "SELECT * FROM YContactDetail WHERE yuid = ?";
    if (isOrg) {
        sql += " AND isOrg = ?";
        bindings.emplace_back(*isOrg);
    }
    if (searchStr && !searchStr->empty()) {
        sql += " AND contactId IN (" + matchingIds(yuid, *searchStr, true, bindings) + ")";
    }
    sql += listOrder() + " LIMIT ? OFFSET ?";
    bindings.emplace_back(static_cast<std::int64_t>(limit.value_or(-1)));
    bindings.emplace_back(static_cast<std::int64_t>(std::max(0, from.value_or(0))));
    return selectContacts(sql, bindings);
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getContacts(const std::string& yuid,
                                                                          std::optional<bool> isOrg,
                                                                          const std::optional<std::string>& searchStr,
                                                                          std::optional<int> from,
                                                                          std::optional<int> limit) {
    return listContacts(yuid, isOrg, searchStr, from, limit);
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getContactsList(
    const std::string& yuid, std::optional<bool> isOrg, const std::optional<std::string>& searchStr,
    std::optional<int> from, std::optional<int> limit) {
    return listContacts(yuid, isOrg, searchStr, from, limit);
}

std::optional<YContactsDatabaseContract::ContactCount> YContactsDatabaseService::getContactCount(
    const std::string& yuids) {
    const auto rows = YSqliteHelper::getShared().select(
        "SELECT isOrg, COUNT(*) AS total FROM YContactDetail WHERE yuid = ? GROUP BY isOrg",
        std::vector<YSqliteValue>{yuids}, alert, identifier);
    if (!rows.ok()) return std::nullopt;
    ContactCount count{0, 0};
    for (const auto& row : rows.value()) {
        const auto total = YContactsDataMaper::integer(row, "total").value_or(0);
        if (YContactsDataMaper::flag(row, "isOrg", false)) {
            count.first += total;
        } else {
            count.second += total;
        }
    }
    return count;
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getContactsFromEmailIds(
    const std::string& yuid, const std::vector<std::string>& emailIds, std::optional<bool> isOrg) {
    std::vector<YContact> found;
    std::unordered_set<std::string> seen;
    constexpr std::size_t chunk = 64;
    for (std::size_t start = 0; start < emailIds.size(); start += chunk) {
        std::vector<YSqliteValue> bindings{yuid};
        std::string sql = "SELECT * FROM YContactDetail WHERE yuid = ?";
        if (isOrg) {
            sql += " AND isOrg = ?";
            bindings.emplace_back(*isOrg);
        }
        std::string placeholders;
        std::vector<YSqliteValue> addresses;
        for (std::size_t index = 0; index < chunk; ++index) {
            addresses.emplace_back(emailIds[std::min(start + index, emailIds.size() - 1)]);
            placeholders += index == 0 ? "?" : ", ?";
        }
        sql += " AND contactId IN (SELECT contactId FROM YContactEmailTable WHERE yuid = ? AND email COLLATE NOCASE IN (" +
               placeholders + ") UNION SELECT contactId FROM YContactDetail WHERE yuid = ? AND primaryEmail COLLATE "
               "NOCASE IN (" + placeholders + "))";
        bindings.emplace_back(yuid);
        bindings.insert(bindings.end(), addresses.begin(), addresses.end());
        bindings.emplace_back(yuid);
        bindings.insert(bindings.end(), addresses.begin(), addresses.end());
        auto contacts = selectContacts(sql, bindings);
        if (!contacts) return std::nullopt;
        for (auto& contact : *contacts) {
            if (seen.insert(contact.contactId).second) found.push_back(std::move(contact));
        }
    }
    sortInListOrder(found);
    return found;
}

std::optional<YContact> YContactsDatabaseService::getContactByEmailId(const std::string& yuid,
                                                                      const std::string& emailId,
                                                                      bool preferPersonalInfo) {
    const std::string sql =
        "SELECT * FROM YContactDetail WHERE yuid = ? AND contactId IN (SELECT contactId FROM YContactEmailTable "
        "WHERE yuid = ? AND email = ? COLLATE NOCASE UNION SELECT contactId FROM YContactDetail WHERE yuid = ? AND "
        "primaryEmail = ? COLLATE NOCASE) ORDER BY isOrg = ? DESC, weightage DESC, contactId LIMIT 1";
    const auto contacts = selectContacts(
        sql, {yuid, yuid, emailId, yuid, emailId, static_cast<std::int64_t>(preferPersonalInfo ? 0 : 1)});
    if (!contacts || contacts->empty()) return std::nullopt;
    return contacts->front();
}

std::optional<YContact> YContactsDatabaseService::getContactByContactYuid(const std::string& yuid,
                                                                          const std::string& contactYuid) {
    const auto contacts = selectContacts(
        "SELECT * FROM YContactDetail WHERE yuid = ? AND contactYuid = ? ORDER BY isOrg DESC, weightage DESC, "
        "contactId LIMIT 1",
        {yuid, contactYuid});
    if (!contacts || contacts->empty()) return std::nullopt;
    return contacts->front();
}

std::optional<YContact> YContactsDatabaseService::getContactByContactId(const std::string& yuid,
                                                                        const std::string& contactId) {
    const auto contacts =
        selectContacts("SELECT * FROM YContactDetail WHERE yuid = ? AND contactId = ?", {yuid, contactId});
    if (!contacts || contacts->empty()) return std::nullopt;
    return contacts->front();
}

std::optional<std::vector<YSuggestionContact>> YContactsDatabaseService::getSuggestionContacts(
    const std::string& yuid, std::optional<bool> isOrg, const std::string& searchStr, int limit) {
    const auto [low, high] = prefixRange(searchStr);
    std::vector<YSqliteValue> bindings;
    std::string named;
    for (const auto& column : {fullName(), YContactDetailTable::lastName, YContactDetailTable::nickName}) {
        if (!named.empty()) named += " UNION ";
        named += "SELECT contactId FROM YContactDetail WHERE yuid = ? AND " + rangeOn(column);
        bindings.insert(bindings.end(), {yuid, low, high});
    }
    // Addresses that match themselves, and every address of a contact whose name matches.
    std::string sql = "WITH named(contactId) AS (" + named + "), addresses(contactId, address) AS (" +
                      "SELECT contactId, email FROM YContactEmailTable WHERE yuid = ? AND " + rangeOn("email") +
                      " UNION SELECT contactId, primaryEmail FROM YContactDetail WHERE yuid = ? AND " +
                      rangeOn("primaryEmail") +
                      " UNION SELECT contactId, email FROM YContactEmailTable WHERE yuid = ? AND contactId IN named"
                      " UNION SELECT contactId, primaryEmail FROM YContactDetail WHERE yuid = ? AND primaryEmail IS "
                      "NOT NULL AND contactId IN named)";
    bindings.insert(bindings.end(), {yuid, low, high, yuid, low, high, yuid, yuid});
    const std::string rankName = "(d.firstName || IFNULL(' ' || d.middleName, '') || IFNULL(' ' || d.lastName, ''))";
    sql += ", ranked AS (SELECT a.address AS suggestionEmail, " + rankName +
           " AS sortName, d.*, ROW_NUMBER() OVER (PARTITION BY a.address ORDER BY d.weightage DESC, d.isOrg ASC, " +
           rankName + " COLLATE NOCASE, d.contactId) AS addressRank FROM addresses a JOIN YContactDetail d ON "
           "d.yuid = ? AND d.contactId = a.contactId";
    bindings.emplace_back(yuid);
    if (isOrg) {
        sql += " WHERE d.isOrg = ?";
        bindings.emplace_back(*isOrg);
    }
    sql += ") SELECT * FROM ranked WHERE addressRank = 1 ORDER BY weightage DESC, isOrg ASC, sortName COLLATE "
           "NOCASE, contactId LIMIT ?";
    bindings.emplace_back(static_cast<std::int64_t>(limit));
    const auto rows = YSqliteHelper::getShared().select(sql, bindings, alert, identifier);
    if (!rows.ok()) return std::nullopt;
    std::vector<YSuggestionContact> suggestions;
    suggestions.reserve(rows.value().size());
    for (const auto& row : rows.value()) {
        suggestions.push_back(
            databaseMapper.suggestion(row, YContactsDataMaper::text(row, "suggestionEmail").value_or("")));
    }
    return suggestions;
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getOrgContactSuggestions(
    const std::string& yuid, const std::optional<std::string>& searchStr, std::optional<int> offset, int limit,
    bool excludeGroups, bool shouldSearchNickname) {
    std::vector<YSqliteValue> bindings{yuid};
    std::string sql = "SELECT * FROM YContactDetail WHERE yuid = ? AND isOrg = 1";
    if (excludeGroups) sql += " AND type IS NOT 'group'";
    if (searchStr && !searchStr->empty()) {
        sql += " AND contactId IN (" + matchingIds(yuid, *searchStr, shouldSearchNickname, bindings) + ")";
    }
    sql += listOrder() + " LIMIT ? OFFSET ?";
    bindings.emplace_back(static_cast<std::int64_t>(limit));
    bindings.emplace_back(static_cast<std::int64_t>(std::max(0, offset.value_or(0))));
    return selectContacts(sql, bindings);
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getContacts(const std::string& yuid,
                                                                          const std::string& categoryId) {
    return selectContacts("SELECT * FROM YContactDetail WHERE yuid = ? AND contactId IN (SELECT contactId FROM "
                          "YContactCategoryTable WHERE yuid = ? AND categoryId = ?)" +
                              listOrder(),
                          {yuid, yuid, categoryId});
}

std::optional<std::vector<YContactCategory>> YContactsDatabaseService::getCategories(const std::string& yuid) {
    const auto rows = YSqliteHelper::getShared().select(
        "SELECT * FROM YCategoryDetailTable WHERE yuid = ? ORDER BY categoryName COLLATE NOCASE, categoryId",
        std::vector<YSqliteValue>{yuid}, alert, identifier);
    if (!rows.ok()) return std::nullopt;
    std::vector<YContactCategory> categories;
    for (const auto& row : rows.value()) categories.push_back(databaseMapper.contactCategory(row));
    return categories;
}

}  // namespace ycontacts

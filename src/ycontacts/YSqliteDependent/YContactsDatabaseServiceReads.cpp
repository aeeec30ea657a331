// The reads of YContactsDatabaseService. Values typed by a user or sent by the server are bound, never
// spliced into the text. A search walks the typeahead table's prefix indexes in list order and stops once
// it has the page, so its cost follows the page size rather than the number of matches. Rows of a known
// set of contacts are read a chunk of bound ids at a time (YSqliteValueList).
#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <unordered_set>
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
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

namespace ycontacts {

namespace {

using Search = YContactSearchTable;

constexpr bool alert = true;
// Above this many contacts the children of the whole user are read at once instead of id by id.
constexpr std::size_t wholeUserChildThreshold = 2048;
// The first batch of contacts a suggestion read takes, when the caller asks for fewer addresses.
constexpr std::int64_t smallestSuggestionBatch = 16;

// The list order: weightage, highest first, then the folded display name, then the id.
const std::string listOrder = " ORDER BY weightage DESC, sortName, contactId";

// What the list form reads of a detail row: what a row of a contact list shows, and no addresses, birthday,
// notes or gender.
const std::string& listFormColumns() {
    static const std::string columns = [] {
        using Detail = YContactDetailTable;
        std::string text;
        for (const auto* column :
             {&Detail::yuid, &Detail::contactId, &Detail::firstName, &Detail::middleName, &Detail::lastName,
              &Detail::nickName, &Detail::displayName, &Detail::primaryEmail, &Detail::contactYuid, &Detail::type,
              &Detail::photoURL, &Detail::hasPhoto, &Detail::company, &Detail::jobTitle, &Detail::designation,
              &Detail::weightage, &Detail::createdTime, &Detail::isOrg, &Detail::isEditable}) {
            if (!text.empty()) text += ", ";
            text += "d." + *column + " AS " + *column;
        }
        return text;
    }();
    return columns;
}

// The list order of the reads, for results gathered from several statements.
void sortInListOrder(std::vector<YContact>& contacts) {
    std::stable_sort(contacts.begin(), contacts.end(), [](const YContact& left, const YContact& right) {
        if (left.weightage != right.weightage) return left.weightage > right.weightage;
        const std::string leftName = YContactsDataMaper::sortName(left);
        const std::string rightName = YContactsDataMaper::sortName(right);
        if (leftName != rightName) return leftName < rightName;
        return left.contactId < right.contactId;
    });
}

// Runs `sql` with the user's id, then `chunk`, bound, and appends its rows to `rows`; false when it fails.
bool appendRows(std::vector<YSqliteRow>& rows, const std::string& sql, const std::string& yuid,
                const std::vector<YSqliteValue>& chunk, const std::string& identifier) {
    std::vector<YSqliteValue> bindings{yuid};
    bindings.insert(bindings.end(), chunk.begin(), chunk.end());
    auto selected = YSqliteHelper::getShared().select(sql, bindings, alert, identifier);
    if (!selected.ok()) return false;
    auto taken = selected.takeValue();
    rows.insert(rows.end(), std::make_move_iterator(taken.begin()), std::make_move_iterator(taken.end()));
    return true;
}

std::int64_t pageEnd(std::int64_t from, std::optional<int> limit) {
    // SQLite reads a negative LIMIT as none.
    if (!limit || *limit < 0) return -1;
    return from + *limit;
}

}  // namespace

template <typename Result>
std::optional<Result> YContactsDatabaseService::onOneSnapshot(
    const std::function<std::optional<Result>()>& read) const {
    std::optional<Result> result;
    if (!YSqliteHelper::getShared().snapshot([&] { result = read(); }, alert, identifier).ok()) return std::nullopt;
    return result;
}

std::pair<std::string, std::vector<YSqliteValue>> YContactsDatabaseService::searchStatement(
    const std::string& yuid, const std::string& searchStr, bool isOrg, bool withNickNames, bool withoutGroups,
    std::int64_t count, std::int64_t skip) {
    const std::string folded = YContactsDataMaper::foldedCase(searchStr);
    std::vector<YSqliteValue> bindings;
    std::string sql;
    if (folded.empty()) {
        sql = "SELECT contactId, weightage, sortName, " + std::to_string(Search::nameKind) +
              " AS matchKind FROM YContactDetail WHERE yuid = ? AND isOrg = ?";
        if (withoutGroups) sql += " AND type IS NOT 'group'";
        sql += listOrder + " LIMIT ? OFFSET ?";
        bindings = {yuid, isOrg, count, skip};
        return {std::move(sql), std::move(bindings)};
    }
    // The longest prefix column the text fills; a longer text is then compared as a whole among the terms
    // that share those first bytes.
    const std::size_t length = std::min(folded.size(), Search::prefixLengths);
    sql = "SELECT contactId, weightage, sortName, MIN(kind) AS matchKind FROM YContactSearchTable s WHERE yuid = ? "
          "AND isOrg = ? AND prefix" +
          std::to_string(length) + " = ?";
    bindings = {yuid, isOrg, folded.substr(0, length)};
    if (folded.size() > length) {
        // No UTF-8 text holds the byte 0xFF, so every continuation of the text sorts below the bound.
        sql += " AND term >= ? AND term < ?";
        bindings.insert(bindings.end(), {folded, folded + '\xFF'});
    }
    if (!withNickNames) sql += " AND kind <> " + std::to_string(Search::nickNameKind);
    if (withoutGroups) {
        sql += " AND NOT EXISTS (SELECT 1 FROM YContactDetail g WHERE g.yuid = s.yuid AND g.contactId = "
               "s.contactId AND g.type = 'group')";
    }
    // Grouping on the index's own order keeps the walk streaming, so LIMIT ends it.
    sql += " GROUP BY weightage, sortName, contactId" + listOrder + " LIMIT ? OFFSET ?";
    bindings.insert(bindings.end(), {count, skip});
    return {std::move(sql), std::move(bindings)};
}

std::optional<std::vector<YContactsDatabaseService::Match>> YContactsDatabaseService::matches(
    const std::string& yuid, bool isOrg, const std::string& searchStr, bool withNickNames, bool withoutGroups,
    std::int64_t count, std::int64_t skip) const {
    const auto [sql, bindings] = searchStatement(yuid, searchStr, isOrg, withNickNames, withoutGroups, count, skip);
    const auto rows = YSqliteHelper::getShared().select(sql, bindings, alert, identifier);
    if (!rows.ok()) return std::nullopt;
    std::vector<Match> found;
    found.reserve(rows.value().size());
    for (const auto& row : rows.value()) {
        found.push_back({YContactsDataMaper::text(row, "contactId").value_or(""),
                         YContactsDataMaper::integer(row, "weightage").value_or(0),
                         YContactsDataMaper::text(row, "sortName").value_or(""),
                         YContactsDataMaper::integer(row, "matchKind").value_or(Search::addressKind)});
    }
    return found;
}

std::optional<std::vector<YContactsDatabaseService::Match>> YContactsDatabaseService::searchPage(
    const std::string& yuid, std::optional<bool> isOrg, const std::string& searchStr, bool withNickNames,
    bool withoutGroups, std::int64_t from, std::optional<int> limit) const {
    const std::int64_t count = limit && *limit >= 0 ? *limit : -1;
    if (isOrg) return matches(yuid, *isOrg, searchStr, withNickNames, withoutGroups, count, from);
    // Each population is read up to the page's end, in list order, and the two are merged.
    const std::int64_t end = pageEnd(from, limit);
    auto personal = matches(yuid, false, searchStr, withNickNames, withoutGroups, end, 0);
    auto org = matches(yuid, true, searchStr, withNickNames, withoutGroups, end, 0);
    if (!personal || !org) return std::nullopt;
    std::vector<Match> page;
    page.reserve(personal->size() + org->size());
    const auto inListOrder = [](const Match& left, const Match& right) {
        if (left.weightage != right.weightage) return left.weightage > right.weightage;
        if (left.sortName != right.sortName) return left.sortName < right.sortName;
        return left.contactId < right.contactId;
    };
    std::merge(std::make_move_iterator(personal->begin()), std::make_move_iterator(personal->end()),
               std::make_move_iterator(org->begin()), std::make_move_iterator(org->end()), std::back_inserter(page),
               inListOrder);
    page.erase(page.begin(), page.begin() + std::min<std::int64_t>(from, static_cast<std::int64_t>(page.size())));
    if (count >= 0 && static_cast<std::int64_t>(page.size()) > count) page.resize(static_cast<std::size_t>(count));
    return page;
}

std::optional<std::vector<YSqliteRow>> YContactsDatabaseService::detailRows(const std::string& yuid,
                                                                            const std::vector<Match>& found,
                                                                            const std::string& columns) const {
    std::vector<std::string> ids;
    ids.reserve(found.size());
    for (const auto& match : found) ids.push_back(match.contactId);
    std::vector<YSqliteRow> unordered;
    const bool read = YSqliteValueList::forEachChunk(ids, [&](const std::vector<YSqliteValue>& chunk) {
        return appendRows(unordered,
                          "SELECT " + columns + " FROM YContactDetail d WHERE d.yuid = ? AND d.contactId IN " +
                              YSqliteValueList::placeholders(),
                          yuid, chunk, identifier);
    });
    if (!read) return std::nullopt;
    // Back into the order of the matches; an id whose row has gone meanwhile is skipped.
    std::unordered_map<std::string, YSqliteRow*> byId;
    for (auto& row : unordered) {
        if (auto id = YContactsDataMaper::text(row, YContactDetailTable::contactId)) byId.emplace(*id, &row);
    }
    std::vector<YSqliteRow> ordered;
    ordered.reserve(found.size());
    for (const auto& id : ids) {
        if (const auto row = byId.find(id); row != byId.end()) ordered.push_back(std::move(*row->second));
    }
    return ordered;
}

std::optional<std::vector<YContact>> YContactsDatabaseService::contactsWithChildren(
    const std::vector<YSqliteRow>& detailRows, ChildTables wanted) const {
    std::vector<YContact> contacts;
    contacts.reserve(detailRows.size());
    for (const auto& row : detailRows) contacts.push_back(databaseMapper.contact(row));
    if (contacts.empty()) return contacts;
    const std::string yuid = YContactsDataMaper::text(detailRows.front(), YContactDetailTable::yuid).value_or("");
    std::vector<std::string> ids;
    ids.reserve(contacts.size());
    for (const auto& contact : contacts) ids.push_back(contact.contactId);

    const std::string* tables[] = {&YContactEmailTable::tableName, &YContactPhoneTable::tableName,
                                   &YContactIMTable::tableName, &YContactUrlTable::tableName,
                                   &YContactCategoryTable::tableName};
    // Only what the mapper reads: the owner and the values.
    static const std::string columns[] = {
        "c.contactId AS contactId, c.email AS email, c.isPrimary AS isPrimary",
        "c.contactId AS contactId, c.phoneNumber AS phoneNumber, c.phoneType AS phoneType",
        "c.contactId AS contactId, c.imAddress AS imAddress, c.imType AS imType",
        "c.contactId AS contactId, c.urlAddress AS urlAddress, c.urlType AS urlType",
        "c.contactId AS contactId, c.categoryId AS categoryId"};
    const bool read[] = {wanted.emails, wanted.phones, wanted.ims, wanted.urls, wanted.categories};
    std::vector<YSqliteRow> rows[5];
    std::unordered_map<std::string, std::vector<const YSqliteRow*>> byContact[5];
    for (std::size_t table = 0; table < 5; ++table) {
        if (!read[table]) continue;
        const std::string select = "SELECT c.rowid AS rowOrder, " + columns[table] + " FROM " + *tables[table] +
                                   " c WHERE c.yuid = ?";
        const bool read = contacts.size() > wholeUserChildThreshold
                              ? appendRows(rows[table], select, yuid, {}, identifier)
                              : YSqliteValueList::forEachChunk(ids, [&](const std::vector<YSqliteValue>& chunk) {
                                    return appendRows(rows[table],
                                                      select + " AND c.contactId IN " +
                                                          YSqliteValueList::placeholders(),
                                                      yuid, chunk, identifier);
                                });
        if (!read) return std::nullopt;
        // rowid order is the order the rows were saved in, which is the order of the contact's lists.
        std::vector<std::pair<std::int64_t, const YSqliteRow*>> inOrder;
        inOrder.reserve(rows[table].size());
        for (const auto& row : rows[table]) {
            inOrder.emplace_back(YContactsDataMaper::integer(row, "rowOrder").value_or(0), &row);
        }
        std::sort(inOrder.begin(), inOrder.end(),
                  [](const auto& left, const auto& right) { return left.first < right.first; });
        // An id listed twice would read its rows twice.
        inOrder.erase(std::unique(inOrder.begin(), inOrder.end(),
                                  [](const auto& left, const auto& right) { return left.first == right.first; }),
                      inOrder.end());
        for (const auto& [order, row] : inOrder) {
            if (auto id = YContactsDataMaper::text(*row, "contactId")) byContact[table][*id].push_back(row);
        }
    }
    static const std::vector<const YSqliteRow*> none;
    const auto of = [&](std::size_t table, const std::string& id) -> const std::vector<const YSqliteRow*>& {
        const auto found = byContact[table].find(id);
        return found == byContact[table].end() ? none : found->second;
    };
    for (auto& contact : contacts) {
        const auto& id = contact.contactId;
        databaseMapper.attachChildRows(contact, of(0, id), of(1, id), of(2, id), of(3, id), of(4, id));
    }
    return contacts;
}

std::optional<std::vector<YContact>> YContactsDatabaseService::selectContacts(
    const std::string& sql, const std::vector<YSqliteValue>& bindings, ChildTables wanted) const {
    const auto rows = YSqliteHelper::getShared().select(sql, bindings, alert, identifier);
    if (!rows.ok()) return std::nullopt;
    return contactsWithChildren(rows.value(), wanted);
}

std::optional<YContact> YContactsDatabaseService::selectFirstContact(const std::string& sql,
                                                                    const std::vector<YSqliteValue>& bindings) const {
    return onOneSnapshot<YContact>([&]() -> std::optional<YContact> {
        const auto contacts = selectContacts(sql, bindings);
        if (!contacts || contacts->empty()) return std::nullopt;
        return contacts->front();
    });
}

std::optional<std::vector<YContact>> YContactsDatabaseService::listContacts(const YContactsQuery& query,
                                                                            bool listForm) const {
    const std::string columns = listForm ? listFormColumns() : std::string("d.*");
    const ChildTables wanted = listForm ? listFormChildTables : allChildTables;
    const std::int64_t skip = std::max(0, query.from.value_or(0));
    return onOneSnapshot<std::vector<YContact>>([&]() -> std::optional<std::vector<YContact>> {
        if (query.searchStr && !query.searchStr->empty()) {
            const auto page = searchPage(query.yuid, query.isOrg, *query.searchStr, true, false, skip, query.limit);
            if (!page) return std::nullopt;
            const auto rows = detailRows(query.yuid, *page, columns);
            if (!rows) return std::nullopt;
            return contactsWithChildren(*rows, wanted);
        }
        std::vector<YSqliteValue> bindings{query.yuid};
        std::string sql = "SELECT " + columns + " FROM YContactDetail d WHERE d.yuid = ?";
        if (query.isOrg) {
            sql += " AND d.isOrg = ?";
            bindings.emplace_back(*query.isOrg);
        }
        sql += listOrder + " LIMIT ? OFFSET ?";
        bindings.insert(bindings.end(), {static_cast<std::int64_t>(query.limit.value_or(-1)), skip});
        return selectContacts(sql, bindings, wanted);
    });
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getContacts(const YContactsQuery& query) {
    return listContacts(query, false);
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getContactsList(const YContactsQuery& query) {
    return listContacts(query, true);
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
    return onOneSnapshot<std::vector<YContact>>([&]() -> std::optional<std::vector<YContact>> {
        std::vector<YContact> found;
        std::unordered_set<std::string> seen;
        std::string sql = "SELECT * FROM YContactDetail WHERE yuid = ?";
        if (isOrg) sql += " AND isOrg = ?";
        sql += " AND contactId IN (SELECT contactId FROM YContactEmailTable WHERE yuid = ? AND email COLLATE NOCASE IN " +
               YSqliteValueList::placeholders() +
               " UNION SELECT contactId FROM YContactDetail WHERE yuid = ? AND primaryEmail COLLATE NOCASE IN " +
               YSqliteValueList::placeholders() + ")";
        const bool read = YSqliteValueList::forEachChunk(emailIds, [&](const std::vector<YSqliteValue>& addresses) {
            std::vector<YSqliteValue> bindings{yuid};
            if (isOrg) bindings.emplace_back(*isOrg);
            bindings.emplace_back(yuid);
            bindings.insert(bindings.end(), addresses.begin(), addresses.end());
            bindings.emplace_back(yuid);
            bindings.insert(bindings.end(), addresses.begin(), addresses.end());
            auto contacts = selectContacts(sql, bindings);
            if (!contacts) return false;
            for (auto& contact : *contacts) {
                if (seen.insert(contact.contactId).second) found.push_back(std::move(contact));
            }
            return true;
        });
        if (!read) return std::nullopt;
        sortInListOrder(found);
        return found;
    });
}

std::optional<YContact> YContactsDatabaseService::getContactByEmailId(const std::string& yuid,
                                                                      const std::string& emailId,
                                                                      bool preferPersonalInfo) {
    const std::string sql =
        "SELECT * FROM YContactDetail WHERE yuid = ? AND contactId IN (SELECT contactId FROM YContactEmailTable "
        "WHERE yuid = ? AND email = ? COLLATE NOCASE UNION SELECT contactId FROM YContactDetail WHERE yuid = ? AND "
        "primaryEmail = ? COLLATE NOCASE) ORDER BY isOrg = ? DESC, weightage DESC, contactId LIMIT 1";
    return selectFirstContact(
        sql, {yuid, yuid, emailId, yuid, emailId, static_cast<std::int64_t>(preferPersonalInfo ? 0 : 1)});
}

std::optional<YContact> YContactsDatabaseService::getContactByContactYuid(const std::string& yuid,
                                                                          const std::string& contactYuid) {
    return selectFirstContact(
        "SELECT * FROM YContactDetail WHERE yuid = ? AND contactYuid = ? ORDER BY isOrg DESC, weightage DESC, "
        "contactId LIMIT 1",
        {yuid, contactYuid});
}

std::optional<YContact> YContactsDatabaseService::getContactByContactId(const std::string& yuid,
                                                                        const std::string& contactId) {
    return selectFirstContact("SELECT * FROM YContactDetail WHERE yuid = ? AND contactId = ?", {yuid, contactId});
}

std::optional<std::vector<YSuggestionContact>> YContactsDatabaseService::getSuggestionContacts(
    const YContactsQuery& query) {
    const std::string& yuid = query.yuid;
    const std::optional<bool> isOrg = query.isOrg;
    const std::string searchStr = query.searchStr.value_or("");
    const int limit = query.limit.value_or(-1);
    return onOneSnapshot<std::vector<YSuggestionContact>>([&]() -> std::optional<std::vector<YSuggestionContact>> {
        // One address's entry, with the keys that rank it: weightage, personal before org, name, id, and then
        // the order of the contact's addresses.
        struct Candidate {
            YSuggestionContact suggestion;
            std::int64_t weightage;
            std::string sortName;
        };
        const std::string folded = YContactsDataMaper::foldedCase(searchStr);
        const auto wantedMore = [&](std::size_t found) { return limit < 0 || found < static_cast<std::size_t>(limit); };
        std::vector<Candidate> candidates;
        for (const bool population : {false, true}) {
            if (isOrg && *isOrg != population) continue;
            // Contacts come in list order, so an address's first contact is its best one in this population.
            // Contacts are read in growing batches until enough distinct addresses are found.
            std::unordered_set<std::string> offered;
            std::int64_t skip = 0;
            std::int64_t batch = limit < 0 ? -1 : std::max<std::int64_t>(limit, smallestSuggestionBatch);
            for (;;) {
                const auto found = matches(yuid, population, searchStr, true, false, batch, skip);
                if (!found) return std::nullopt;
                const auto rows = detailRows(yuid, *found, "d.*");
                if (!rows) return std::nullopt;
                const auto contacts = contactsWithChildren(*rows, emailChildTables);
                if (!contacts) return std::nullopt;
                std::unordered_map<std::string, std::int64_t> matchKinds;
                for (const auto& match : *found) matchKinds.emplace(match.contactId, match.matchKind);
                for (std::size_t index = 0; index < contacts->size(); ++index) {
                    const YContact& contact = (*contacts)[index];
                    const bool byName = matchKinds[contact.contactId] < Search::addressKind;
                    std::vector<std::string> addresses;
                    if (contact.primaryEmail) addresses.push_back(contact.primaryEmail->emailId);
                    for (const auto& email : contact.emails) addresses.push_back(email.emailId);
                    for (const auto& address : addresses) {
                        // A contact found by name offers every address; one found by address only those that match.
                        if (!byName && YContactsDataMaper::foldedCase(address).compare(0, folded.size(), folded) != 0) {
                            continue;
                        }
                        if (!offered.insert(address).second) continue;
                        candidates.push_back({databaseMapper.suggestion((*rows)[index], address), contact.weightage,
                                              YContactsDataMaper::sortName(contact)});
                    }
                }
                if (!wantedMore(offered.size())) break;
                if (batch < 0 || static_cast<std::int64_t>(found->size()) < batch) break;
                skip += batch;
                batch *= 2;
            }
        }
        std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& left, const Candidate& right) {
            if (left.weightage != right.weightage) return left.weightage > right.weightage;
            if (left.suggestion.isOrg != right.suggestion.isOrg) return !left.suggestion.isOrg;
            if (left.sortName != right.sortName) return left.sortName < right.sortName;
            return left.suggestion.contactId < right.suggestion.contactId;
        });
        std::vector<YSuggestionContact> suggestions;
        std::unordered_set<std::string> offered;
        for (auto& candidate : candidates) {
            if (!wantedMore(suggestions.size())) break;
            if (offered.insert(candidate.suggestion.email).second) {
                suggestions.push_back(std::move(candidate.suggestion));
            }
        }
        return suggestions;
    });
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getOrgContactSuggestions(const YContactsQuery& query) {
    return onOneSnapshot<std::vector<YContact>>([&]() -> std::optional<std::vector<YContact>> {
        const std::int64_t skip = std::max(0, query.from.value_or(0));
        if (query.searchStr && !query.searchStr->empty()) {
            const auto page = searchPage(query.yuid, true, *query.searchStr, query.shouldSearchNickname,
                                         query.excludeGroups, skip, query.limit);
            if (!page) return std::nullopt;
            const auto rows = detailRows(query.yuid, *page, "d.*");
            if (!rows) return std::nullopt;
            return contactsWithChildren(*rows, allChildTables);
        }
        std::string sql = "SELECT * FROM YContactDetail WHERE yuid = ? AND isOrg = 1";
        if (query.excludeGroups) sql += " AND type IS NOT 'group'";
        sql += listOrder + " LIMIT ? OFFSET ?";
        return selectContacts(sql, {query.yuid, static_cast<std::int64_t>(query.limit.value_or(-1)), skip});
    });
}

std::optional<std::vector<YContact>> YContactsDatabaseService::getContacts(const std::string& yuid,
                                                                          const std::string& categoryId) {
    return onOneSnapshot<std::vector<YContact>>([&]() -> std::optional<std::vector<YContact>> {
        return selectContacts("SELECT * FROM YContactDetail WHERE yuid = ? AND contactId IN (SELECT contactId FROM "
                              "YContactCategoryTable WHERE yuid = ? AND categoryId = ?)" +
                                  listOrder,
                              {yuid, yuid, categoryId});
    });
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

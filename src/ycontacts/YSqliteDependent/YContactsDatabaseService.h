#pragma once
// YContactsDatabaseService: the local contact store over YSqliteHelper; every statement is limited to one user.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsDatabaseContract.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"
#include "ycontacts/YSqliteDependent/YContactsDataMaper.h"

namespace ycontacts {

// Each write runs in one transaction and answers true once it is stored; on failure it is rolled back
// whole, the helper logs SQLite's error, and the answer is false. Reads give an absent result when a
// statement fails. The tables must exist already (see YContactsDatabaseSchema). Every value is bound,
// never placed into SQL text: any id (quotes, NUL, a column's name, SQL) is stored, found and deleted
// exactly and reaches no other row.
class YContactsDatabaseService : public YContactsDatabaseContract {
public:
    // Keeps the three values, then registers `databaseURL` (the database file itself) under `identifier`
    // with the shared YSqliteHelper. A failed registration is logged by the helper and otherwise ignored.
    YContactsDatabaseService(std::string identifier, std::filesystem::path databaseURL,
                             YContactsDataMaper databaseMapper = YContactsDataMaper());

    // The process's one store: the first call builds it as the constructor does; every later call returns
    // it and ignores its arguments, also when they differ.
    static std::shared_ptr<YContactsDatabaseService> getSharedInstance(const std::string& identifier,
                                                                       const std::filesystem::path& databaseURL);

    const std::filesystem::path databaseURL;
    const std::string identifier;
    const YContactsDataMaper databaseMapper;

    [[nodiscard]] bool save(const std::string& yuid, const std::vector<YContact>& contacts) override;
    std::optional<ContactCount> getContactCount(const std::string& yuids) override;
    [[nodiscard]] bool updateContacts(const std::string& yuid, const std::vector<YContact>& contacts) override;
    [[nodiscard]] bool deleteContacts(const std::string& yuid, const std::vector<std::string>& contactIds) override;
    // False also when there is no contact under the old id.
    [[nodiscard]] bool updateContactId(const std::string& yuid, const std::string& oldContactId,
                                       const std::string& newContactId) override;
    // Without a search text: the user's contacts (only org or only personal ones when isOrg is given),
    // by weightage, highest first, then by display name ignoring ASCII case, then by id; `from` rows
    // skipped, at most `limit` returned. With a search text: the same, limited to contacts whose full,
    // display, last or nick name, primary e-mail or one of whose e-mail addresses begins with the text
    // ignoring ASCII case; each contact once.
    std::optional<std::vector<YContact>> getContacts(const YContactsQuery& query) override;
    // The same contacts in the same order as getContacts, in a lighter form for showing a list: names,
    // display name, e-mail addresses, phone numbers, photo, type, user id, weightage, company, job title and
    // designation. Home and work addresses, web and IM addresses, categories, birthday, notes and gender
    // are left absent (or empty).
    std::optional<std::vector<YContact>> getContactsList(const YContactsQuery& query) override;
    // Contacts holding any of the addresses (ignoring case), each once, in list order.
    std::optional<std::vector<YContact>> getContactsFromEmailIds(const std::string& yuid,
                                                                 const std::vector<std::string>& emailIds,
                                                                 std::optional<bool> isOrg) override;
    // When personal and org contacts share the address, preferPersonalInfo picks the personal one.
    std::optional<YContact> getContactByEmailId(const std::string& yuid, const std::string& emailId,
                                                bool preferPersonalInfo) override;
    std::optional<YContact> getContactByContactYuid(const std::string& yuid, const std::string& contactYuid) override;
    std::optional<YContact> getContactByContactId(const std::string& yuid, const std::string& contactId) override;
    [[nodiscard]] bool deleteAllDetails(const std::string& yuid) override;
    // One suggestion per e-mail address of the matching contacts: by weightage, personal before org,
    // then display name, then id; a contact's own addresses primary first, then in saved order. A contact
    // matching by name offers all its addresses, otherwise only the matching ones. An empty text matches
    // every contact by name. Without a limit every address is offered.
    std::optional<std::vector<YSuggestionContact>> getSuggestionContacts(const YContactsQuery& query) override;
    // Org contacts in list order, optionally matching a search text; nick names are searched only when
    // asked, and group entries are left out when excludeGroups is set.
    std::optional<std::vector<YContact>> getOrgContactSuggestions(const YContactsQuery& query) override;
    [[nodiscard]] bool fixPersonalContacts(const std::string& yuid) override;
    // All the counts in one transaction; a count for an id the user does not have changes nothing.
    [[nodiscard]] bool updateContactsUsageCount(const std::string& yuid,
                                                const std::map<std::string, std::string>& usageDetails) override;
    [[nodiscard]] bool updateUsageCount(const std::string& yuid, const std::string& contactId,
                                        const std::string& usageCount);
    // Members of the category, in list order.
    std::optional<std::vector<YContact>> getContacts(const std::string& yuid, const std::string& categoryId) override;
    [[nodiscard]] bool addCategories(const std::string& yuid,
                                     const std::vector<YContactCategory>& categories) override;
    // By name ignoring case, then id.
    std::optional<std::vector<YContactCategory>> getCategories(const std::string& yuid) override;
    [[nodiscard]] bool deleteCategories(const std::string& yuid,
                                        const std::vector<std::string>& categoryIds) override;

    // The statement and bindings that find, in list order, the contacts of one population whose terms begin
    // with the search text (every contact of it for an empty text); `count` and `skip` page them. Public so
    // that its query plan can be checked.
    static std::pair<std::string, std::vector<YSqliteValue>> searchStatement(const std::string& yuid,
                                                                              const std::string& searchStr,
                                                                              bool isOrg, bool withNickNames,
                                                                              bool withoutGroups, std::int64_t count,
                                                                              std::int64_t skip);

private:
    // Deletes every row of the ids from the contact tables; false once one delete fails.
    bool deleteContactRows(const std::string& yuid, const std::vector<std::string>& contactIds);
    // Runs `write` in one transaction; true once it is committed.
    bool inTransaction(const std::function<bool()>& write);

    // Which child tables a read attaches.
    struct ChildTables {
        bool emails;
        bool phones;
        bool ims;
        bool urls;
        bool categories;
    };
    static constexpr ChildTables allChildTables{true, true, true, true, true};
    static constexpr ChildTables listFormChildTables{true, true, false, false, false};
    static constexpr ChildTables emailChildTables{true, false, false, false, false};

    // One contact a search found, with its list-order keys and the best kind of term that matched.
    struct Match {
        std::string contactId;
        std::int64_t weightage;
        std::string sortName;
        std::int64_t matchKind;
    };

    // searchStatement's contacts; absent when the statement fails.
    std::optional<std::vector<Match>> matches(const std::string& yuid, bool isOrg, const std::string& searchStr,
                                              bool withNickNames, bool withoutGroups, std::int64_t count,
                                              std::int64_t skip) const;
    // The page [from, from + limit) of the contacts matching the search in list order, of one population or,
    // when isOrg is absent, of both merged.
    std::optional<std::vector<Match>> searchPage(const std::string& yuid, std::optional<bool> isOrg,
                                                 const std::string& searchStr, bool withNickNames,
                                                 bool withoutGroups, std::int64_t from,
                                                 std::optional<int> limit) const;
    // The detail rows (`columns`, selected from "d") of the found contacts, in their order.
    std::optional<std::vector<YSqliteRow>> detailRows(const std::string& yuid, const std::vector<Match>& found,
                                                      const std::string& columns) const;
    // Detail rows turned into contacts with the wanted child rows attached; absent when a statement fails.
    std::optional<std::vector<YContact>> contactsWithChildren(const std::vector<YSqliteRow>& detailRows,
                                                              ChildTables wanted) const;
    std::optional<std::vector<YContact>> selectContacts(const std::string& sql,
                                                        const std::vector<YSqliteValue>& bindings,
                                                        ChildTables wanted = allChildTables) const;
    // The first contact the statement finds, read on one snapshot.
    std::optional<YContact> selectFirstContact(const std::string& sql, const std::vector<YSqliteValue>& bindings) const;
    // Runs a read made of several statements on one snapshot of the file, so that a contact's detail and
    // child rows come from the same state of it and the read takes the read lock once.
    template <typename Result>
    std::optional<Result> onOneSnapshot(const std::function<std::optional<Result>()>& read) const;
    std::optional<std::vector<YContact>> listContacts(const YContactsQuery& query, bool listForm) const;
};

}  // namespace ycontacts

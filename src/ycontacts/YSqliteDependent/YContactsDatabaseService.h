#pragma once
// YContactsDatabaseService: the local contact store over YSqliteHelper; every statement is limited to one user.

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsDatabaseContract.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"
#include "ycontacts/YSqliteDependent/YContactsDataMaper.h"

namespace ycontacts {

// Writes never report: each YSqliteHelper result is dropped (the helper logs failures). Reads give an
// absent result when a statement fails. The tables must exist already (see YContactsDatabaseSchema).
// Values placed into SQL text are quoted by doubling the quote character that delimits them, so that an id
// carrying quotes cannot reach rows of other ids or other users.
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

    void save(const std::string& yuid, const std::vector<YContact>& contacts) override;
    std::optional<ContactCount> getContactCount(const std::string& yuids) override;
    void updateContacts(const std::string& yuid, const std::vector<YContact>& contacts) override;
    void deleteContacts(const std::string& yuid, const std::vector<std::string>& contactIds) override;
    void updateContactId(const std::string& yuid, const std::string& oldContactId,
                         const std::string& newContactId) override;
    // Without a search text: the user's contacts (only org or only personal ones when isOrg is given),
    // by weightage, highest first, then by name ignoring case, then by id; `from` rows skipped, at most
    // `limit` returned. With a search text: the same, limited to contacts whose first, last, nick or full
    // name, or one of whose e-mail addresses, begins with the text ignoring case; each contact once.
    std::optional<std::vector<YContact>> getContacts(const std::string& yuid, std::optional<bool> isOrg,
                                                     const std::optional<std::string>& searchStr,
                                                     std::optional<int> from, std::optional<int> limit) override;
    // The same answer as getContacts.
    std::optional<std::vector<YContact>> getContactsList(const std::string& yuid, std::optional<bool> isOrg,
                                                         const std::optional<std::string>& searchStr,
                                                         std::optional<int> from, std::optional<int> limit) override;
    // Contacts holding any of the addresses (ignoring case), each once, in list order.
    std::optional<std::vector<YContact>> getContactsFromEmailIds(const std::string& yuid,
                                                                 const std::vector<std::string>& emailIds,
                                                                 std::optional<bool> isOrg) override;
    // When personal and org contacts share the address, preferPersonalInfo picks the personal one.
    std::optional<YContact> getContactByEmailId(const std::string& yuid, const std::string& emailId,
                                                bool preferPersonalInfo) override;
    std::optional<YContact> getContactByContactYuid(const std::string& yuid, const std::string& contactYuid) override;
    std::optional<YContact> getContactByContactId(const std::string& yuid, const std::string& contactId) override;
    void deleteAllDetails(const std::string& yuid) override;
    // One suggestion per e-mail address of the matching contacts: by weightage, personal before org,
    // then name. A contact matching by name offers all its addresses, otherwise only the matching ones.
    std::optional<std::vector<YSuggestionContact>> getSuggestionContacts(const std::string& yuid,
                                                                         std::optional<bool> isOrg,
                                                                         const std::string& searchStr,
                                                                         int limit) override;
    // Org contacts in list order, optionally matching a search text; nick names are searched only when
    // asked, and group entries are left out when excludeGroups is set.
    std::optional<std::vector<YContact>> getOrgContactSuggestions(const std::string& yuid,
                                                                  const std::optional<std::string>& searchStr,
                                                                  std::optional<int> offset, int limit,
                                                                  bool excludeGroups,
                                                                  bool shouldSearchNickname) override;
    void fixPersonalContacts(const std::string& yuid) override;
    void updateContactsUsageCount(const std::string& yuid,
                                  const std::map<std::string, std::string>& usageDetails) override;
    void updateUsageCount(const std::string& yuid, const std::string& contactId, const std::string& usageCount);
    // Members of the category, in list order.
    std::optional<std::vector<YContact>> getContacts(const std::string& yuid, const std::string& categoryId) override;
    void addCategories(const std::string& yuid, const std::vector<YContactCategory>& categories) override;
    // By name ignoring case, then id.
    std::optional<std::vector<YContactCategory>> getCategories(const std::string& yuid) override;
    void deleteCategories(const std::string& yuid, const std::vector<std::string>& categoryIds) override;

    // The statement texts the writes build, public so that their exact form can be checked.
    // "yuid = '<yuid>'", apostrophes in the yuid doubled.
    static std::string userCondition(const std::string& yuid);
    // Each id in double quotes (inner double quotes doubled), joined by ", ". An id that names a column or
    // the rowid would be read as that column, so it alone is written between apostrophes instead.
    static std::string idList(const std::vector<std::string>& ids);
    static std::string fixPersonalContactsStatement(const std::string& yuid);

private:
    // Detail rows turned into contacts with their child rows attached; absent when a statement fails.
    std::optional<std::vector<YContact>> contactsWithChildren(const std::vector<YSqliteRow>& detailRows) const;
    std::optional<std::vector<YContact>> selectContacts(const std::string& sql,
                                                        const std::vector<YSqliteValue>& bindings) const;
    std::optional<std::vector<YContact>> listContacts(const std::string& yuid, std::optional<bool> isOrg,
                                                      const std::optional<std::string>& searchStr,
                                                      std::optional<int> from, std::optional<int> limit) const;
};

}  // namespace ycontacts

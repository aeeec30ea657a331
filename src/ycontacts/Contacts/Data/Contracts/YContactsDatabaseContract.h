#pragma once
// YContactsDatabaseContract: the local contact store as the data managers see it; every call is scoped to one user.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YContactCategory.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"
#include "ycontacts/Contacts/Domain/YContactsQuery.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Writes answer whether they were stored: true once every row is in the store, false when nothing of the
// call was kept (a store rolls a failed write back whole). Callers must look: a page whose write failed is
// not downloaded. Reads answer an absent result when the store cannot read.
class YCONTACTS_EXPORT YContactsDatabaseContract {
public:
    // (organisation count, personal count)
    using ContactCount = std::pair<std::int64_t, std::int64_t>;

    virtual ~YContactsDatabaseContract() = default;

    [[nodiscard]] virtual bool save(const std::string& yuid, const std::vector<YContact>& contacts) = 0;
    virtual std::optional<ContactCount> getContactCount(const std::string& yuids) = 0;
    [[nodiscard]] virtual bool updateContacts(const std::string& yuid, const std::vector<YContact>& contacts) = 0;
    [[nodiscard]] virtual bool deleteContacts(const std::string& yuid,
                                              const std::vector<std::string>& contactIds) = 0;
    [[nodiscard]] virtual bool updateContactId(const std::string& yuid, const std::string& oldContactId,
                                               const std::string& newContactId) = 0;
    // The query's user, population, search text, from and limit.
    virtual std::optional<std::vector<YContact>> getContacts(const YContactsQuery& query) = 0;
    virtual std::optional<std::vector<YContact>> getContactsList(const YContactsQuery& query) = 0;
    virtual std::optional<std::vector<YContact>> getContactsFromEmailIds(const std::string& yuid,
                                                                         const std::vector<std::string>& emailIds,
                                                                         std::optional<bool> isOrg) = 0;
    virtual std::optional<YContact> getContactByEmailId(const std::string& yuid, const std::string& emailId,
                                                        bool preferPersonalInfo) = 0;
    virtual std::optional<YContact> getContactByContactYuid(const std::string& yuid,
                                                            const std::string& contactYuid) = 0;
    virtual std::optional<YContact> getContactByContactId(const std::string& yuid, const std::string& contactId) = 0;
    [[nodiscard]] virtual bool deleteAllDetails(const std::string& yuid) = 0;
    // The query's user, population, search text and limit.
    virtual std::optional<std::vector<YSuggestionContact>> getSuggestionContacts(const YContactsQuery& query) = 0;
    // The query's user, search text, from, limit and the two flags; organisation contacts only.
    virtual std::optional<std::vector<YContact>> getOrgContactSuggestions(const YContactsQuery& query) = 0;
    [[nodiscard]] virtual bool fixPersonalContacts(const std::string& yuid) = 0;
    [[nodiscard]] virtual bool updateContactsUsageCount(const std::string& yuid,
                                                        const std::map<std::string, std::string>& usageDetails) = 0;
    virtual std::optional<std::vector<YContact>> getContacts(const std::string& yuid,
                                                             const std::string& categoryId) = 0;
    [[nodiscard]] virtual bool addCategories(const std::string& yuid,
                                             const std::vector<YContactCategory>& categories) = 0;
    virtual std::optional<std::vector<YContactCategory>> getCategories(const std::string& yuid) = 0;
    [[nodiscard]] virtual bool deleteCategories(const std::string& yuid,
                                                const std::vector<std::string>& categoryIds) = 0;
};

}  // namespace ycontacts

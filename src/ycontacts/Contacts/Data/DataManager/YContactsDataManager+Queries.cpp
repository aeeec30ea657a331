// The data manager's query operations: each is answered by the query component, which owns the search caches.

#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"

namespace ycontacts {

std::optional<YContactsDataManager::ContactCount> YContactsDataManager::getContactCount(const std::string& yuids) {
    return queries_->getContactCount(yuids);
}

void YContactsDataManager::getContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                       const std::optional<std::string>& searchStr, std::optional<int> from,
                                       std::optional<int> limit, std::optional<bool> isOrg, RequestType requestType,
                                       ContactsCallback callback) {
    queries_->getContacts(yuid, yoid, searchStr, from, limit, isOrg, requestType, std::move(callback));
}

void YContactsDataManager::getContactsList(const std::string& yuid, const std::optional<std::string>& yoid,
                                           const std::optional<std::string>& searchStr, std::optional<int> from,
                                           std::optional<int> limit, std::optional<bool> isOrg,
                                           RequestType requestType, ContactsCallback callback) {
    queries_->getContactsList(yuid, yoid, searchStr, from, limit, isOrg, requestType, std::move(callback));
}

void YContactsDataManager::getContactsFromIds(const std::string& yuid,
                                              const std::optional<std::vector<std::string>>& contactIds,
                                              const std::optional<std::vector<std::string>>& emailIds,
                                              const std::optional<std::vector<std::string>>& contactYuids,
                                              std::optional<bool> isOrg, RequestType requestType,
                                              ContactsCallback callback) {
    queries_->getContactsFromIds(yuid, contactIds, emailIds, contactYuids, isOrg, requestType, std::move(callback));
}

void YContactsDataManager::getContact(const std::string& yuid, const std::optional<std::string>& contactId,
                                      const std::optional<std::string>& contactYuid,
                                      const std::optional<std::string>& emailId, bool preferPersonalInfo,
                                      ContactCallback callback) {
    queries_->getContact(yuid, contactId, contactYuid, emailId, preferPersonalInfo, std::move(callback));
}

void YContactsDataManager::getSuggestionContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                                 const std::string& searchStr, int limit, std::optional<bool> isOrg,
                                                 RequestType requestType, SuggestionsCallback callback) {
    queries_->getSuggestionContacts(yuid, yoid, searchStr, limit, isOrg, requestType, std::move(callback));
}

void YContactsDataManager::getOrgContactSuggestions(const std::string& yuid,
                                                    const std::optional<std::string>& searchStr,
                                                    std::optional<int> from, int limit, bool excludeGroups,
                                                    bool shouldSearchNickname, OrgSuggestionsCallback callback) {
    queries_->getOrgContactSuggestions(yuid, searchStr, from, limit, excludeGroups, shouldSearchNickname,
                                       std::move(callback));
}

}  // namespace ycontacts

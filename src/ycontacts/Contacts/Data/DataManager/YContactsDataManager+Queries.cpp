// The data manager's query operations: each is answered by the query component, which owns the search caches.

#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"

namespace ycontacts {

std::optional<YContactsDataManager::ContactCount> YContactsDataManager::getContactCount(const std::string& yuids) {
    return queries_->getContactCount(yuids);
}

void YContactsDataManager::getContacts(const YContactsQuery& query, ContactsCallback callback) {
    queries_->getContacts(query, std::move(callback));
}

void YContactsDataManager::getContactsList(const YContactsQuery& query, ContactsCallback callback) {
    queries_->getContactsList(query, std::move(callback));
}

void YContactsDataManager::getContactsFromIds(const YGetContactsFromIdsRequest& request, ContactsCallback callback) {
    queries_->getContactsFromIds(request, std::move(callback));
}

void YContactsDataManager::getContact(const YGetContactRequest& request, ContactCallback callback) {
    queries_->getContact(request, std::move(callback));
}

void YContactsDataManager::getSuggestionContacts(const YContactsQuery& query, SuggestionsCallback callback) {
    queries_->getSuggestionContacts(query, std::move(callback));
}

void YContactsDataManager::getOrgContactSuggestions(const YContactsQuery& query, OrgSuggestionsCallback callback) {
    queries_->getOrgContactSuggestions(query, std::move(callback));
}

}  // namespace ycontacts

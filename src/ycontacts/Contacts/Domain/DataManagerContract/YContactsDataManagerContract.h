#pragma once
// YContactsDataManagerContract: what the use cases and the facade ask of the contacts data manager.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactImageRequest.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactRequest.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactsFromIdsRequest.h"
#include "ycontacts/Contacts/Domain/YContactsQuery.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Queries travel as one value: a YContactsQuery for lists, searches and suggestions, the request record for
// look-ups by id. No layer between the use case and the store spreads them into positional arguments.
class YCONTACTS_EXPORT YContactsDataManagerContract {
public:
    using ContactsCallback = std::function<void(std::optional<std::vector<YContact>> contacts)>;
    using ContactCallback = std::function<void(std::optional<YContact> contact)>;
    using SuggestionsCallback =
        std::function<void(std::string searchStr, std::optional<std::vector<YSuggestionContact>> contacts)>;
    using OrgSuggestionsCallback =
        std::function<void(std::optional<std::string> searchStr, std::optional<std::vector<YContact>> contacts)>;
    using ImageHandler = std::function<void(std::optional<std::vector<std::uint8_t>> data,
                                            std::optional<std::string> filePath,
                                            std::optional<std::string> contactId)>;
    using UsageCountCallback = std::function<void(std::optional<std::map<std::string, std::string>> usageCountMap)>;
    // (organisation count, personal count)
    using ContactCount = std::pair<std::int64_t, std::int64_t>;

    virtual ~YContactsDataManagerContract() = default;

    virtual void start(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual void runInitialFetch(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual void syncContacts(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual std::optional<ContactCount> getContactCount(const std::string& yuids) = 0;
    virtual void resetAndStart(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual std::optional<double> lastUpdatedTime(const std::string& yuid) = 0;
    virtual bool isSyncInProgress(const std::string& yuid) = 0;
    // List and search: `query.requestType` says whether the store, the server or both answer.
    virtual void getContacts(const YContactsQuery& query, ContactsCallback callback) = 0;
    // The same contacts in the store's lighter list form.
    virtual void getContactsList(const YContactsQuery& query, ContactsCallback callback) = 0;
    virtual void getContactsFromIds(const YGetContactsFromIdsRequest& request, ContactsCallback callback) = 0;
    virtual void getContact(const YGetContactRequest& request, ContactCallback callback) = 0;
    virtual void getContactImage(const YGetContactImageRequest& request, ImageHandler handler) = 0;
    // Suggestions for `query.searchStr`, at most `query.limit` of them.
    virtual void getSuggestionContacts(const YContactsQuery& query, SuggestionsCallback callback) = 0;
    // Organisation contacts from the store: search text, from, limit and the two flags of the query.
    virtual void getOrgContactSuggestions(const YContactsQuery& query, OrgSuggestionsCallback callback) = 0;
    virtual void getUsageCount(const std::string& yuid, UsageCountCallback callback) = 0;
    virtual void removeAllData(const std::string& yuid) = 0;
    virtual bool wasInitialDownloadCompleted(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
};

}  // namespace ycontacts

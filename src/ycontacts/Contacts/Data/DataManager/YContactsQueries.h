#pragma once
// YContactsQueries: the contacts data manager's list, look-up, count and suggestion queries and their in-memory search caches.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsDatabaseContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsNetworkContract.h"
#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Platform/MarloComponents/YMutex.h"

namespace ycontacts {

// Owned by YContactsDataManager, which forwards its query operations here. Lives in a shared_ptr: server
// replies hold it weakly, so a reply that arrives after the data manager is gone is dropped.
class YContactsQueries : public std::enable_shared_from_this<YContactsQueries> {
public:
    using ContactsCallback = YContactsDataManagerContract::ContactsCallback;
    using ContactCallback = YContactsDataManagerContract::ContactCallback;
    using SuggestionsCallback = YContactsDataManagerContract::SuggestionsCallback;
    using OrgSuggestionsCallback = YContactsDataManagerContract::OrgSuggestionsCallback;
    using ContactCount = YContactsDataManagerContract::ContactCount;

    // The in-memory search state. The maps are keyed by the signed-in user's yuid.
    struct InMemoryState {
        std::map<std::string, std::vector<YContact>> networkMostUsedContacts;
        std::map<std::string, std::vector<YContact>> currentNetworkCache;
        std::map<std::string, std::string> currentNetworkKeywordStart;
        std::map<std::string, std::string> currentNetworkKeyword;
        std::map<std::string, SuggestionsCallback> currentSuggestionsNetworkCallback;
        std::map<std::string, ContactsCallback> currentContactsNetworkCallback;
        std::optional<std::string> currentSearchKeyword;
        std::optional<std::string> currentSearchKeywordStart;
        std::optional<std::vector<YContact>> currentCache;
    };

    // `restartInMemoryTimer` is called each time a server step or a suggestion request touches the
    // in-memory state; `contactsBatchFetchLimit` is the row limit asked of the server for a keyword search.
    YContactsQueries(std::shared_ptr<YContactsDatabaseContract> database,
                     std::shared_ptr<YContactsNetworkContract> network, std::function<void()> restartInMemoryTimer,
                     int contactsBatchFetchLimit);

    void getContacts(const YContactsQuery& query, ContactsCallback callback);
    void getContactsList(const YContactsQuery& query, ContactsCallback callback);
    void getContactsFromIds(const YGetContactsFromIdsRequest& request, ContactsCallback callback);
    void getContact(const YGetContactRequest& request, ContactCallback callback);
    std::optional<ContactCount> getContactCount(const std::string& yuids);
    void getSuggestionContacts(const YContactsQuery& query, SuggestionsCallback callback);
    void getOrgContactSuggestions(const YContactsQuery& query, OrgSuggestionsCallback callback);

    // Empties the six per-user maps; keeps currentCache and its two keywords.
    void destroyInMemory();

    // A copy of the in-memory state, taken under its lock.
    InMemoryState inMemoryState() const;

    // Keeps the contacts whose first name, last name (or other name and address fields) begin with the
    // lower-cased search text, each once, ordered by weightage, personal before organisation, then name
    // descending; cut to `limit` when given.
    static std::vector<YContact> filterContacts(const std::vector<YContact>& contacts, const std::string& searchStr,
                                                std::optional<int> limit);

private:
    // Which population and user the suggestion cache (currentCache) was filled for, and whether the store
    // gave fewer rows than asked, so that the cache holds every match of its keyword.
    struct SuggestionCacheScope {
        std::string yuid;
        std::optional<bool> isOrg;
        bool complete = false;
    };

    // Calls `local` and `server` as `requestType` asks; `local` reports whether the store answered.
    static void route(RequestType requestType, const std::function<bool()>& local,
                      const std::function<void()>& server);
    bool localContactsStep(const std::function<std::optional<std::vector<YContact>>()>& read,
                           const ContactsCallback& callback) const;
    void serverContactsStep(const YContactsQuery& query, const ContactsCallback& callback);
    void takeContactsSearchReply(const std::string& yuid, const std::string& keyword, bool isOrg,
                                 std::uint64_t ticket, std::optional<int> limit,
                                 std::optional<std::vector<YContact>> contacts);

    bool localSuggestionsStep(const YContactsQuery& query, const SuggestionsCallback& callback);
    std::optional<std::vector<YSuggestionContact>> narrowSuggestionCache(const YContactsQuery& query);
    void serverSuggestionsStep(const YContactsQuery& query, const SuggestionsCallback& callback);
    void takeSuggestionsSearchReply(const std::string& yuid, const std::string& searchStr, std::uint64_t ticket,
                                    std::optional<int> limit, std::optional<std::vector<YContact>> contacts);

    void restartTimer() const;

    const std::shared_ptr<YContactsDatabaseContract> database_;
    const std::shared_ptr<YContactsNetworkContract> network_;
    const std::function<void()> restartInMemoryTimer_;
    const int contactsBatchFetchLimit_;

    // One lock for the whole in-memory state; never held while a callback or a collaborator runs.
    mutable YMutex mutex_;
    InMemoryState state_ Y_GUARDED_BY(mutex_);
    // Each server search gets the next ticket; a reply is delivered only while its ticket is the user's
    // newest of its kind, so two searches for the same keyword still answer once.
    std::uint64_t nextTicket_ Y_GUARDED_BY(mutex_) = 0;
    std::map<std::string, std::uint64_t> newestContactsSearch_ Y_GUARDED_BY(mutex_);
    std::map<std::string, std::uint64_t> newestSuggestionsSearch_ Y_GUARDED_BY(mutex_);
    // Per yuid, whether the first-letter search behind currentNetworkCache asked for organisation contacts.
    std::map<std::string, bool> currentNetworkCacheIsOrg_ Y_GUARDED_BY(mutex_);
    std::optional<SuggestionCacheScope> suggestionCacheScope_ Y_GUARDED_BY(mutex_);
};

}  // namespace ycontacts

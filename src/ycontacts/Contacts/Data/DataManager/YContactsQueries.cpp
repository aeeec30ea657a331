#include "ycontacts/Contacts/Data/DataManager/YContactsQueries.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "ycontacts/Contacts/Data/DataManager/YContactsQueryMatching.h"

namespace ycontacts {

namespace {

// A search over the contacts-list query without a limit still reads at most this many rows.
constexpr int listSearchRowLimit = 1000;

std::vector<YContact> cutTo(std::vector<YContact> contacts, std::optional<int> limit) {
    if (limit) contacts.resize(std::min(contacts.size(), static_cast<std::size_t>(std::max(*limit, 0))));
    return contacts;
}

}  // namespace

YContactsQueries::YContactsQueries(std::shared_ptr<YContactsDatabaseContract> database,
                                   std::shared_ptr<YContactsNetworkContract> network,
                                   std::function<void()> restartInMemoryTimer, int contactsBatchFetchLimit)
    : database_(std::move(database)),
      network_(std::move(network)),
      restartInMemoryTimer_(std::move(restartInMemoryTimer)),
      contactsBatchFetchLimit_(contactsBatchFetchLimit) {}

void YContactsQueries::route(RequestType requestType, const std::function<bool()>& local,
                             const std::function<void()>& server) {
    switch (requestType) {
        case RequestType::local:
            local();
            return;
        case RequestType::server:
            server();
            return;
        case RequestType::both:
            local();
            server();
            return;
        case RequestType::preferLocal:
            if (!local()) server();
            return;
    }
}

void YContactsQueries::restartTimer() const {
    if (restartInMemoryTimer_) restartInMemoryTimer_();
}

bool YContactsQueries::localContactsStep(const std::function<std::optional<std::vector<YContact>>()>& read,
                                         const ContactsCallback& callback) const {
    if (!database_) {
        if (callback) callback(std::nullopt);
        return false;
    }
    std::optional<std::vector<YContact>> contacts = read();
    const bool answered = contacts.has_value();
    if (callback) callback(std::move(contacts));
    return answered;
}

void YContactsQueries::getContacts(const YContactsQuery& query, ContactsCallback callback) {
    route(
        query.requestType, [&] { return localContactsStep([&] { return database_->getContacts(query); }, callback); },
        [&] { serverContactsStep(query, callback); });
}

void YContactsQueries::getContactsList(const YContactsQuery& query, ContactsCallback callback) {
    YContactsQuery storeQuery = query;
    if (query.searchStr && !query.limit) storeQuery.limit = listSearchRowLimit;
    route(
        query.requestType,
        [&] { return localContactsStep([&] { return database_->getContactsList(storeQuery); }, callback); },
        [&] { serverContactsStep(query, callback); });
}

void YContactsQueries::serverContactsStep(const YContactsQuery& query, const ContactsCallback& callback) {
    if (!network_) return;
    restartTimer();
    const std::string& yuid = query.yuid;
    const std::optional<int> limit = query.limit;
    // The server searches one population per call; no preference means the user's own contacts.
    const bool serverIsOrg = query.isOrg.value_or(false);
    std::weak_ptr<YContactsQueries> weakSelf = weak_from_this();

    if (!query.searchStr) {
        network_->searchContacts(yuid, query.yoid, serverIsOrg, limit, std::nullopt,
                                 [weakSelf, callback](std::optional<std::vector<YContact>> contacts) {
                                     if (!weakSelf.lock()) return;
                                     if (callback) callback(std::move(contacts));
                                 });
        return;
    }

    const std::string& keyword = *query.searchStr;
    std::optional<std::vector<YContact>> cached;
    std::uint64_t ticket = 0;
    {
        YMutexLock lock(mutex_);
        ticket = ++nextTicket_;
        newestContactsSearch_[yuid] = ticket;
        state_.currentNetworkKeyword[yuid] = keyword;
        state_.currentContactsNetworkCallback[yuid] = callback;

        const std::size_t length = querymatching::characterCount(keyword);
        const auto start = state_.currentNetworkKeywordStart.find(yuid);
        const auto cacheIsOrg = currentNetworkCacheIsOrg_.find(yuid);
        const bool sameStart = start != state_.currentNetworkKeywordStart.end() && start->second == keyword;
        const bool samePopulation = cacheIsOrg != currentNetworkCacheIsOrg_.end() && cacheIsOrg->second == serverIsOrg;
        if (length == 1 && !(sameStart && samePopulation)) {
            // A new first letter (or the same letter for the other population) starts a new cached search.
            state_.currentNetworkKeywordStart[yuid] = keyword;
            currentNetworkCacheIsOrg_[yuid] = serverIsOrg;
            state_.currentNetworkCache.erase(yuid);
        } else if (length > 1 && samePopulation && start != state_.currentNetworkKeywordStart.end() &&
                   keyword.starts_with(start->second)) {
            const auto cache = state_.currentNetworkCache.find(yuid);
            if (cache != state_.currentNetworkCache.end()) cached = cache->second;
        }
    }

    if (cached && callback) callback(filterContacts(*cached, keyword, limit));

    network_->searchContacts(
        yuid, query.yoid, serverIsOrg, contactsBatchFetchLimit_, keyword,
        [weakSelf, yuid, keyword, serverIsOrg, ticket, limit](std::optional<std::vector<YContact>> contacts) {
            if (auto self = weakSelf.lock()) {
                self->takeContactsSearchReply(yuid, keyword, serverIsOrg, ticket, limit, std::move(contacts));
            }
        });
}

void YContactsQueries::takeContactsSearchReply(const std::string& yuid, const std::string& keyword, bool isOrg,
                                               std::uint64_t ticket, std::optional<int> limit,
                                               std::optional<std::vector<YContact>> contacts) {
    ContactsCallback callback;
    {
        YMutexLock lock(mutex_);
        const auto start = state_.currentNetworkKeywordStart.find(yuid);
        const auto cacheIsOrg = currentNetworkCacheIsOrg_.find(yuid);
        if (contacts && start != state_.currentNetworkKeywordStart.end() && start->second == keyword &&
            cacheIsOrg != currentNetworkCacheIsOrg_.end() && cacheIsOrg->second == isOrg) {
            // Even a superseded reply for the first letter is worth keeping for the searches that extend it.
            state_.currentNetworkCache[yuid] = *contacts;
        }
        const auto newest = newestContactsSearch_.find(yuid);
        const auto current = state_.currentNetworkKeyword.find(yuid);
        const auto pending = state_.currentContactsNetworkCallback.find(yuid);
        if (newest == newestContactsSearch_.end() || newest->second != ticket ||
            current == state_.currentNetworkKeyword.end() || current->second != keyword ||
            pending == state_.currentContactsNetworkCallback.end()) {
            return;
        }
        callback = pending->second;
    }
    if (!callback) return;
    if (contacts) contacts = cutTo(std::move(*contacts), limit);
    callback(std::move(contacts));
}

void YContactsQueries::getContactsFromIds(const YGetContactsFromIdsRequest& request, ContactsCallback callback) {
    // Callers that pass no e-mail addresses get no answer at all; contact ids and yuids are not looked up.
    if (!request.emailIds || !callback) return;
    if (!database_) {
        callback(std::nullopt);
        return;
    }
    callback(database_->getContactsFromEmailIds(request.yuid, *request.emailIds, request.isOrg));
}

void YContactsQueries::getContact(const YGetContactRequest& request, ContactCallback callback) {
    std::optional<YContact> contact;
    if (database_) {
        if (request.contactId) {
            contact = database_->getContactByContactId(request.yuid, *request.contactId);
        } else if (request.contactYuid) {
            contact = database_->getContactByContactYuid(request.yuid, *request.contactYuid);
        } else if (request.emailId) {
            contact = database_->getContactByEmailId(request.yuid, *request.emailId, request.preferPersonalInfo);
        }
    }
    if (callback) callback(std::move(contact));
}

std::optional<YContactsQueries::ContactCount> YContactsQueries::getContactCount(const std::string& yuids) {
    if (!database_) return std::nullopt;
    return database_->getContactCount(yuids);
}

void YContactsQueries::destroyInMemory() {
    YMutexLock lock(mutex_);
    state_.networkMostUsedContacts.clear();
    state_.currentNetworkCache.clear();
    state_.currentNetworkKeywordStart.clear();
    state_.currentNetworkKeyword.clear();
    state_.currentSuggestionsNetworkCallback.clear();
    state_.currentContactsNetworkCallback.clear();
    newestContactsSearch_.clear();
    newestSuggestionsSearch_.clear();
    currentNetworkCacheIsOrg_.clear();
}

YContactsQueries::InMemoryState YContactsQueries::inMemoryState() const {
    YMutexLock lock(mutex_);
    return state_;
}

std::vector<YContact> YContactsQueries::filterContacts(const std::vector<YContact>& contacts,
                                                       const std::string& searchStr, std::optional<int> limit) {
    const std::string search = querymatching::lowercased(searchStr);
    std::unordered_set<std::string> seen;
    std::vector<YContact> kept;
    for (const YContact& contact : contacts) {
        if (!seen.insert(contact.contactId).second) continue;
        if (querymatching::matches(contact, search)) kept.push_back(contact);
    }

    // Sort keys are computed once per contact, not once per comparison.
    std::vector<std::pair<std::string, YContact>> keyed;
    keyed.reserve(kept.size());
    for (YContact& contact : kept) {
        std::string key = querymatching::lowercased(contact.firstName + contact.lastName.value_or(""));
        keyed.emplace_back(std::move(key), std::move(contact));
    }
    std::stable_sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) {
        if (a.second.weightage != b.second.weightage) return a.second.weightage > b.second.weightage;
        if (a.second.isOrg != b.second.isOrg) return !a.second.isOrg;
        // Names descending, Z before A: the order the contact lists have always shown.
        return b.first < a.first;
    });
    kept.clear();
    for (auto& entry : keyed) kept.push_back(std::move(entry.second));
    return cutTo(std::move(kept), limit);
}

}  // namespace ycontacts

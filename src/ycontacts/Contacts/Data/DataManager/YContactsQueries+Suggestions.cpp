#include <utility>

#include "ycontacts/Contacts/Data/DataManager/YContactsQueries.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsQueryMatching.h"

namespace ycontacts {

void YContactsQueries::getSuggestionContacts(const YContactsQuery& query, SuggestionsCallback callback) {
    route(
        query.requestType, [&] { return localSuggestionsStep(query, callback); },
        [&] { serverSuggestionsStep(query, callback); });
}

bool YContactsQueries::localSuggestionsStep(const YContactsQuery& query, const SuggestionsCallback& callback) {
    const std::string searchStr = query.searchStr.value_or("");
    if (!database_) {
        if (callback) callback(searchStr, std::nullopt);
        return false;
    }
    restartTimer();
    if (auto narrowed = narrowSuggestionCache(query)) {
        if (callback) callback(searchStr, std::move(narrowed));
        return true;
    }

    std::optional<std::vector<YSuggestionContact>> rows = database_->getSuggestionContacts(query);
    if (rows) {
        std::vector<YContact> cache;
        cache.reserve(rows->size());
        for (const YSuggestionContact& row : *rows) cache.push_back(querymatching::contactFrom(row));
        // Fewer rows than asked for means the store had no more matches: the cache then holds them all.
        const bool complete = !query.limit || static_cast<long long>(rows->size()) < *query.limit;
        YMutexLock lock(mutex_);
        state_.currentCache = std::move(cache);
        state_.currentSearchKeywordStart = searchStr;
        state_.currentSearchKeyword = searchStr;
        suggestionCacheScope_ = SuggestionCacheScope{query.yuid, query.isOrg, complete};
    }
    const bool answered = rows.has_value();
    if (callback) callback(searchStr, std::move(rows));
    return answered;
}

std::optional<std::vector<YSuggestionContact>> YContactsQueries::narrowSuggestionCache(const YContactsQuery& query) {
    const std::string searchStr = query.searchStr.value_or("");
    const std::string search = querymatching::lowercased(searchStr);
    std::vector<YContact> cache;
    {
        YMutexLock lock(mutex_);
        if (!suggestionCacheScope_ || !suggestionCacheScope_->complete || suggestionCacheScope_->yuid != query.yuid ||
            suggestionCacheScope_->isOrg != query.isOrg || !state_.currentCache || !state_.currentSearchKeywordStart ||
            !search.starts_with(querymatching::lowercased(*state_.currentSearchKeywordStart))) {
            return std::nullopt;
        }
        state_.currentSearchKeyword = searchStr;
        cache = *state_.currentCache;
    }
    std::vector<YContact> kept;
    for (YContact& entry : cache) {
        if (querymatching::matches(entry, search)) kept.push_back(std::move(entry));
    }
    return querymatching::suggestionsFrom(kept, query.limit);
}

void YContactsQueries::serverSuggestionsStep(const YContactsQuery& query, const SuggestionsCallback& callback) {
    if (!network_) return;
    restartTimer();
    const std::string& yuid = query.yuid;
    std::uint64_t ticket = 0;
    {
        YMutexLock lock(mutex_);
        ticket = ++nextTicket_;
        newestSuggestionsSearch_[yuid] = ticket;
        state_.currentSuggestionsNetworkCallback[yuid] = callback;
    }
    std::weak_ptr<YContactsQueries> weakSelf = weak_from_this();
    const std::string searchStr = query.searchStr.value_or("");
    network_->searchContacts(
        yuid, query.yoid, query.isOrg.value_or(false), query.limit, searchStr,
        [weakSelf, yuid, searchStr, ticket, limit = query.limit](std::optional<std::vector<YContact>> contacts) {
            if (auto self = weakSelf.lock()) {
                self->takeSuggestionsSearchReply(yuid, searchStr, ticket, limit, std::move(contacts));
            }
        });
}

void YContactsQueries::takeSuggestionsSearchReply(const std::string& yuid, const std::string& searchStr,
                                                  std::uint64_t ticket, std::optional<int> limit,
                                                  std::optional<std::vector<YContact>> contacts) {
    SuggestionsCallback callback;
    {
        YMutexLock lock(mutex_);
        const auto newest = newestSuggestionsSearch_.find(yuid);
        const auto pending = state_.currentSuggestionsNetworkCallback.find(yuid);
        if (newest == newestSuggestionsSearch_.end() || newest->second != ticket ||
            pending == state_.currentSuggestionsNetworkCallback.end()) {
            return;
        }
        callback = pending->second;
    }
    if (!callback) return;
    if (!contacts) {
        callback(searchStr, std::nullopt);
        return;
    }
    callback(searchStr, querymatching::suggestionsFrom(*contacts, limit));
}

void YContactsQueries::getOrgContactSuggestions(const YContactsQuery& query, OrgSuggestionsCallback callback) {
    if (!callback) return;
    if (!database_) {
        callback(query.searchStr, std::nullopt);
        return;
    }
    callback(query.searchStr, database_->getOrgContactSuggestions(query));
}

}  // namespace ycontacts

#include <utility>

#include "ycontacts/Contacts/Data/DataManager/YContactsQueries.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsQueryMatching.h"

namespace ycontacts {

void YContactsQueries::getSuggestionContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                             const std::string& searchStr, int limit, std::optional<bool> isOrg,
                                             RequestType requestType, SuggestionsCallback callback) {
    route(
        requestType, [&] { return localSuggestionsStep(yuid, searchStr, limit, isOrg, callback); },
        [&] { serverSuggestionsStep(yuid, yoid, searchStr, limit, isOrg, callback); });
}

bool YContactsQueries::localSuggestionsStep(const std::string& yuid, const std::string& searchStr, int limit,
                                            std::optional<bool> isOrg, const SuggestionsCallback& callback) {
    if (!database_) {
        if (callback) callback(searchStr, std::nullopt);
        return false;
    }
    restartTimer();
    if (auto narrowed = narrowSuggestionCache(yuid, searchStr, limit, isOrg)) {
        if (callback) callback(searchStr, std::move(narrowed));
        return true;
    }

    std::optional<std::vector<YSuggestionContact>> rows = database_->getSuggestionContacts(yuid, isOrg, searchStr, limit);
    if (rows) {
        std::vector<YContact> cache;
        cache.reserve(rows->size());
        for (const YSuggestionContact& row : *rows) cache.push_back(querymatching::contactFrom(row));
        // Fewer rows than asked for means the store had no more matches: the cache then holds them all.
        const bool complete = static_cast<long long>(rows->size()) < static_cast<long long>(limit);
        std::lock_guard lock(mutex_);
        state_.currentCache = std::move(cache);
        state_.currentSearchKeywordStart = searchStr;
        state_.currentSearchKeyword = searchStr;
        suggestionCacheScope_ = SuggestionCacheScope{yuid, isOrg, complete};
    }
    const bool answered = rows.has_value();
    if (callback) callback(searchStr, std::move(rows));
    return answered;
}

std::optional<std::vector<YSuggestionContact>> YContactsQueries::narrowSuggestionCache(const std::string& yuid,
                                                                                       const std::string& searchStr,
                                                                                       int limit,
                                                                                       std::optional<bool> isOrg) {
    const std::string search = querymatching::lowercased(searchStr);
    std::vector<YContact> cache;
    {
        std::lock_guard lock(mutex_);
        if (!suggestionCacheScope_ || !suggestionCacheScope_->complete || suggestionCacheScope_->yuid != yuid ||
            suggestionCacheScope_->isOrg != isOrg || !state_.currentCache || !state_.currentSearchKeywordStart ||
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
    return querymatching::suggestionsFrom(kept, limit);
}

void YContactsQueries::serverSuggestionsStep(const std::string& yuid, const std::optional<std::string>& yoid,
                                             const std::string& searchStr, int limit, std::optional<bool> isOrg,
                                             const SuggestionsCallback& callback) {
    if (!network_) return;
    restartTimer();
    std::uint64_t ticket = 0;
    {
        std::lock_guard lock(mutex_);
        ticket = ++nextTicket_;
        newestSuggestionsSearch_[yuid] = ticket;
        state_.currentSuggestionsNetworkCallback[yuid] = callback;
    }
    std::weak_ptr<YContactsQueries> weakSelf = weak_from_this();
    network_->searchContacts(yuid, yoid, isOrg.value_or(false), limit, searchStr,
                             [weakSelf, yuid, searchStr, ticket, limit](std::optional<std::vector<YContact>> contacts) {
                                 if (auto self = weakSelf.lock()) {
                                     self->takeSuggestionsSearchReply(yuid, searchStr, ticket, limit,
                                                                      std::move(contacts));
                                 }
                             });
}

void YContactsQueries::takeSuggestionsSearchReply(const std::string& yuid, const std::string& searchStr,
                                                  std::uint64_t ticket, int limit,
                                                  std::optional<std::vector<YContact>> contacts) {
    SuggestionsCallback callback;
    {
        std::lock_guard lock(mutex_);
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

void YContactsQueries::getOrgContactSuggestions(const std::string& yuid, const std::optional<std::string>& searchStr,
                                                std::optional<int> from, int limit, bool excludeGroups,
                                                bool shouldSearchNickname, OrgSuggestionsCallback callback) {
    if (!callback) return;
    if (!database_) {
        callback(searchStr, std::nullopt);
        return;
    }
    callback(searchStr,
             database_->getOrgContactSuggestions(yuid, searchStr, from, limit, excludeGroups, shouldSearchNickname));
}

}  // namespace ycontacts

#pragma once
// FakeContactsNetworkService: a gmock contacts server that holds page and search requests until a test answers.

#include <gmock/gmock.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Support/Waiting.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsNetworkContract.h"

namespace ycontacts::testsupport {

// By default every getContacts call is queued (see nextPage) and every searchContacts call is held (see
// searches and answerSearch); usage counts and cancellations do nothing.
class FakeContactsNetworkService : public YContactsNetworkContract {
public:
    struct PageRequest {
        std::string yuid;
        std::optional<std::string> yoid;
        bool isOrg = false;
        int startIndex = 0;
        int limit = 0;
        std::optional<double> updatedTime;
        ContactsPageCallback callback;

        void reply(std::optional<YContactNetworkResponse> response) const { callback(std::move(response)); }
    };

    // Kept after it is answered, so that a test can look at what was asked.
    struct SearchRequest {
        std::string yuid;
        std::optional<std::string> yoid;
        bool isOrg = false;
        std::optional<int> limit;
        std::optional<std::string> searchText;
        SearchCallback callback;
    };

    FakeContactsNetworkService() {
        ON_CALL(*this, getContacts)
            .WillByDefault([this](const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                  int startIndex, int limit, std::optional<double> updatedTime,
                                  ContactsPageCallback callback) {
                std::lock_guard lock(mutex_);
                pages_.push_back(PageRequest{yuid, yoid, isOrg, startIndex, limit, updatedTime, std::move(callback)});
                arrived_.notify_all();
            });
        ON_CALL(*this, searchContacts)
            .WillByDefault([this](const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                  std::optional<int> limit, const std::optional<std::string>& searchText,
                                  SearchCallback callback) {
                std::lock_guard lock(mutex_);
                searches_.push_back(SearchRequest{yuid, yoid, isOrg, limit, searchText, std::move(callback)});
                arrived_.notify_all();
            });
    }

    MOCK_METHOD(void, getContacts,
                (const std::string&, const std::optional<std::string>&, bool, int, int, std::optional<double>,
                 ContactsPageCallback),
                (override));
    MOCK_METHOD(void, searchContacts,
                (const std::string&, const std::optional<std::string>&, bool, std::optional<int>,
                 const std::optional<std::string>&, SearchCallback),
                (override));
    MOCK_METHOD(void, getContactUsageCount, (const std::string&, UsageCountCallback), (override));
    MOCK_METHOD(void, cancelTasks, (const std::string&), (override));
    MOCK_METHOD(void, getContactImage,
                (const std::string&, const std::string&, bool, std::optional<std::chrono::system_clock::time_point>,
                 const std::optional<YActivityMetaData>&, YContactType, ImageCallback),
                (override));
    MOCK_METHOD(void, getContactImage,
                (const std::string&, const std::string&, bool, bool, const std::optional<YActivityMetaData>&,
                 ImageCallback),
                (override));

    // The oldest unanswered page request, waiting for one to arrive.
    std::optional<PageRequest> nextPage() {
        std::unique_lock lock(mutex_);
        if (!arrived_.wait_for(lock, waitLimit, [&] { return !pages_.empty(); })) return std::nullopt;
        auto request = std::move(pages_.front());
        pages_.pop_front();
        return request;
    }

    std::size_t pendingPages() {
        std::lock_guard lock(mutex_);
        return pages_.size();
    }

    std::vector<SearchRequest> searches() {
        std::lock_guard lock(mutex_);
        return searches_;
    }

    bool waitForSearches(std::size_t count) {
        std::unique_lock lock(mutex_);
        return arrived_.wait_for(lock, waitLimit, [&] { return searches_.size() >= count; });
    }

    // Answers the search at `index`; the callback runs outside the fake's lock, so it may search again.
    void answerSearch(std::size_t index, std::optional<std::vector<YContact>> contacts) {
        SearchCallback callback;
        {
            std::lock_guard lock(mutex_);
            callback = searches_.at(index).callback;
        }
        callback(std::move(contacts));
    }

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<PageRequest> pages_;
    std::vector<SearchRequest> searches_;
};

}  // namespace ycontacts::testsupport

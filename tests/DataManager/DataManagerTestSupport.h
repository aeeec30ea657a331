#pragma once
// Fakes of the data manager's collaborators, a recording observer and a fixture shared by its test suites.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/PlatformTestSupport.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"

namespace ycontacts::dmtest {

using ::testing::NiceMock;
using platformtest::waitLimit;

class MockDatabase : public YContactsDatabaseContract {
public:
    MockDatabase() {
        ON_CALL(*this, getContactCount(::testing::_)).WillByDefault(::testing::Return(ContactCount{2, 3}));
    }
    MOCK_METHOD(void, save, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(std::optional<ContactCount>, getContactCount, (const std::string&), (override));
    MOCK_METHOD(void, updateContacts, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(void, deleteContacts, (const std::string&, const std::vector<std::string>&), (override));
    MOCK_METHOD(void, updateContactId, (const std::string&, const std::string&, const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts,
                (const std::string&, std::optional<bool>, const std::optional<std::string>&, std::optional<int>,
                 std::optional<int>),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsList,
                (const std::string&, std::optional<bool>, const std::optional<std::string>&, std::optional<int>,
                 std::optional<int>),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsFromEmailIds,
                (const std::string&, const std::vector<std::string>&, std::optional<bool>), (override));
    MOCK_METHOD(std::optional<YContact>, getContactByEmailId, (const std::string&, const std::string&, bool),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactYuid, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactId, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(void, deleteAllDetails, (const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YSuggestionContact>>, getSuggestionContacts,
                (const std::string&, std::optional<bool>, const std::string&, int), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getOrgContactSuggestions,
                (const std::string&, const std::optional<std::string>&, std::optional<int>, int, bool, bool),
                (override));
    MOCK_METHOD(void, fixPersonalContacts, (const std::string&), (override));
    MOCK_METHOD(void, updateContactsUsageCount, (const std::string&, (const std::map<std::string, std::string>&)),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(void, addCategories, (const std::string&, const std::vector<YContactCategory>&), (override));
    MOCK_METHOD(std::optional<std::vector<YContactCategory>>, getCategories, (const std::string&), (override));
    MOCK_METHOD(void, deleteCategories, (const std::string&, const std::vector<std::string>&), (override));
};

// One getContacts call the fake network has received and not yet answered.
struct PageRequest {
    std::string yuid;
    std::optional<std::string> yoid;
    bool isOrg = false;
    int startIndex = 0;
    int limit = 0;
    std::optional<double> updatedTime;
    YContactsNetworkContract::ContactsPageCallback callback;

    void reply(std::optional<YContactNetworkResponse> response) const { callback(std::move(response)); }
};

class MockNetwork : public YContactsNetworkContract {
public:
    MockNetwork() {
        ON_CALL(*this, getContacts)
            .WillByDefault([this](const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                  int startIndex, int limit, std::optional<double> updatedTime,
                                  ContactsPageCallback callback) {
                std::lock_guard lock(mutex_);
                pending_.push_back(PageRequest{yuid, yoid, isOrg, startIndex, limit, updatedTime, std::move(callback)});
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

    // The oldest unanswered page request, waiting for one to arrive.
    std::optional<PageRequest> nextPage() {
        std::unique_lock lock(mutex_);
        if (!arrived_.wait_for(lock, waitLimit, [&] { return !pending_.empty(); })) return std::nullopt;
        auto request = std::move(pending_.front());
        pending_.pop_front();
        return request;
    }

    std::size_t pendingPages() {
        std::lock_guard lock(mutex_);
        return pending_.size();
    }

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<PageRequest> pending_;
};

// Keeps its values in memory, the way the real service keeps them per user: start index 1 and "not complete"
// until something is stored, and no last updated time until one is stored.
class MockPreference : public YContactsPreferenceContract {
public:
    MockPreference() {
        using ::testing::_;
        ON_CALL(*this, setStartIndex(_, _, _)).WillByDefault([this](const std::string& yuid, std::int64_t index, bool isOrg) {
            std::lock_guard lock(mutex_);
            startIndices_[{yuid, isOrg}] = index;
        });
        ON_CALL(*this, startIndex(_, _)).WillByDefault([this](const std::string& yuid, bool isOrg) -> std::int64_t {
            std::lock_guard lock(mutex_);
            const auto found = startIndices_.find({yuid, isOrg});
            return found == startIndices_.end() || found->second <= 0 ? 1 : found->second;
        });
        ON_CALL(*this, setCompleteState(_, _, _)).WillByDefault([this](const std::string& yuid, bool complete, bool isOrg) {
            std::lock_guard lock(mutex_);
            completed_[{yuid, isOrg}] = complete;
        });
        ON_CALL(*this, completeState(_, _)).WillByDefault([this](const std::string& yuid, bool isOrg) {
            std::lock_guard lock(mutex_);
            const auto found = completed_.find({yuid, isOrg});
            return found != completed_.end() && found->second;
        });
        ON_CALL(*this, lastUpdatedTime(_)).WillByDefault([this](const std::string& yuid) -> std::optional<double> {
            std::lock_guard lock(mutex_);
            const auto found = times_.find(yuid);
            if (found == times_.end() || found->second == 0.0) return std::nullopt;
            return found->second;
        });
        ON_CALL(*this, setLastUpdatedTime(_, _)).WillByDefault([this](const std::string& yuid, double time) {
            std::lock_guard lock(mutex_);
            times_[yuid] = time;
        });
        ON_CALL(*this, removeAllPreferences(_)).WillByDefault([this](const std::string& yuid) {
            std::lock_guard lock(mutex_);
            std::erase_if(startIndices_, [&](const auto& entry) { return entry.first.first == yuid; });
            std::erase_if(completed_, [&](const auto& entry) { return entry.first.first == yuid; });
            times_.erase(yuid);
        });
    }
    MOCK_METHOD(void, setStartIndex, (const std::string&, std::int64_t, bool), (override));
    MOCK_METHOD(std::int64_t, startIndex, (const std::string&, bool), (override));
    MOCK_METHOD(void, setCompleteState, (const std::string&, bool, bool), (override));
    MOCK_METHOD(bool, completeState, (const std::string&, bool), (override));
    MOCK_METHOD(std::optional<double>, lastUpdatedTime, (const std::string&), (override));
    MOCK_METHOD(void, setLastUpdatedTime, (const std::string&, double), (override));
    MOCK_METHOD(void, removeAllPreferences, (const std::string&), (override));

    // Seeds the state a user would have after earlier downloads.
    void seed(const std::string& yuid, bool orgComplete, bool personalComplete,
              std::optional<double> lastUpdated = std::nullopt) {
        std::lock_guard lock(mutex_);
        completed_[{yuid, true}] = orgComplete;
        completed_[{yuid, false}] = personalComplete;
        if (lastUpdated) times_[yuid] = *lastUpdated;
    }

private:
    std::mutex mutex_;
    std::map<std::pair<std::string, bool>, std::int64_t> startIndices_;
    std::map<std::pair<std::string, bool>, bool> completed_;
    std::map<std::string, double> times_;
};

class MockFileService : public YContactsFileServiceContract {
public:
    MOCK_METHOD(ImageFile, getContactImage, (const std::string&, const std::string&, bool), (override));
    MOCK_METHOD(std::string, saveContactImage,
                (const std::string&, const std::string&, const std::vector<std::uint8_t>&, bool), (override));
    MOCK_METHOD(void, deleteContactImage, (const std::string&, const std::string&), (override));
    MOCK_METHOD(void, deleteAllImages, (const std::string&), (override));
    MOCK_METHOD(std::optional<std::chrono::system_clock::time_point>, getModifiedDate,
                (const std::string&, const std::string&, bool), (override));
    MOCK_METHOD(void, updateModifiedDate,
                (const std::string&, const std::string&, bool, std::chrono::system_clock::time_point), (override));
};

// Writes each notification as one line of text, e.g. "downloadStarted u1 o1 initial".
class RecordingObserver : public YContactsNotification {
public:
    std::vector<std::string> events() const {
        std::lock_guard lock(mutex_);
        return events_;
    }
    std::vector<double> completionTimes() const {
        std::lock_guard lock(mutex_);
        return completionTimes_;
    }
    void clear() {
        std::lock_guard lock(mutex_);
        events_.clear();
        completionTimes_.clear();
    }

    void countUpdate(const std::string& yuid, std::int64_t orgCount, std::int64_t nonOrgCount) override {
        add("countUpdate " + yuid + " " + std::to_string(orgCount) + " " + std::to_string(nonOrgCount));
    }
    void contactDataReset(const std::string& yuid) override { add("contactDataReset " + yuid); }
    void contactsUsageCountUpdated(const std::string& yuid,
                                   const std::map<std::string, std::string>& usageCountMap) override {
        std::string line = "usageCountUpdated " + yuid;
        for (const auto& [id, count] : usageCountMap) line += " " + id + "=" + count;
        add(line);
    }
    void contactsAdded(const std::string& yuid, bool isOrg, const std::vector<YContact>& contact) override {
        add("contactsAdded " + yuid + " " + kind(isOrg) + ids(contact));
    }
    void downloadStarted(const std::string& yuid, const std::optional<std::string>& yoid, bool isInitial) override {
        add("downloadStarted " + yuid + " " + yoid.value_or("nil") + (isInitial ? " initial" : " sync"));
    }
    void downloadComplete(const std::string& yuid, const std::optional<std::string>& yoid, double lastUpdateTime,
                          bool isInitial) override {
        std::lock_guard lock(mutex_);
        completionTimes_.push_back(lastUpdateTime);
        events_.push_back("downloadComplete " + yuid + " " + yoid.value_or("nil") + (isInitial ? " initial" : " sync"));
    }
    void downloadFailed(const std::string& yuid, const std::optional<std::string>& yoid, YContactError error) override {
        add("downloadFailed " + yuid + " " + yoid.value_or("nil") + " " + std::string(toRawValue(error)));
    }
    void contactsUpdated(const std::string& yuid, bool isOrg, const std::vector<YContact>& contact) override {
        add("contactsUpdated " + yuid + " " + kind(isOrg) + ids(contact));
    }
    void contactsDeleted(const std::string& yuid, bool isOrg,
                         const std::vector<std::string>& deletedContactIds) override {
        std::string line = "contactsDeleted " + yuid + " " + kind(isOrg);
        for (const auto& id : deletedContactIds) line += " " + id;
        add(line);
    }

private:
    static std::string kind(bool isOrg) { return isOrg ? "org" : "personal"; }
    static std::string ids(const std::vector<YContact>& contacts) {
        std::string line;
        for (const auto& contact : contacts) line += " " + contact.contactId;
        return line;
    }
    void add(std::string line) {
        std::lock_guard lock(mutex_);
        events_.push_back(std::move(line));
    }

    mutable std::mutex mutex_;
    std::vector<std::string> events_;
    std::vector<double> completionTimes_;
};

// Collects the library's log messages while it lives.
class LogCapture {
public:
    LogCapture() {
        Logger::shared().setSink([this](const Logger::Record& record) {
            std::lock_guard lock(mutex_);
            messages_.push_back(record.message);
        });
    }
    ~LogCapture() { Logger::shared().setSink({}); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> messages() const {
        std::lock_guard lock(mutex_);
        return messages_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> messages_;
};

inline YContactNetworkResponse page(int count, bool hasMore) {
    YContactNetworkResponse response;
    response.count = count;
    response.hasMore = hasMore;
    return response;
}

inline std::vector<YContact> contacts(std::initializer_list<const char*> contactIds) {
    std::vector<YContact> list;
    for (const char* id : contactIds) list.emplace_back(id, std::string("Name ") + id, 1700000000000);
    return list;
}

// A data manager over fresh fakes, with an observer registered for its notifications. Timers use their
// production periods unless a test asks otherwise, so they stay out of the way of the pipeline tests.
class DataManagerTest : public ::testing::Test {
protected:
    void SetUp() override { YNotificationCenter::shared().addObserver<YContactsNotification>(observer); }

    void TearDown() override {
        manager.reset();
        YNotificationCenter::shared().removeObserver<YContactsNotification>(observer.get());
    }

    std::shared_ptr<YContactsDataManager> makeManager(YContactsDataManager::Intervals intervals = {}) {
        return std::make_shared<YContactsDataManager>(database, network, preference, fileService, intervals);
    }

    std::shared_ptr<NiceMock<MockDatabase>> database = std::make_shared<NiceMock<MockDatabase>>();
    std::shared_ptr<NiceMock<MockNetwork>> network = std::make_shared<NiceMock<MockNetwork>>();
    std::shared_ptr<NiceMock<MockPreference>> preference = std::make_shared<NiceMock<MockPreference>>();
    std::shared_ptr<NiceMock<MockFileService>> fileService = std::make_shared<NiceMock<MockFileService>>();
    std::shared_ptr<RecordingObserver> observer = std::make_shared<RecordingObserver>();
    std::shared_ptr<YContactsDataManager> manager = makeManager();
};

}  // namespace ycontacts::dmtest

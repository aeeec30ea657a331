#pragma once
// A recording observer, page and contact makers, and a fixture shared by the data manager's test suites.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Support/FakeContactsDatabaseService.h"
#include "Support/FakeContactsFileService.h"
#include "Support/FakeContactsNetworkService.h"
#include "Support/FakeContactsPreferenceService.h"
#include "Support/LogCapture.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"

namespace ycontacts::dmtest {

using ::testing::NiceMock;
using namespace testsupport;

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

// What a page request asks for, as one line, e.g. "u1 o1 org page 2 of 1000 since 1234"; "none" when no
// request came.
inline std::string asked(const std::optional<FakeContactsNetworkService::PageRequest>& request) {
    if (!request) return "none";
    std::ostringstream line;
    line << request->yuid << " " << request->yoid.value_or("nil") << (request->isOrg ? " org" : " personal")
         << " page " << request->startIndex << " of " << request->limit << " since ";
    if (request->updatedTime) {
        line << *request->updatedTime;
    } else {
        line << "nil";
    }
    return line.str();
}

// A data manager over fresh fakes, with an observer registered for its notifications. The store counts 2
// organisation and 3 personal contacts. Timers use their production periods unless a test asks otherwise,
// so they stay out of the way of the pipeline tests.
class DataManagerTest : public ::testing::Test {
protected:
    void SetUp() override {
        ON_CALL(*database, getContactCount(::testing::_))
            .WillByDefault(::testing::Return(YContactsDatabaseContract::ContactCount{2, 3}));
        YNotificationCenter::shared().addObserver<YContactsNotification>(observer);
    }

    void TearDown() override {
        manager.reset();
        YNotificationCenter::shared().removeObserver<YContactsNotification>(observer.get());
    }

    std::shared_ptr<YContactsDataManager> makeManager(YContactsDataManager::Intervals intervals = {}) {
        return std::make_shared<YContactsDataManager>(database, network, preference, fileService, intervals);
    }

    std::shared_ptr<NiceMock<FakeContactsDatabaseService>> database =
        std::make_shared<NiceMock<FakeContactsDatabaseService>>();
    std::shared_ptr<NiceMock<FakeContactsNetworkService>> network =
        std::make_shared<NiceMock<FakeContactsNetworkService>>();
    std::shared_ptr<NiceMock<FakeContactsPreferenceService>> preference =
        std::make_shared<NiceMock<FakeContactsPreferenceService>>();
    std::shared_ptr<NiceMock<FakeContactsFileService>> fileService =
        std::make_shared<NiceMock<FakeContactsFileService>>();
    std::shared_ptr<RecordingObserver> observer = std::make_shared<RecordingObserver>();
    std::shared_ptr<YContactsDataManager> manager = makeManager();
};

}  // namespace ycontacts::dmtest

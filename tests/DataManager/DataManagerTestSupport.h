#pragma once
// Fixtures of the data manager suites: a recording observer, page and contact makers, a data manager over
// fakes and the real preference service (in memory), and the query component over the same fakes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "Support/FakeContactsDatabaseService.h"
#include "Support/FakeContactsFileService.h"
#include "Support/FakeContactsNetworkService.h"
#include "Support/LogCapture.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"

namespace ycontacts::dmtest {

using ::testing::_;
using ::testing::NiceMock;
using ::testing::Return;
using namespace testsupport;
using Ids = std::vector<std::string>;

// Writes each notification as one line, e.g. "downloadStarted u1 o1 initial" or "contactsAdded u1 org a b".
class RecordingObserver : public YContactsNotification {
public:
    Received<std::string> events;
    Received<double> completionTimes;

    void countUpdate(const std::string& yuid, std::int64_t org, std::int64_t personal) override {
        events.add("countUpdate " + yuid + " " + std::to_string(org) + " " + std::to_string(personal));
    }
    void contactDataReset(const std::string& yuid) override { events.add("contactDataReset " + yuid); }
    void contactsUsageCountUpdated(const std::string& yuid, const std::map<std::string, std::string>& counts) override {
        std::string line = "usageCountUpdated " + yuid;
        for (const auto& [id, count] : counts) line += " " + id + "=" + count;
        events.add(line);
    }
    void contactsAdded(const std::string& yuid, bool isOrg, const std::vector<YContact>& list) override {
        events.add("contactsAdded " + yuid + kind(isOrg) + ids(list));
    }
    void contactsUpdated(const std::string& yuid, bool isOrg, const std::vector<YContact>& list) override {
        events.add("contactsUpdated " + yuid + kind(isOrg) + ids(list));
    }
    void contactsDeleted(const std::string& yuid, bool isOrg, const std::vector<std::string>& list) override {
        std::string line = "contactsDeleted " + yuid + kind(isOrg);
        for (const auto& id : list) line += " " + id;
        events.add(line);
    }
    void downloadStarted(const std::string& yuid, const std::optional<std::string>& yoid, bool initial) override {
        events.add("downloadStarted " + yuid + " " + yoid.value_or("nil") + (initial ? " initial" : " sync"));
    }
    void downloadComplete(const std::string& yuid, const std::optional<std::string>& yoid, double time,
                          bool initial) override {
        completionTimes.add(time);
        events.add("downloadComplete " + yuid + " " + yoid.value_or("nil") + (initial ? " initial" : " sync"));
    }
    void downloadFailed(const std::string& yuid, const std::optional<std::string>& yoid, YContactError error) override {
        events.add("downloadFailed " + yuid + " " + yoid.value_or("nil") + " " + std::string(toRawValue(error)));
    }

private:
    static std::string kind(bool isOrg) { return isOrg ? " org" : " personal"; }
    static std::string ids(const std::vector<YContact>& list) {
        std::string line;
        for (const auto& contact : list) line += " " + contact.contactId;
        return line;
    }
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

inline YContact contact(const std::string& id, const std::string& firstName,
                        const std::optional<std::string>& lastName = std::nullopt, int weightage = 0,
                        bool isOrg = false) {
    YContact result(id, firstName, 0);
    result.lastName = lastName;
    result.weightage = weightage;
    result.isOrg = isOrg;
    return result;
}

inline Ids idsOf(const std::vector<YContact>& list) {
    Ids ids;
    for (const YContact& each : list) ids.push_back(each.contactId);
    return ids;
}

// What a page request asks for, e.g. "u1 o1 org page 2 of 1000 since 1234"; "none" when no request came.
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

// Matches the query a store read is asked with, by the fields a read looks at (`_` for any of them).
template <class Yuid, class IsOrg, class SearchStr, class From, class Limit>
auto storeQuery(Yuid yuid, IsOrg isOrg, SearchStr searchStr, From from, Limit limit) {
    using ::testing::Field;
    return ::testing::AllOf(Field(&YContactsQuery::yuid, yuid), Field(&YContactsQuery::isOrg, isOrg),
                            Field(&YContactsQuery::searchStr, searchStr), Field(&YContactsQuery::from, from),
                            Field(&YContactsQuery::limit, limit));
}

// The fakes every suite here builds on; the preference service is the library's own over a fresh memory store.
class FakesTest : public ::testing::Test {
protected:
    std::shared_ptr<NiceMock<FakeContactsDatabaseService>> database =
        std::make_shared<NiceMock<FakeContactsDatabaseService>>();
    std::shared_ptr<NiceMock<FakeContactsNetworkService>> network =
        std::make_shared<NiceMock<FakeContactsNetworkService>>();
    std::shared_ptr<YContactsPreferenceService> preference =
        std::make_shared<YContactsPreferenceService>(std::make_shared<YUserDefaults>(std::nullopt));
    std::shared_ptr<NiceMock<FakeContactsFileService>> fileService =
        std::make_shared<NiceMock<FakeContactsFileService>>();

    // Seeds the progress a user has after earlier downloads.
    void seed(const std::string& yuid, bool orgComplete, bool personalComplete, double lastUpdated = 0) {
        preference->setCompleteState(yuid, orgComplete, true);
        preference->setCompleteState(yuid, personalComplete, false);
        preference->setLastUpdatedTime(yuid, lastUpdated);
    }
};

// A data manager over the fakes, with an observer registered. The store counts 2 organisation and 3 personal
// contacts. Timers keep their production periods, so they stay out of the way.
class DataManagerTest : public FakesTest {
protected:
    void SetUp() override {
        ON_CALL(*database, getContactCount(_)).WillByDefault(Return(YContactsDatabaseContract::ContactCount{2, 3}));
        YNotificationCenter::shared().addObserver<YContactsNotification>(observer);
    }
    void TearDown() override {
        manager.reset();
        YNotificationCenter::shared().removeObserver<YContactsNotification>(observer.get());
    }
    std::vector<std::string> events() { return observer->events.values(); }

    std::shared_ptr<RecordingObserver> observer = std::make_shared<RecordingObserver>();
    std::shared_ptr<YContactsDataManager> manager =
        std::make_shared<YContactsDataManager>(database, network, preference, fileService);
};

// The query component over the fakes, counting how often it restarts the in-memory timer.
class QueriesTest : public FakesTest {
protected:
    std::shared_ptr<YContactsQueries> makeQueries(int batchLimit = 1000, bool withDatabase = true,
                                                  bool withNetwork = true) {
        return std::make_shared<YContactsQueries>(
            withDatabase ? database : nullptr, withNetwork ? network : nullptr, [this] { ++timerRestarts; },
            batchLimit);
    }
    int timerRestarts = 0;
};

}  // namespace ycontacts::dmtest

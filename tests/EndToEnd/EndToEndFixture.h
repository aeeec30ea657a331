#pragma once
// EndToEndTest: a YContactService wired to its real services, syncing from a sample server on loopback into a
// temporary folder. Notifications, page requests and preference removals are written to logs a test waits on.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "EndToEnd/ServerExpectations.h"
#include "Support/SampleServerFixture.h"
#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"
#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Contacts/YContactsNotification.h"
#include "ycontacts/Platform/YNetworkManager/YNetworkManager.h"
#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

namespace ycontacts::endtoend {

// Long enough for a loaded debug build; a passing test never waits this long.
inline constexpr std::chrono::seconds defaultWait{30};

// What the sample server expects: "token-<yuid>" for every user, and the server itself as a direct host.
class SampleAuthenticator : public YContactsAuthenticationContract {
public:
    explicit SampleAuthenticator(std::string baseURL) : baseURL_(std::move(baseURL)) {}
    void getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) override {
        callback("token-" + yuid, std::nullopt);
    }
    std::optional<YContactsHost> getContactsHost(const std::string&) override { return YContactsHost::idc(baseURL_); }

private:
    std::string baseURL_;
};

// Lines of text per user ("contactsAdded personal 100001 100002"), appended from any thread.
class EventLog {
public:
    using Prefixes = std::initializer_list<std::string_view>;

    void append(const std::string& yuid, std::string text) {
        std::lock_guard lock(mutex_);
        lines_.emplace_back(yuid, std::move(text));
        changed_.notify_all();
    }
    std::vector<std::string> texts(const std::string& yuid) const {
        std::lock_guard lock(mutex_);
        std::vector<std::string> result;
        for (const auto& [user, text] : lines_) {
            if (user == yuid) result.push_back(text);
        }
        return result;
    }
    // The user's lines that start with one of `prefixes`.
    std::size_t count(const std::string& yuid, Prefixes prefixes) const {
        std::lock_guard lock(mutex_);
        return countLocked(yuid, prefixes);
    }
    // False when the count has not reached `atLeast` within `timeout`.
    bool waitForCount(const std::string& yuid, Prefixes prefixes, std::size_t atLeast,
                      std::chrono::milliseconds timeout = defaultWait) const {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, timeout, [&] { return countLocked(yuid, prefixes) >= atLeast; });
    }

private:
    std::size_t countLocked(const std::string& yuid, Prefixes prefixes) const {
        std::size_t found = 0;
        for (const auto& [user, text] : lines_) {
            for (const auto prefix : prefixes) found += user == yuid && text.starts_with(prefix) ? 1 : 0;
        }
        return found;
    }
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    std::vector<std::pair<std::string, std::string>> lines_;
};

// Every notification as a line: "downloadStarted initial", "contactsAdded personal <ids>",
// "countUpdate org=<n> personal=<n>", "downloadComplete sync", "downloadFailed <error>", ...
class RecordingObserver : public YContactsNotification {
public:
    void countUpdate(const std::string& yuid, std::int64_t org, std::int64_t personal) override {
        record(yuid, "countUpdate org=" + std::to_string(org) + " personal=" + std::to_string(personal));
    }
    void contactDataReset(const std::string& yuid) override { record(yuid, "contactDataReset"); }
    void contactsAdded(const std::string& yuid, bool isOrg, const std::vector<YContact>& contacts) override {
        record(yuid, "contactsAdded", isOrg, contacts);
    }
    void contactsUpdated(const std::string& yuid, bool isOrg, const std::vector<YContact>& contacts) override {
        record(yuid, "contactsUpdated", isOrg, contacts);
    }
    void contactsDeleted(const std::string& yuid, bool isOrg, const std::vector<std::string>& ids) override {
        std::vector<YContact> contacts;
        for (const auto& id : ids) contacts.emplace_back(id, "", 0);
        record(yuid, "contactsDeleted", isOrg, contacts);
    }
    void downloadStarted(const std::string& yuid, const std::optional<std::string>&, bool isInitial) override {
        record(yuid, std::string("downloadStarted ") + (isInitial ? "initial" : "sync"));
    }
    void downloadComplete(const std::string& yuid, const std::optional<std::string>&, double, bool isInitial) override {
        record(yuid, std::string("downloadComplete ") + (isInitial ? "initial" : "sync"));
    }
    void downloadFailed(const std::string& yuid, const std::optional<std::string>&, YContactError error) override {
        record(yuid, "downloadFailed " + std::string(toRawValue(error)));
    }

    EventLog log;

private:
    void record(const std::string& yuid, std::string text) { log.append(yuid, std::move(text)); }
    void record(const std::string& yuid, std::string what, bool isOrg, const std::vector<YContact>& contacts) {
        what += isOrg ? " org" : " personal";
        for (const auto& contact : contacts) what += " " + contact.contactId;
        record(yuid, std::move(what));
    }
};

// The real network service, logging "request <personal|org> page <n>" when the data manager asks, "sent ..."
// once the request is with the HTTP client and "reply ... <ok|none|error>" once the reply has been handled.
class ObservedNetwork : public YContactsNetworkService {
public:
    using YContactsNetworkService::YContactsNetworkService;
    void getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg, int startIndex,
                     int limit, std::optional<double> updatedTime, ContactsPageCallback callback) override;
    EventLog log;
};

// The real preference service; logs "removed" once a user's preferences are gone, the last step of removing
// a user's data.
class ObservedPreference : public YContactsPreferenceService {
public:
    using YContactsPreferenceService::YContactsPreferenceService;
    void removeAllPreferences(const std::string& yuid) override {
        YContactsPreferenceService::removeAllPreferences(yuid);
        log.append(yuid, "removed");
    }
    EventLog log;
};

// A YContactService built as a host builds it: the store is `folder`/contacts.sqlite (the host creates the
// tables), the preferences live in that file too. Pages hold 50 contacts, so a few hundred make several.
// Only one harness may live at a time in a process (the store's identifier is process-wide).
class SyncHarness {
public:
    SyncHarness(const std::filesystem::path& folder, const std::string& baseURL,
                std::chrono::milliseconds transferTimeout = std::chrono::milliseconds(20000));
    ~SyncHarness();

    YContactService& service() { return *service_; }
    std::shared_ptr<YContactSyncHandlerContract> sync() { return service_->syncHandler(); }
    RecordingObserver& observer() { return *observer_; }
    ObservedNetwork& network() { return *network_; }
    ObservedPreference& preference() { return *preference_; }
    const std::filesystem::path& databasePath() const { return databasePath_; }
    // The user's stored contacts of one population, read through the facade from the store alone.
    std::optional<std::vector<YContact>> storedContacts(const std::string& yuid, bool isOrg);

private:
    std::filesystem::path databasePath_;
    std::shared_ptr<YNetworkManager> networkManager_;
    std::shared_ptr<RecordingObserver> observer_ = std::make_shared<RecordingObserver>();
    std::shared_ptr<ObservedNetwork> network_;
    std::shared_ptr<ObservedPreference> preference_;
    std::unique_ptr<YContactService> service_;
};

// Succeeds when the stored contacts of the population are exactly `expected`, each once with every field
// equal; storeMatchesServer checks both populations against everything the server has for the user.
::testing::AssertionResult storeHolds(SyncHarness& harness, const sample_server::SampleContactsServer& server,
                                      const std::string& yuid, bool isOrg,
                                      const std::vector<sample_server::SampleContact>& expected);
::testing::AssertionResult storeMatchesServer(SyncHarness& harness, const sample_server::SampleContactsServer& server,
                                              const std::string& yuid);
// The server's personal contacts of the user, or those of its organisation (none without one).
std::vector<sample_server::SampleContact> serverContacts(const sample_server::SampleContactsServer& server,
                                                         const std::string& yuid, bool isOrg);
std::vector<std::string> idsOf(const std::vector<sample_server::SampleContact>& contacts);

// The observer lines of a complete initial download with pages of 50: each population's pages (each followed
// by the counts; a short page is followed by one empty page), the counts again when it completes, then the
// completion. Without `orgIds` the organisation part completes at once.
std::vector<std::string> expectedInitialDownloadLines(const std::vector<std::string>& personalIds,
                                                      const std::optional<std::vector<std::string>>& orgIds);

// The first column of every row `sql` answers on the database, joined with "; ", or the error text.
std::string sqlAnswer(const std::filesystem::path& database, const std::string& sql);
// Rows with the user's yuid in the six contact tables, and the same rows of one contact deleted.
long long rowsOfUser(const std::filesystem::path& database, const std::string& yuid);
bool forgetContact(const std::filesystem::path& database, const std::string& yuid, const std::string& contactId);

// Users u1 and u2 share organisation o1; u3 and u4 have none. 120 personal contacts per user and 80
// organisation contacts make 4 and 3 pages of 50.
class EndToEndTest : public testsupport::SampleServerTest {
protected:
    EndToEndTest()
        : SampleServerTest(
              {.seed = 11, .users = 4, .personalContactsPerUser = 120, .orgContactsPerOrg = 80, .usersWithoutOrg = 2}) {
    }

    void SetUp() override {
        SampleServerTest::SetUp();
        if (!HasFatalFailure())
            harness = std::make_unique<SyncHarness>(folder.path(), server.baseURL(), transferTimeout());
    }
    void TearDown() override {
        harness.reset();
        SampleServerTest::TearDown();
    }
    virtual std::chrono::milliseconds transferTimeout() { return std::chrono::milliseconds(20000); }

    std::size_t count(const std::string& yuid, const std::string& prefix) {
        return harness->observer().log.count(yuid, {prefix});
    }
    // Waits until the user's downloads have completed or failed `times` times in all.
    bool waitForFinish(const std::string& yuid, std::size_t times) {
        return harness->observer().log.waitForCount(yuid, {"downloadComplete", "downloadFailed"}, times);
    }
    // Starts the user and waits for the download to end; true when it completed.
    bool startAndWait(const std::string& yuid, const std::optional<std::string>& yoid) {
        const auto completed = count(yuid, "downloadComplete");
        const auto finished = completed + count(yuid, "downloadFailed");
        harness->sync()->start(yuid, yoid);
        EXPECT_TRUE(waitForFinish(yuid, finished + 1)) << "no download of " << yuid << " finished";
        return count(yuid, "downloadComplete") > completed;
    }
    // The page requests of the user from line `from` of the network log on, as "personal page 3".
    std::vector<std::string> requestsSince(const std::string& yuid, std::size_t from = 0) {
        std::vector<std::string> requests;
        const auto texts = harness->network().log.texts(yuid);
        for (std::size_t index = from; index < texts.size(); ++index) {
            if (texts[index].starts_with("request ")) requests.push_back(texts[index].substr(8));
        }
        return requests;
    }
    std::size_t networkLines(const std::string& yuid) { return harness->network().log.texts(yuid).size(); }

    std::unique_ptr<SyncHarness> harness;
};

}  // namespace ycontacts::endtoend

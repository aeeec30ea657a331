#pragma once
// EndToEndHarness: a YContactService wired to real services on a temporary folder and a loopback server, with logs to wait on.

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

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
    void getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) override;
    std::optional<YContactsHost> getContactsHost(const std::string& yuid) override;

private:
    std::string baseURL_;
};

// One thing that happened, as a line of text ("contactsAdded u1 org 100001 100002").
struct LogLine {
    std::string yuid;
    std::string text;
};

// Lines appended from any thread; tests wait for a condition on them with a time-out.
class EventLog {
public:
    using Lines = std::vector<LogLine>;

    void append(LogLine line);
    Lines lines() const;
    // The texts of one user's lines, in order.
    std::vector<std::string> texts(const std::string& yuid) const;
    // How many of the user's lines start with `prefix`.
    std::size_t count(const std::string& yuid, const std::string& prefix) const;
    // True once `done` holds for the lines; false when `timeout` passed first.
    bool waitUntil(const std::function<bool(const Lines&)>& done,
                   std::chrono::milliseconds timeout = defaultWait) const;
    // Waits until the user has at least `atLeast` lines starting with `prefix`.
    bool waitForCount(const std::string& yuid, const std::string& prefix, std::size_t atLeast,
                      std::chrono::milliseconds timeout = defaultWait) const;

private:
    mutable std::mutex mutex_;
    mutable std::condition_variable changed_;
    Lines lines_;
};

// Records every notification as a line: "downloadStarted initial", "contactsAdded personal <ids>",
// "countUpdate org=<n> personal=<n>", "downloadComplete initial", "downloadFailed <error>", ...
// `hook`, when set, runs on the posting thread right after a line is recorded.
class RecordingObserver : public YContactsNotification {
public:
    void countUpdate(const std::string& yuid, std::int64_t orgCount, std::int64_t nonOrgCount) override;
    void contactDataReset(const std::string& yuid) override;
    void contactsAdded(const std::string& yuid, bool isOrg, const std::vector<YContact>& contact) override;
    void downloadStarted(const std::string& yuid, const std::optional<std::string>& yoid, bool isInitial) override;
    void downloadComplete(const std::string& yuid, const std::optional<std::string>& yoid, double lastUpdateTime,
                          bool isInitial) override;
    void downloadFailed(const std::string& yuid, const std::optional<std::string>& yoid,
                        YContactError error) override;
    void contactsUpdated(const std::string& yuid, bool isOrg, const std::vector<YContact>& contact) override;
    void contactsDeleted(const std::string& yuid, bool isOrg,
                         const std::vector<std::string>& deletedContactIds) override;

    EventLog log;
    // The lastUpdateTime of every downloadComplete, in order.
    std::vector<double> completionTimes(const std::string& yuid) const;
    std::function<void(const LogLine&)> hook;

private:
    void record(const std::string& yuid, std::string text);
    mutable std::mutex mutex_;
    std::vector<std::pair<std::string, double>> completionTimes_;
};

// The real network service with every page request and reply written to a log: "request <personal|org>
// page <n>" when the data manager asks, "sent <personal|org> page <n>" once the request is with the HTTP
// client, "reply <personal|org> page <n> <ok|none|error>" once the data manager has handled the reply, and
// "cancelled" after the user's tasks were cancelled.
class ObservedNetwork : public YContactsNetworkService {
public:
    using YContactsNetworkService::YContactsNetworkService;
    void getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg, int startIndex,
                     int limit, std::optional<double> updatedTime, ContactsPageCallback callback) override;
    void cancelTasks(const std::string& yuid) override;

    EventLog log;
};

// The real preference service; logs "removed" once a user's preferences are gone, the last step of
// removing a user's data.
class ObservedPreference : public YContactsPreferenceService {
public:
    using YContactsPreferenceService::YContactsPreferenceService;

    void removeAllPreferences(const std::string& yuid) override {
        YContactsPreferenceService::removeAllPreferences(yuid);
        log.append({yuid, "removed"});
    }

    EventLog log;
};

struct HarnessSettings {
    // Contacts per page; small so that a few hundred contacts make several pages.
    int batchLimit = 50;
    YNetworkManager::Options network{std::chrono::milliseconds(5000), std::chrono::milliseconds(20000), 2};
};

// A YContactService built with a Config: the store is `folder`/contacts.sqlite (tables created by the schema
// helper), the preferences live in that file too, the network service talks to `baseURL` over its own HTTP
// client. Only one harness may live at a time in a process (the store's identifier is process-wide).
class SyncHarness {
public:
    SyncHarness(const std::filesystem::path& folder, const std::string& baseURL, HarnessSettings settings = {});
    ~SyncHarness();
    SyncHarness(const SyncHarness&) = delete;
    SyncHarness& operator=(const SyncHarness&) = delete;

    YContactService& service() { return *service_; }
    std::shared_ptr<YContactSyncHandlerContract> sync() { return service_->syncHandler(); }
    RecordingObserver& observer() { return *observer_; }
    ObservedNetwork& network() { return *network_; }
    ObservedPreference& preference() { return *preference_; }
    const std::filesystem::path& databasePath() const { return databasePath_; }

    // The user's stored contacts of one population, read through the facade from the store alone.
    std::optional<std::vector<YContact>> storedContacts(const std::string& yuid, bool isOrg);

    // Ends the HTTP client: cancels what is still in flight and returns once every completion has run.
    void stopNetwork();

private:
    std::filesystem::path databasePath_;
    std::shared_ptr<YNetworkManager> networkManager_;
    std::shared_ptr<RecordingObserver> observer_ = std::make_shared<RecordingObserver>();
    std::shared_ptr<ObservedNetwork> network_;
    std::shared_ptr<ObservedPreference> preference_;
    std::unique_ptr<YContactService> service_;
};

}  // namespace ycontacts::endtoend

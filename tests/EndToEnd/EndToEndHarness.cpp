#include "EndToEnd/EndToEndHarness.h"

#include <future>

#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"

namespace ycontacts::endtoend {

namespace fs = std::filesystem;

namespace {

const char* population(bool isOrg) { return isOrg ? "org" : "personal"; }

std::string idsText(const std::vector<YContact>& contacts) {
    std::string text;
    for (const auto& contact : contacts) text += " " + contact.contactId;
    return text;
}

}  // namespace

void SampleAuthenticator::getAuthorizationHeader(const std::string& yuid, AuthorizationCallback callback) {
    callback("token-" + yuid, std::nullopt);
}

std::optional<YContactsHost> SampleAuthenticator::getContactsHost(const std::string&) {
    return YContactsHost::idc(baseURL_);
}

void EventLog::append(LogLine line) {
    {
        std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
    }
    changed_.notify_all();
}

EventLog::Lines EventLog::lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
}

std::vector<std::string> EventLog::texts(const std::string& yuid) const {
    std::vector<std::string> result;
    for (const auto& line : lines()) {
        if (line.yuid == yuid) result.push_back(line.text);
    }
    return result;
}

std::size_t EventLog::count(const std::string& yuid, const std::string& prefix) const {
    std::size_t found = 0;
    for (const auto& text : texts(yuid)) found += text.starts_with(prefix) ? 1 : 0;
    return found;
}

bool EventLog::waitUntil(const std::function<bool(const Lines&)>& done, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, timeout, [&] { return done(lines_); });
}

bool EventLog::waitForCount(const std::string& yuid, const std::string& prefix, std::size_t atLeast,
                            std::chrono::milliseconds timeout) const {
    return waitUntil(
        [&](const Lines& lines) {
            std::size_t found = 0;
            for (const auto& line : lines) found += line.yuid == yuid && line.text.starts_with(prefix) ? 1 : 0;
            return found >= atLeast;
        },
        timeout);
}

void RecordingObserver::record(const std::string& yuid, std::string text) {
    LogLine line{yuid, std::move(text)};
    log.append(line);
    if (hook) hook(line);
}

void RecordingObserver::countUpdate(const std::string& yuid, std::int64_t orgCount, std::int64_t nonOrgCount) {
    record(yuid, "countUpdate org=" + std::to_string(orgCount) + " personal=" + std::to_string(nonOrgCount));
}

void RecordingObserver::contactDataReset(const std::string& yuid) { record(yuid, "contactDataReset"); }

void RecordingObserver::contactsAdded(const std::string& yuid, bool isOrg, const std::vector<YContact>& contact) {
    record(yuid, std::string("contactsAdded ") + population(isOrg) + idsText(contact));
}

void RecordingObserver::downloadStarted(const std::string& yuid, const std::optional<std::string>&,
                                        bool isInitial) {
    record(yuid, std::string("downloadStarted ") + (isInitial ? "initial" : "sync"));
}

void RecordingObserver::downloadComplete(const std::string& yuid, const std::optional<std::string>&,
                                         double lastUpdateTime, bool isInitial) {
    {
        std::lock_guard lock(mutex_);
        completionTimes_.emplace_back(yuid, lastUpdateTime);
    }
    record(yuid, std::string("downloadComplete ") + (isInitial ? "initial" : "sync"));
}

void RecordingObserver::downloadFailed(const std::string& yuid, const std::optional<std::string>&,
                                       YContactError error) {
    record(yuid, "downloadFailed " + std::string(toRawValue(error)));
}

void RecordingObserver::contactsUpdated(const std::string& yuid, bool isOrg, const std::vector<YContact>& contact) {
    record(yuid, std::string("contactsUpdated ") + population(isOrg) + idsText(contact));
}

void RecordingObserver::contactsDeleted(const std::string& yuid, bool isOrg,
                                        const std::vector<std::string>& deletedContactIds) {
    std::string text = std::string("contactsDeleted ") + population(isOrg);
    for (const auto& id : deletedContactIds) text += " " + id;
    record(yuid, std::move(text));
}

std::vector<double> RecordingObserver::completionTimes(const std::string& yuid) const {
    std::lock_guard lock(mutex_);
    std::vector<double> times;
    for (const auto& [user, time] : completionTimes_) {
        if (user == yuid) times.push_back(time);
    }
    return times;
}

void ObservedNetwork::getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                  int startIndex, int limit, std::optional<double> updatedTime,
                                  ContactsPageCallback callback) {
    const std::string page = std::string(population(isOrg)) + " page " + std::to_string(startIndex);
    log.append({yuid, "request " + page});
    YContactsNetworkService::getContacts(
        yuid, yoid, isOrg, startIndex, limit, updatedTime,
        [this, yuid, page, callback = std::move(callback)](std::optional<YContactNetworkResponse> response) {
            // Logged once the data manager has handled the reply.
            const std::string outcome = !response ? "none" : response->error ? "error" : "ok";
            callback(std::move(response));
            log.append({yuid, "reply " + page + " " + outcome});
        });
    // The authorization value is given at once, so by now the request is with the HTTP client and
    // cancelling the user's tasks reaches it.
    log.append({yuid, "sent " + page});
}

void ObservedNetwork::cancelTasks(const std::string& yuid) {
    YContactsNetworkService::cancelTasks(yuid);
    log.append({yuid, "cancelled"});
}

SyncHarness::SyncHarness(const fs::path& folder, const std::string& baseURL, HarnessSettings settings)
    : databasePath_(folder / "contacts.sqlite"),
      networkManager_(std::make_shared<YNetworkManager>(settings.network)) {
    YNotificationCenter::shared().addObserver<YContactsNotification>(observer_);
    // The host's part: the library itself never creates tables.
    YContactsDatabaseSchema::createTablesInFile(databasePath_);

    YContactService::Builders builders = YContactService::Builders::defaults();
    builders.network = [this](const std::shared_ptr<YContactsAuthenticationContract>& authorization)
        -> std::shared_ptr<YContactsNetworkContract> {
        network_ = std::make_shared<ObservedNetwork>(authorization, std::make_shared<YContactsURLConstructor>(),
                                                     std::make_shared<YContactsParser>(), networkManager_);
        return network_;
    };
    // As the library's own builder does: the progress is kept in the database file.
    builders.preference = [this](const std::optional<fs::path>& databaseURL)
        -> std::shared_ptr<YContactsPreferenceContract> {
        preference_ = std::make_shared<ObservedPreference>(std::make_shared<YUserDefaults>(databaseURL));
        return preference_;
    };
    builders.dataManager = [batchLimit = settings.batchLimit](auto database, auto network, auto preference,
                                                               auto file)
        -> std::shared_ptr<YContactsDataManagerContract> {
        return std::make_shared<YContactsDataManager>(std::move(database), std::move(network), std::move(preference),
                                                      std::move(file), YContactsDataManager::Intervals{},
                                                      batchLimit);
    };
    service_ = std::make_unique<YContactService>(std::move(builders));
    service_->config = YContactService::Config(std::make_shared<SampleAuthenticator>(baseURL), databasePath_,
                                               folder / "photos");
    // Builds every component now, so that the store and its tables exist before a test looks at them.
    service_->syncHandler();
}

SyncHarness::~SyncHarness() {
    YNotificationCenter::shared().removeObserver<YContactsNotification>(observer_.get());
    service_.reset();
    networkManager_.reset();
    YSqliteHelper::getShared().unregisterDB(YContactService::databaseIdentifier);
}

std::optional<std::vector<YContact>> SyncHarness::storedContacts(const std::string& yuid, bool isOrg) {
    auto answer = std::make_shared<std::promise<std::optional<std::vector<YContact>>>>();
    auto future = answer->get_future();
    service_->getContacts(yuid, std::nullopt, std::nullopt, std::nullopt, isOrg, RequestType::local,
                          [answer](std::optional<std::vector<YContact>> contacts) {
                              answer->set_value(std::move(contacts));
                          });
    if (future.wait_for(defaultWait) != std::future_status::ready) return std::nullopt;
    return future.get();
}

void SyncHarness::stopNetwork() { networkManager_.reset(); }

}  // namespace ycontacts::endtoend

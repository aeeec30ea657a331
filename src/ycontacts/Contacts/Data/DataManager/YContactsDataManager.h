#pragma once
// YContactsDataManager: owns the signed-in users' contact data at run time: downloads, sync timer, in-memory caches, queries.

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsDatabaseContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsFileServiceContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsNetworkContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsPreferenceContract.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsQueries.h"
#include "ycontacts/Contacts/Data/DataManager/YDataManager.h"
#include "ycontacts/Contacts/Data/Network/YContactError.h"
#include "ycontacts/Contacts/Data/Network/YContactNetworkResponse.h"
#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/YContactsNotification.h"
#include "ycontacts/Platform/MarloComponents/SafeReadWrite.h"
#include "ycontacts/Platform/MarloComponents/YMutex.h"
#include "ycontacts/Platform/MarloComponents/YRunLoopQueue.h"
#include "ycontacts/Platform/MarloComponents/YTimer.h"

namespace ycontacts {

// Periods of the data manager's two repeating timers, in seconds. Tests pass milliseconds' worth.
struct YContactsDataManagerIntervals {
    double syncTimeInterval = 6000.0;
    double destroyInMemoryInterval = 300.0;
};

// Must be owned by a std::shared_ptr (make it with std::make_shared): server replies, timer actions and the
// query component reach it only through weak references, so an object held any other way drops every
// server reply and its timers do nothing. The first sync timer firing comes one syncTimeInterval after
// construction, and it does nothing until some user has been started.
//
// Threads: public operations may be called from any thread. The private serial queue "YContactsQueue" runs
// the sync timer and the in-memory destroy timer on its own thread. Server replies are handled on the
// network service's threads, where pages are written to the store. The destructor stops and joins the
// queue's thread before any other member goes.
class YContactsDataManager : public YDataManager,
                             public YContactsDataManagerContract,
                             public std::enable_shared_from_this<YContactsDataManager> {
public:
    using Intervals = YContactsDataManagerIntervals;
    using NoImageCache = std::map<std::string, std::chrono::system_clock::time_point>;

    // What the data manager knows of one signed-in user, kept in one place under one lock.
    struct UserState {
        // A download or sync of the user is running.
        bool syncing = false;
        // A resetAndStart of the user is under way; a further one does nothing until its download ends.
        bool resetting = false;
        // Started since construction and not removed since: the sync timer visits the user.
        bool started = false;
        // The user's organisation, as last given to start or runInitialFetch.
        std::optional<std::string> yoid;
        // How often the user's data was removed. A download remembers the count it began with and writes
        // only while it is unchanged, so a download ended by a removal touches nothing afterwards.
        std::uint64_t removals = 0;
        // Per contact id, when the server last said that the contact has no photo.
        NoImageCache noImgCache;
    };

    // Contacts asked of the server per page, unless the constructor is given another number.
    static constexpr int defaultContactsBatchFetchLimit = 1000;
    // The smallest page size the page loop can work with: a page that falls short of the limit by 1 to 49
    // contacts asks for the next page, so with a smaller limit even an empty page would never end the loop.
    static constexpr int minimumContactsBatchFetchLimit = 50;
    // A cached photo younger than this is answered without asking the server, and a "no photo" answer of
    // the server is trusted for as long.
    static constexpr double refetchIntervalInMins = 15.0;

    // Contacts asked of the server per page by downloads and server searches.
    const int contactsBatchFetchLimit;

    // Every collaborator may be null: the steps that need an absent one are skipped. A batch limit below
    // minimumContactsBatchFetchLimit is raised to it.
    YContactsDataManager(std::shared_ptr<YContactsDatabaseContract> database,
                         std::shared_ptr<YContactsNetworkContract> network,
                         std::shared_ptr<YContactsPreferenceContract> preference,
                         std::shared_ptr<YContactsFileServiceContract> fileService, Intervals intervals = {},
                         int contactsBatchFetchLimit = defaultContactsBatchFetchLimit);
    ~YContactsDataManager() override;
    YContactsDataManager(const YContactsDataManager&) = delete;
    YContactsDataManager& operator=(const YContactsDataManager&) = delete;

    void start(const std::string& yuid, const std::optional<std::string>& yoid) override;
    void runInitialFetch(const std::string& yuid, const std::optional<std::string>& yoid) override;
    void syncContacts(const std::string& yuid, const std::optional<std::string>& yoid) override;
    std::optional<ContactCount> getContactCount(const std::string& yuids) override;
    void resetAndStart(const std::string& yuid, const std::optional<std::string>& yoid) override;
    std::optional<double> lastUpdatedTime(const std::string& yuid) override;
    bool isSyncInProgress(const std::string& yuid) override;
    void getContacts(const YContactsQuery& query, ContactsCallback callback) override;
    void getContactsList(const YContactsQuery& query, ContactsCallback callback) override;
    void getContactsFromIds(const YGetContactsFromIdsRequest& request, ContactsCallback callback) override;
    void getContact(const YGetContactRequest& request, ContactCallback callback) override;
    // The photo from the file cache or the server; the handler is answered exactly once (see
    // docs/data-manager.md, "Contact photos"): with the bytes and their file, or with neither.
    void getContactImage(const YGetContactImageRequest& request, ImageHandler handler) override;
    void getSuggestionContacts(const YContactsQuery& query, SuggestionsCallback callback) override;
    void getOrgContactSuggestions(const YContactsQuery& query, OrgSuggestionsCallback callback) override;
    void getUsageCount(const std::string& yuid, UsageCountCallback callback) override;
    void removeAllData(const std::string& yuid) override;
    bool wasInitialDownloadCompleted(const std::string& yuid, const std::optional<std::string>& yoid) override;

    // The sync timer's action: an incremental sync (or the rest of an initial download) for every user
    // started since construction and not removed since, each with the yoid recorded for it.
    virtual void startScheduledSync();
    // The destroy timer's action: empties the per-user search maps of the query component, then stops
    // the destroy timer until the next server search restarts it.
    virtual void destroyInMemory();

    // A copy of the user's state; the state of a user never seen is the default one.
    UserState userState(const std::string& yuid) const Y_EXCLUDES(stateMutex_);
    const Intervals& intervals() const { return intervals_; }
    const std::shared_ptr<YContactsQueries>& queries() const { return queries_; }
    // True when called on the "YContactsQueue" thread (inside a timer action, for instance).
    bool isOnQueue() const { return queue_.isCurrent(); }

protected:
    // Receives the start index of the page about to be requested.
    using StepHandler = std::function<void(int nextStartIndex)>;
    using CompletionHandler = std::function<void()>;

    // Replaces the destroy timer with a fresh one, on the queue.
    void restartInMemoryTimer();
    // Invalidates and forgets the destroy timer, on the queue.
    void stopInMemoryTimer();

    // Every step of a download carries `removals`, the number of removals of the user's data when the
    // download began (UserState::removals). Once removeAllData has run again, the download writes nothing more to the
    // store or the preferences, asks for no further page and ends without completing or failing.
    void initialDownload(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                         CompletionHandler completionHandler, std::uint64_t removals);
    void downloadContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                          int startIndex, int limit, std::optional<double> syncTime, StepHandler stepHandler,
                          CompletionHandler totalCompletionHandler, std::uint64_t removals);
    // What became of a download's write: done, refused by the store, or skipped because the user's data
    // was removed since the download began.
    enum class DownloadWrite { written, failed, removed };

    // Stores the page, then announces it. A page that is not `written` is not announced.
    DownloadWrite process(const YContactNetworkResponse& response, const std::string& yuid, bool isOrg,
                          std::uint64_t removals);
    // False when the download was ended by a removal.
    bool initialDownloadComplete(const std::string& yuid, bool isOrg, std::uint64_t removals);
    // Stores now as the user's last updated time, ends the user's sync and returns the time stored.
    double updateSyncTime(const std::string& yuid);
    void updateContactCount(const std::string& yuid);

private:
    void pageArrived(std::optional<YContactNetworkResponse> response, const std::string& yuid,
                     const std::optional<std::string>& yoid, bool isOrg, int startIndex, int limit,
                     std::optional<double> syncTime, const StepHandler& stepHandler,
                     const CompletionHandler& totalCompletionHandler, std::uint64_t removals);
    void downloadFailed(const std::string& yuid, YContactError error);
    void finishSync(const std::string& yuid, const std::optional<std::string>& yoid, std::uint64_t removals);
    // removeAllData's steps; resetAndStart runs them without ending its own reset (`endsReset` false).
    void removeUserData(const std::string& yuid, bool endsReset);
    // The page's new, updated and deleted contacts, in that order; false at the first write the store refused.
    bool storePage(const YContactNetworkResponse& response, const std::string& yuid);
    // Runs `write` (true when it succeeded) unless the user's data was removed since the download began, and
    // holds off removals while it runs, so that nothing of an ended download reaches the store or the
    // preferences after the removal.
    DownloadWrite writeForDownload(const std::string& yuid, std::uint64_t removals, const std::function<bool()>& write)
        Y_EXCLUDES(writeMutex_, stateMutex_);
    // Runs `change` on the user's state under the state lock and returns what it returns. `change` must be
    // short and call nothing outside the state.
    template <typename Change>
    auto changeUser(const std::string& yuid, Change&& change) Y_EXCLUDES(stateMutex_) {
        YMutexLock lock(stateMutex_);
        return std::forward<Change>(change)(users_[yuid]);
    }
    // Runs `read` on the user's state (the default state for a user never seen) under the state lock.
    template <typename Read>
    auto readUser(const std::string& yuid, Read&& read) const Y_EXCLUDES(stateMutex_) {
        static const UserState unknown;
        YMutexLock lock(stateMutex_);
        const auto found = users_.find(yuid);
        return std::forward<Read>(read)(found == users_.end() ? unknown : found->second);
    }
    void clearResetMarker(const std::string& yuid) Y_EXCLUDES(stateMutex_);
    // Test and set as one locked step, so two simultaneous first calls cannot both start a download.
    bool markSyncing(const std::string& yuid) Y_EXCLUDES(stateMutex_);
    void unmarkSyncing(const std::string& yuid) Y_EXCLUDES(stateMutex_);
    static double millisecondsSince1970();
    void recordStarted(const std::string& yuid) Y_EXCLUDES(stateMutex_);
    void recordYoid(const std::string& yuid, const std::optional<std::string>& yoid) Y_EXCLUDES(stateMutex_);
    std::optional<std::string> recordedYoid(const std::string& yuid) const Y_EXCLUDES(stateMutex_);
    std::uint64_t removalCount(const std::string& yuid) const Y_EXCLUDES(stateMutex_);

    static void notify(const std::function<void(YContactsNotification&)>& notification);

    // Which photo a request means: the file key and the server form that fetches it.
    struct PhotoIdentity {
        std::string identifier;
        // Set: by the contact's own user id, with this type. Absent: by contact id.
        std::optional<YContactType> yuidType;
        bool isOrg = false;
        std::optional<std::string> contactId;
    };
    std::optional<PhotoIdentity> photoIdentity(const YGetContactImageRequest& request);
    bool recentlyWithoutPhoto(const std::string& yuid, const std::string& identifier) const Y_EXCLUDES(stateMutex_);
    void photoArrived(const std::string& yuid, const PhotoIdentity& photo, bool isThumbnail, std::uint64_t removals,
                      const YContactImageNetworkResponse& response, const ImageHandler& handler);
    // The cached copy as it is (any age; a normal size falls back to the thumbnail), or nothing.
    void answerCachedPhoto(const std::string& yuid, const PhotoIdentity& photo, bool isThumbnail,
                           const ImageHandler& handler);

    // Lock order: writeMutex_ before stateMutex_. stateMutex_ guards users_ for short steps and is never
    // held while a collaborator or a callback runs. writeMutex_ is held while a download writes (a page, its
    // next page index, its completion) and while a removal counts itself, so that a removal waits for a
    // page being written and the download then writes nothing more; it is a lock of its own so that host
    // queries such as isSyncInProgress never wait behind a page write.
    mutable YMutex writeMutex_ Y_ACQUIRED_BEFORE(stateMutex_);
    mutable YMutex stateMutex_;
    std::map<std::string, UserState> users_ Y_GUARDED_BY(stateMutex_);
    const std::shared_ptr<YContactsDatabaseContract> database_;
    const std::shared_ptr<YContactsNetworkContract> network_;
    const std::shared_ptr<YContactsPreferenceContract> preference_;
    const std::shared_ptr<YContactsFileServiceContract> fileService_;
    const Intervals intervals_;
    // Touched only on the queue's thread.
    std::shared_ptr<YTimer> syncTime_;
    std::shared_ptr<YTimer> destroyTimer_;
    // The query component's weak way back to this object: cleared first thing in the destructor.
    const std::shared_ptr<SafeReadWrite<YContactsDataManager*>> timerOwner_;
    const std::shared_ptr<YContactsQueries> queries_;
    // Declared last: destroyed first, so its thread is joined while every other member still lives.
    YRunLoopQueue queue_;
};

}  // namespace ycontacts

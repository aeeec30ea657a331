#pragma once
// YContactService: the library's entry point; builds its components on first use and forwards host calls to them.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsDatabaseContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsFileServiceContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsNetworkContract.h"
#include "ycontacts/Contacts/Data/Contracts/YContactsPreferenceContract.h"
#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"
#include "ycontacts/Contacts/Domain/RequestType.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContact.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactImage.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContacts.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetContactsFromIds.h"
#include "ycontacts/Contacts/Domain/Usecases/YGetSuggestionContacts.h"
#include "ycontacts/Contacts/YContactSyncHandlerContract.h"
#include "ycontacts/Contacts/YContactsAuthenticationContract.h"
#include "ycontacts/Contacts/YLazySlot.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// The host sets `config` once, before its first call, and then calls from any thread.
//
// Every component (the four services, the data manager, one use case per query kind and the sync handler)
// is built on its first read and kept for the life of the instance; nothing is ever rebuilt. A service whose
// input was missing at that first read (no config, or no database / photo location) stays absent for good,
// even when config is set later, and the data manager then works without it. Should the data manager itself
// be absent, every operation becomes a logged no-op.
//
// First use is safe from several threads at once: each slot is built under its own std::call_once, so
// concurrent first readers wait for one build. `config` itself is a plain field and is not synchronised:
// writing it while another thread makes a first call is a race, as with any unsynchronised field.
class YCONTACTS_EXPORT YContactService {
public:
    struct Config {
        Config(std::shared_ptr<YContactsAuthenticationContract> authenticator,
               std::optional<std::filesystem::path> databaseStorageURL,
               std::optional<std::filesystem::path> fileStorageURL);

        // Supplies the authorization value and the server for every request.
        std::shared_ptr<YContactsAuthenticationContract> authenticator;
        // The SQLite database file itself, used exactly as given.
        std::optional<std::filesystem::path> databaseStorageURL;
        // The folder in which contact photos are cached.
        std::optional<std::filesystem::path> fileStorageURL;
    };

    // Sync controls for the host. The four commands post one task each on UsecaseQueue::queue() and return at
    // once; a task finds the handler through a weak reference and does nothing once the handler is gone. The
    // three queries answer synchronously on the caller's thread. Build it with std::make_shared.
    class YCONTACTS_EXPORT YContactSyncHandler : public YContactSyncHandlerContract,
                                                 public std::enable_shared_from_this<YContactSyncHandler> {
    public:
        explicit YContactSyncHandler(std::shared_ptr<YContactsDataManagerContract> dataManager);

        void start(const std::string& yuid, const std::optional<std::string>& yoid) override;
        void runInitialFetch(const std::string& yuid, const std::optional<std::string>& yoid) override;
        void syncContacts(const std::string& yuid, const std::optional<std::string>& yoid) override;
        std::optional<ContactCount> getContactCount(const std::string& yuid) override;
        void resetAndStart(const std::string& yuid, const std::optional<std::string>& yoid) override;
        std::optional<double> lastUpdatedTime(const std::string& yuid) override;
        bool isSyncInProgress(const std::string& yuid) override;

        const std::shared_ptr<YContactsDataManagerContract> dataManager;

    private:
        using Command = std::function<void(YContactsDataManagerContract& dataManager)>;
        void post(const char* name, Command command);
    };

    // How the instance makes its services and data manager. The facade checks what each one needs (a config,
    // the database or photo location) and calls the builder only when it is there; an empty builder, or one
    // that returns null, leaves that component absent.
    struct Builders {
        std::function<std::shared_ptr<YContactsDatabaseContract>(const std::filesystem::path& databaseURL)> database;
        std::function<std::shared_ptr<YContactsFileServiceContract>(const std::filesystem::path& contactImageDirURL)>
            file;
        std::function<std::shared_ptr<YContactsNetworkContract>(
            const std::shared_ptr<YContactsAuthenticationContract>& authorization)>
            network;
        // Receives the database location when the config gives one, so that progress is kept with the contacts.
        std::function<std::shared_ptr<YContactsPreferenceContract>(
            const std::optional<std::filesystem::path>& databaseURL)>
            preference;
        // Receives whatever the four service slots resolved to, absent ones included.
        std::function<std::shared_ptr<YContactsDataManagerContract>(
            std::shared_ptr<YContactsDatabaseContract> database, std::shared_ptr<YContactsNetworkContract> network,
            std::shared_ptr<YContactsPreferenceContract> preference,
            std::shared_ptr<YContactsFileServiceContract> fileService)>
            dataManager;

        // The library's own services and data manager. The preferences (download progress and last sync
        // time) are kept in the contacts database file, in a table of their own, so that a restarted host
        // resumes where it stopped and a database file removed by the host takes its progress with it;
        // without a database location they live in memory.
        static Builders defaults();
    };

    using ContactsCallback = std::function<void(std::optional<std::vector<YContact>> contacts)>;
    using SuggestionsCallback =
        std::function<void(std::string searchStr, std::optional<std::vector<YSuggestionContact>> contacts)>;
    using ContactCallback = std::function<void(std::optional<YContact> contact)>;
    using ImageCallback =
        std::function<void(std::optional<std::vector<std::uint8_t>> data, std::optional<std::string> filePath)>;

    // The name under which the contacts database is registered with YSqliteHelper, whatever its path.
    static constexpr const char* databaseIdentifier = "DefaultDB";

    // The one instance of the process, made on the first call (thread-safe) with the library's own builders;
    // it starts with config absent and every component unbuilt.
    static YContactService& sharedInstance();

    // An instance with its own builders and slots, for tests and hosts that bring their own services.
    explicit YContactService(Builders builders);
    ~YContactService();
    YContactService(const YContactService&) = delete;
    YContactService& operator=(const YContactService&) = delete;

    // Writing only stores the value; components already built keep what they were built with.
    std::optional<Config> config;

    std::shared_ptr<YContactSyncHandlerContract> syncHandler();

    // The query operations below run one use case each; the callback is called as the use case delivers,
    // on a use-case thread; an answer that arrives after the instance is gone is dropped.
    void getContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                     const std::optional<std::string>& searchStr, std::optional<int> limit, std::optional<bool> isOrg,
                     RequestType requestType, ContactsCallback callback);
    void getContactsFromIds(const std::string& yuid, const std::optional<std::vector<std::string>>& contactIds,
                            const std::optional<std::vector<std::string>>& emailIds,
                            const std::optional<std::vector<std::string>>& contactYuids, std::optional<bool> isOrg,
                            RequestType requestType, ContactsCallback callback);
    void getSuggestionContacts(const std::string& yuid, const std::string& searchStr,
                               const std::optional<std::string>& yoid, int limit, std::optional<bool> isOrg,
                               RequestType requestType, SuggestionsCallback callback);
    // getSuggestionContacts answered by the contacts server.
    void getSuggestionContactsFromNetwork(const std::string& yuid, const std::optional<std::string>& yoid,
                                          const std::string& searchStr, int limit, std::optional<bool> isOrg,
                                          SuggestionsCallback callback);
    // Always with preferPersonalInfo false and RequestType::preferLocal.
    void getContact(const std::string& yuid, const std::optional<std::string>& emailId,
                    const std::optional<std::string>& contactId, const std::optional<std::string>& contactYuid,
                    ContactCallback callback);
    // A photo is found by its ids alone: `isOrg` is accepted and has no effect.
    void getContactImage(const std::string& yuid, const std::optional<std::string>& emailId,
                         const std::optional<std::string>& contactId, const std::optional<std::string>& contactYuid,
                         bool isThumbnail, std::optional<bool> isOrg, RequestType requestType, ImageCallback callback);

    // Returns at once; the data manager clears the user's rows, photos, preferences and transfers on
    // UsecaseQueue::queue(). Nothing is reported back.
    void removeAllData(const std::string& yuid);

private:
    std::shared_ptr<YContactsDatabaseContract> databaseService();
    std::shared_ptr<YContactsFileServiceContract> fileService();
    std::shared_ptr<YContactsNetworkContract> networkService();
    std::shared_ptr<YContactsPreferenceContract> preferenceService();
    std::shared_ptr<YContactsDataManagerContract> dataManager();
    std::shared_ptr<YGetContacts> getContactsUsecase();
    std::shared_ptr<YGetContact> getContactUsecase();
    std::shared_ptr<YGetContactImage> getContactImageUsecase();
    std::shared_ptr<YGetSuggestionContacts> getSuggestionContactUsecase();
    std::shared_ptr<YGetContactsFromIds> getContactsFromIdsUsecase();

    Builders builders_;
    YLazySlot<YContactsDatabaseContract> databaseService_{"the database service"};
    YLazySlot<YContactsFileServiceContract> fileService_{"the photo file service"};
    YLazySlot<YContactsNetworkContract> networkService_{"the network service"};
    YLazySlot<YContactsPreferenceContract> preferenceService_{"the preference service"};
    YLazySlot<YContactsDataManagerContract> dataManager_{"the data manager"};
    YLazySlot<YGetContacts> getContactsUsecase_{"YGetContacts"};
    YLazySlot<YGetContact> getContactUsecase_{"YGetContact"};
    YLazySlot<YGetContactImage> getContactImageUsecase_{"YGetContactImage"};
    YLazySlot<YGetSuggestionContacts> getSuggestionContactUsecase_{"YGetSuggestionContacts"};
    YLazySlot<YGetContactsFromIds> getContactsFromIdsUsecase_{"YGetContactsFromIds"};
    YLazySlot<YContactSyncHandler> syncHandler_{"the sync handler"};
};

}  // namespace ycontacts

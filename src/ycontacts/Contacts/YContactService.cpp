#include "ycontacts/Contacts/YContactService.h"

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"
#include "ycontacts/Platform/MarloComponents/YNotificationCenter.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

namespace ycontacts {

YContactService::Config::Config(std::shared_ptr<YContactsAuthenticationContract> authenticatorValue,
                                std::optional<std::filesystem::path> databaseStorageURLValue,
                                std::optional<std::filesystem::path> fileStorageURLValue)
    : authenticator(std::move(authenticatorValue)),
      databaseStorageURL(std::move(databaseStorageURLValue)),
      fileStorageURL(std::move(fileStorageURLValue)) {}

YContactService& YContactService::sharedInstance() {
    static YContactService& instance = []() -> YContactService& {
        // Statics are destroyed in the reverse order of their creation: creating the platform singletons
        // first lets them outlive the shared instance, whose components use them until they are torn down.
        Logger::shared();
        UsecaseQueue::queue();
        YNotificationCenter::shared();
        YUserDefaults::standard();
        YSqliteHelper::getShared();
        static YContactService service(Builders::defaults());
        return service;
    }();
    return instance;
}

YContactService::YContactService(Builders builders) : builders_(std::move(builders)) {}

YContactService::~YContactService() = default;

std::shared_ptr<YContactsDatabaseContract> YContactService::databaseService() {
    return databaseService_.get([this]() -> std::shared_ptr<YContactsDatabaseContract> {
        if (!config || !config->databaseStorageURL) {
            Logger::shared().warning("No database location configured; the contacts store stays absent");
            return nullptr;
        }
        const std::filesystem::path& databaseURL = *config->databaseStorageURL;
        // The store registers its file with YSqliteHelper itself when it is built.
        return builders_.database ? builders_.database(databaseURL) : nullptr;
    });
}

std::shared_ptr<YContactsFileServiceContract> YContactService::fileService() {
    return fileService_.get([this]() -> std::shared_ptr<YContactsFileServiceContract> {
        if (!config || !config->fileStorageURL) {
            Logger::shared().warning("No photo folder configured; the photo file service stays absent");
            return nullptr;
        }
        return builders_.file ? builders_.file(*config->fileStorageURL) : nullptr;
    });
}

std::shared_ptr<YContactsNetworkContract> YContactService::networkService() {
    return networkService_.get([this]() -> std::shared_ptr<YContactsNetworkContract> {
        if (!config) {
            Logger::shared().warning("No configuration set; the network service stays absent");
            return nullptr;
        }
        return builders_.network ? builders_.network(config->authenticator) : nullptr;
    });
}

std::shared_ptr<YContactsPreferenceContract> YContactService::preferenceService() {
    return preferenceService_.get([this]() -> std::shared_ptr<YContactsPreferenceContract> {
        if (!builders_.preference) return nullptr;
        return builders_.preference(config ? config->databaseStorageURL : std::nullopt);
    });
}

std::shared_ptr<YContactsDataManagerContract> YContactService::dataManager() {
    return dataManager_.get([this]() -> std::shared_ptr<YContactsDataManagerContract> {
        auto database = databaseService();
        auto network = networkService();
        auto preference = preferenceService();
        auto file = fileService();
        if (!builders_.dataManager) return nullptr;
        return builders_.dataManager(std::move(database), std::move(network), std::move(preference),
                                     std::move(file));
    });
}

std::shared_ptr<YGetContacts> YContactService::getContactsUsecase() {
    return getContactsUsecase_.get([this] { return std::make_shared<YGetContacts>(dataManager()); });
}

std::shared_ptr<YGetContact> YContactService::getContactUsecase() {
    return getContactUsecase_.get([this] { return std::make_shared<YGetContact>(dataManager()); });
}

std::shared_ptr<YGetContactImage> YContactService::getContactImageUsecase() {
    return getContactImageUsecase_.get([this] { return std::make_shared<YGetContactImage>(dataManager()); });
}

std::shared_ptr<YGetSuggestionContacts> YContactService::getSuggestionContactUsecase() {
    return getSuggestionContactUsecase_.get([this] { return std::make_shared<YGetSuggestionContacts>(dataManager()); });
}

std::shared_ptr<YGetContactsFromIds> YContactService::getContactsFromIdsUsecase() {
    return getContactsFromIdsUsecase_.get([this] { return std::make_shared<YGetContactsFromIds>(dataManager()); });
}

std::shared_ptr<YContactSyncHandlerContract> YContactService::syncHandler() {
    return syncHandler_.get([this] { return std::make_shared<YContactSyncHandler>(dataManager()); });
}

void YContactService::getContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                  const std::optional<std::string>& searchStr, std::optional<int> limit,
                                  std::optional<bool> isOrg, RequestType requestType, ContactsCallback callback) {
    YGetContactsRequest request(yuid);
    request.yoid = yoid;
    request.searchStr = searchStr;
    request.limit = limit;
    request.isOrg = isOrg;
    request.requestType = requestType;
    getContactsUsecase()->execute(std::move(request),
                                  [callback = std::move(callback)](const YGetContactsResponse& response) {
                                      if (callback) callback(response.contacts);
                                  });
}

void YContactService::getContactsFromIds(const std::string& yuid,
                                         const std::optional<std::vector<std::string>>& contactIds,
                                         const std::optional<std::vector<std::string>>& emailIds,
                                         const std::optional<std::vector<std::string>>& contactYuids,
                                         std::optional<bool> isOrg, RequestType requestType,
                                         ContactsCallback callback) {
    YGetContactsFromIdsRequest request(yuid);
    request.contactIds = contactIds;
    request.emailIds = emailIds;
    request.contactYuids = contactYuids;
    request.isOrg = isOrg;
    request.requestType = requestType;
    getContactsFromIdsUsecase()->execute(std::move(request),
                                         [callback = std::move(callback)](const YGetContactsResponse& response) {
                                             if (callback) callback(response.contacts);
                                         });
}

void YContactService::getSuggestionContacts(const std::string& yuid, const std::string& searchStr,
                                            const std::optional<std::string>& yoid, int limit,
                                            std::optional<bool> isOrg, RequestType requestType,
                                            SuggestionsCallback callback) {
    YGetSuggestionContactsRequest request(yuid, searchStr);
    request.yoid = yoid;
    request.limit = limit;
    request.isOrg = isOrg;
    request.requestType = requestType;
    getSuggestionContactUsecase()->execute(
        std::move(request), [callback = std::move(callback)](const YGetSuggestionContactsResponse& response) {
            if (callback) callback(response.searchStr, response.contacts);
        });
}

void YContactService::getSuggestionContactsFromNetwork(const std::string& yuid,
                                                       const std::optional<std::string>& yoid,
                                                       const std::string& searchStr, int limit,
                                                       std::optional<bool> isOrg, SuggestionsCallback callback) {
    getSuggestionContacts(yuid, searchStr, yoid, limit, isOrg, RequestType::server, std::move(callback));
}

void YContactService::getContact(const std::string& yuid, const std::optional<std::string>& emailId,
                                 const std::optional<std::string>& contactId,
                                 const std::optional<std::string>& contactYuid, ContactCallback callback) {
    YGetContactRequest request(yuid);
    request.emailId = emailId;
    request.contactId = contactId;
    request.contactYuid = contactYuid;
    getContactUsecase()->execute(std::move(request),
                                 [callback = std::move(callback)](const YGetContactResponse& response) {
                                     if (callback) callback(response.contact);
                                 });
}

void YContactService::getContactImage(const std::string& yuid, const std::optional<std::string>& emailId,
                                      const std::optional<std::string>& contactId,
                                      const std::optional<std::string>& contactYuid, bool isThumbnail,
                                      [[maybe_unused]] std::optional<bool> isOrg, RequestType requestType,
                                      ImageCallback callback) {
    YGetContactImageRequest request(yuid);
    request.emailId = emailId;
    request.contactId = contactId;
    request.contactYuid = contactYuid;
    request.isThumbnail = isThumbnail;
    request.requestType = requestType;
    getContactImageUsecase()->execute(std::move(request),
                                      [callback = std::move(callback)](const YGetContactImageResponse& response) {
                                          if (callback) callback(response.contactImageData, response.filePath);
                                      });
}

void YContactService::removeAllData(const std::string& yuid) {
    UsecaseQueue::queue().async([manager = dataManager(), yuid] {
        if (!manager) {
            Logger::shared().warning("No data manager; cannot remove the data of " + yuid);
            return;
        }
        manager->removeAllData(yuid);
    });
}

}  // namespace ycontacts

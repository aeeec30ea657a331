// The builders YContactService::sharedInstance() uses. A builder whose concrete component is not part of the
// library yet yields nothing, so that slot stays absent and the facade logs and skips what needs it.
#include "ycontacts/Contacts/YContactService.h"

namespace ycontacts {

YContactService::Builders YContactService::Builders::defaults() {
    Builders builders;
    // Filled by the database service: YContactsDatabaseService at `databaseURL` under databaseIdentifier,
    // with a fresh YContactsDataMaper. The facade registers the database with YSqliteHelper itself.
    builders.database = [](const std::filesystem::path&) -> std::shared_ptr<YContactsDatabaseContract> {
        return nullptr;
    };
    // Filled by the photo file service: YContactsFileService rooted at `contactImageDirURL`, extension "png".
    builders.file = [](const std::filesystem::path&) -> std::shared_ptr<YContactsFileServiceContract> {
        return nullptr;
    };
    // Filled by the network service: YContactsNetworkService(authorization, YContactsURLConstructor,
    // YContactsParser).
    builders.network =
        [](const std::shared_ptr<YContactsAuthenticationContract>&) -> std::shared_ptr<YContactsNetworkContract> {
        return nullptr;
    };
    // Filled by the preference service: YContactsPreferenceService built without arguments.
    builders.preference = []() -> std::shared_ptr<YContactsPreferenceContract> { return nullptr; };
    // Filled by the data manager: YContactsDataManager(database, network, preference, fileService).
    builders.dataManager = [](std::shared_ptr<YContactsDatabaseContract>, std::shared_ptr<YContactsNetworkContract>,
                              std::shared_ptr<YContactsPreferenceContract>,
                              std::shared_ptr<YContactsFileServiceContract>)
        -> std::shared_ptr<YContactsDataManagerContract> { return nullptr; };
    return builders;
}

}  // namespace ycontacts

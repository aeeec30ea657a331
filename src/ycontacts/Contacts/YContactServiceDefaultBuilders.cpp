// The builders YContactService::sharedInstance() uses. A builder whose concrete component is not part of the
// library yet yields nothing, so that slot stays absent and the facade logs and skips what needs it.
#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

namespace ycontacts {

YContactService::Builders YContactService::Builders::defaults() {
    Builders builders;
    // The database file itself, under databaseIdentifier, with a fresh row mapper.
    builders.database = [](const std::filesystem::path& databaseURL) -> std::shared_ptr<YContactsDatabaseContract> {
        return std::make_shared<YContactsDatabaseService>(databaseIdentifier, databaseURL, YContactsDataMaper());
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
    builders.preference = []() -> std::shared_ptr<YContactsPreferenceContract> {
        return std::make_shared<YContactsPreferenceService>();
    };
    // Filled by the data manager: YContactsDataManager(database, network, preference, fileService).
    builders.dataManager = [](std::shared_ptr<YContactsDatabaseContract>, std::shared_ptr<YContactsNetworkContract>,
                              std::shared_ptr<YContactsPreferenceContract>,
                              std::shared_ptr<YContactsFileServiceContract>)
        -> std::shared_ptr<YContactsDataManagerContract> { return nullptr; };
    return builders;
}

}  // namespace ycontacts

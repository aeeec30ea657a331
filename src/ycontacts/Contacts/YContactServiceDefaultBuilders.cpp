// The builders YContactService::sharedInstance() uses.
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Contacts/Data/FileManager/YContactsFileService.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/Contacts/Data/Preference/YContactsPreferenceService.h"
#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"
#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"
#include "ycontacts/YSqliteDependent/YContactsDatabaseService.h"

namespace ycontacts {

YContactService::Builders YContactService::Builders::defaults() {
    Builders builders;
    // The database file itself, under databaseIdentifier, with a fresh row mapper.
    builders.database = [](const std::filesystem::path& databaseURL) -> std::shared_ptr<YContactsDatabaseContract> {
        return std::make_shared<YContactsDatabaseService>(databaseIdentifier, databaseURL, YContactsDataMaper());
    };
    // Photos under the host's photo folder (Config::fileStorageURL), extension "png". A service of the facade's
    // own rather than YContactsFileService::getSharedInstance, which would keep the first folder it was given.
    builders.file =
        [](const std::filesystem::path& contactImageDirURL) -> std::shared_ptr<YContactsFileServiceContract> {
        return std::make_shared<YContactsFileService>(contactImageDirURL);
    };
    builders.network =
        [](const std::shared_ptr<YContactsAuthenticationContract>& authorization)
        -> std::shared_ptr<YContactsNetworkContract> {
        return std::make_shared<YContactsNetworkService>(authorization, std::make_shared<YContactsURLConstructor>(),
                                                         std::make_shared<YContactsParser>());
    };
    builders.preference =
        [](const std::optional<std::filesystem::path>& databaseURL) -> std::shared_ptr<YContactsPreferenceContract> {
        if (!databaseURL) return std::make_shared<YContactsPreferenceService>();
        return std::make_shared<YContactsPreferenceService>(std::make_shared<YUserDefaults>(*databaseURL));
    };
    builders.dataManager = [](std::shared_ptr<YContactsDatabaseContract> database,
                              std::shared_ptr<YContactsNetworkContract> network,
                              std::shared_ptr<YContactsPreferenceContract> preference,
                              std::shared_ptr<YContactsFileServiceContract> fileService)
        -> std::shared_ptr<YContactsDataManagerContract> {
        return std::make_shared<YContactsDataManager>(std::move(database), std::move(network), std::move(preference),
                                                      std::move(fileService));
    };
    return builders;
}

}  // namespace ycontacts

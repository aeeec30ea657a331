#include "ycontacts_cli/Session.h"

#include <memory>

#include "ycontacts/YSqliteDependent/YContactsDatabaseSchema.h"
#include "ycontacts_cli/CliAuthenticator.h"

namespace ycontacts_cli {

void configureLogging(bool verbose) {
    ycontacts::Logger::shared().setConsoleOutput(verbose);
    ycontacts::Logger::shared().setLevel(verbose ? ycontacts::Logger::Level::info : ycontacts::Logger::Level::warning);
}

std::optional<std::string> Session::open(const SessionSettings& settings) {
    configureLogging(settings.verbose);
    ycontacts::YUserDefaults::setStandardStoragePath(settings.data.preferences());
    auto authenticator = std::make_shared<CliAuthenticator>(settings.server, settings.viaProxy, settings.tokens);
    service().config = ycontacts::YContactService::Config(authenticator, settings.data.database(),
                                                          settings.data.photos());
    syncHandler();
    if (!ycontacts::YContactsDatabaseSchema::createTables(ycontacts::YContactService::databaseIdentifier))
        return "cannot set up the contacts database " + settings.data.database().string();
    return std::nullopt;
}

ycontacts::YContactSyncHandlerContract& Session::syncHandler() { return *service().syncHandler(); }

}  // namespace ycontacts_cli

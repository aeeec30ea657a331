#include "ycontacts_cli/Session.h"

#include <memory>

#include "ycontacts_cli/CliAuthenticator.h"

namespace ycontacts_cli {

void configureLogging(bool verbose) {
    ycontacts::Logger::shared().setConsoleOutput(verbose);
    ycontacts::Logger::shared().setLevel(verbose ? ycontacts::Logger::Level::info : ycontacts::Logger::Level::warning);
}

std::optional<std::string> Session::open(const SessionSettings& settings) {
    configureLogging(settings.verbose);
    // A host's start-up: the tables, the config, then the first call.
    if (!ycontacts::YContactsDatabaseSchema::createTablesInFile(settings.data.database()))
        return "cannot set up the contacts database " + settings.data.database().string();
    auto authenticator = std::make_shared<CliAuthenticator>(settings.server, settings.viaProxy, settings.tokens);
    service().config = ycontacts::YContactService::Config(authenticator, settings.data.database(),
                                                          settings.data.photos());
    syncHandler();
    return std::nullopt;
}

ycontacts::YContactSyncHandlerContract& Session::syncHandler() { return *service().syncHandler(); }

}  // namespace ycontacts_cli

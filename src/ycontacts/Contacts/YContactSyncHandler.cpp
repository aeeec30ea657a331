#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/MarloComponents/UsecaseQueue.h"

namespace ycontacts {

using YContactSyncHandler = YContactService::YContactSyncHandler;

YContactSyncHandler::YContactSyncHandler(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YContactSyncHandler::start(const std::string& yuid, const std::optional<std::string>& yoid) {
    post("start", [yuid, yoid](YContactsDataManagerContract& manager) { manager.start(yuid, yoid); });
}

void YContactSyncHandler::runInitialFetch(const std::string& yuid, const std::optional<std::string>& yoid) {
    post("runInitialFetch",
         [yuid, yoid](YContactsDataManagerContract& manager) { manager.runInitialFetch(yuid, yoid); });
}

void YContactSyncHandler::syncContacts(const std::string& yuid, const std::optional<std::string>& yoid) {
    post("syncContacts", [yuid, yoid](YContactsDataManagerContract& manager) { manager.syncContacts(yuid, yoid); });
}

void YContactSyncHandler::resetAndStart(const std::string& yuid, const std::optional<std::string>& yoid) {
    post("resetAndStart", [yuid, yoid](YContactsDataManagerContract& manager) { manager.resetAndStart(yuid, yoid); });
}

std::optional<YContactSyncHandler::ContactCount> YContactSyncHandler::getContactCount(const std::string& yuid) {
    if (!dataManager) return std::nullopt;
    return dataManager->getContactCount(yuid);
}

std::optional<double> YContactSyncHandler::lastUpdatedTime(const std::string& yuid) {
    if (!dataManager) return std::nullopt;
    return dataManager->lastUpdatedTime(yuid);
}

bool YContactSyncHandler::isSyncInProgress(const std::string& yuid) {
    return dataManager && dataManager->isSyncInProgress(yuid);
}

void YContactSyncHandler::post(const char* name, Command command) {
    std::weak_ptr<YContactSyncHandler> weak = weak_from_this();
    if (weak.expired()) {
        Logger::shared().warning(std::string("Sync handler without a shared owner; dropped ") + name);
        return;
    }
    // Each command is its own task: two starts post two tasks, and the data manager decides what a
    // second one means.
    UsecaseQueue::queue().async([weak = std::move(weak), name, command = std::move(command)] {
        const auto self = weak.lock();
        if (!self) return;
        if (!self->dataManager) {
            Logger::shared().warning(std::string("No data manager; dropped the sync command ") + name);
            return;
        }
        command(*self->dataManager);
    });
}

}  // namespace ycontacts

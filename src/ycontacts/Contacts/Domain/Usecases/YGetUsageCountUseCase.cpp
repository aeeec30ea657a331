#include "ycontacts/Contacts/Domain/Usecases/YGetUsageCountUseCase.h"

#include <utility>

namespace ycontacts {

YGetUsageCountUseCase::YGetUsageCountUseCase(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetUsageCountUseCase::run(const YGetContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetUsageCountUseCase has no data manager; dropped the request of " +
                                 request.yuid);
        return;
    }
    dataManager->getUsageCount(
        request.yuid, [this, weak = weakSelf(), callback = std::move(callback)](
                          std::optional<std::map<std::string, std::string>> usageCountMap) {
            const auto alive = weak.lock();
            if (!alive) return;
            YGetUsageCountResponse response;
            response.usageCountMap = std::move(usageCountMap);
            invoke(callback, response);
        });
}

}  // namespace ycontacts

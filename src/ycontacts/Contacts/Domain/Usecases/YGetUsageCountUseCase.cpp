#include "ycontacts/Contacts/Domain/Usecases/YGetUsageCountUseCase.h"

#include <utility>

namespace ycontacts {

YGetUsageCountUseCase::YGetUsageCountUseCase(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetUsageCountUseCase::run(const YGetContactsRequest& request, Callback callback) {
    askAndDeliver(
        "YGetUsageCountUseCase", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) { manager.getUsageCount(request.yuid, std::move(reply)); },
        [](std::optional<std::map<std::string, std::string>> usageCountMap) {
            YGetUsageCountResponse response;
            response.usageCountMap = std::move(usageCountMap);
            return response;
        });
}

}  // namespace ycontacts

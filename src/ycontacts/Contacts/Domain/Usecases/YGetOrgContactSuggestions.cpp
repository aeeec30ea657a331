#include "ycontacts/Contacts/Domain/Usecases/YGetOrgContactSuggestions.h"

#include <utility>

namespace ycontacts {

YGetOrgContactSuggestions::YGetOrgContactSuggestions(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetOrgContactSuggestions::run(const YGetOrgContactSuggestionsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetOrgContactSuggestions has no data manager; dropped the request of " +
                                 request.yuid);
        return;
    }
    // The organisation suggestions always come from the store, so the request type is not passed on.
    dataManager->getOrgContactSuggestions(
        request.yuid, request.searchStr, request.from, request.limit, request.excludeGroups,
        request.shouldSearchNickname,
        [this, weak = weakSelf(), callback = std::move(callback)](std::optional<std::string> searchStr,
                                                                  std::optional<std::vector<YContact>> contacts) {
            const auto alive = weak.lock();
            if (!alive) return;
            YGetOrgContactSuggestionsResponse response(std::move(searchStr));
            response.contacts = std::move(contacts);
            invoke(callback, response);
        });
}

}  // namespace ycontacts

#include "ycontacts/Contacts/Domain/Usecases/YGetSuggestionContacts.h"

#include <utility>

namespace ycontacts {

YGetSuggestionContacts::YGetSuggestionContacts(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetSuggestionContacts::run(const YGetSuggestionContactsRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetSuggestionContacts has no data manager; dropped the request of " +
                                 request.yuid);
        return;
    }
    dataManager->getSuggestionContacts(
        request.yuid, request.yoid, request.searchStr, request.limit, request.isOrg, request.requestType,
        [this, weak = weakSelf(), callback = std::move(callback)](
            std::string searchStr, std::optional<std::vector<YSuggestionContact>> contacts) {
            const auto alive = weak.lock();
            if (!alive) return;
            // The answer names the text it matches: while the user types, it may be an earlier one.
            YGetSuggestionContactsResponse response(std::move(searchStr));
            response.contacts = std::move(contacts);
            invoke(callback, response);
        });
}

}  // namespace ycontacts

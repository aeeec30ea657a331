#include "ycontacts/Contacts/Domain/Usecases/YGetOrgContactSuggestions.h"

#include <utility>

namespace ycontacts {

YGetOrgContactSuggestions::YGetOrgContactSuggestions(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetOrgContactSuggestions::run(const YGetOrgContactSuggestionsRequest& request, Callback callback) {
    askAndDeliver(
        "YGetOrgContactSuggestions", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) { manager.getOrgContactSuggestions(request.query(), std::move(reply)); },
        [](std::optional<std::string> searchStr, std::optional<std::vector<YContact>> contacts) {
            YGetOrgContactSuggestionsResponse response(std::move(searchStr));
            response.contacts = std::move(contacts);
            return response;
        });
}

}  // namespace ycontacts

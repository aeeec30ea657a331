#include "ycontacts/Contacts/Domain/Usecases/YGetSuggestionContacts.h"

#include <utility>

namespace ycontacts {

YGetSuggestionContacts::YGetSuggestionContacts(std::shared_ptr<YContactsDataManagerContract> manager)
    : dataManager(std::move(manager)) {}

void YGetSuggestionContacts::run(const YGetSuggestionContactsRequest& request, Callback callback) {
    askAndDeliver(
        "YGetSuggestionContacts", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) { manager.getSuggestionContacts(request.query(), std::move(reply)); },
        [](std::string searchStr, std::optional<std::vector<YSuggestionContact>> contacts) {
            // The answer names the text it matches: while the user types, it may be an earlier one.
            YGetSuggestionContactsResponse response(std::move(searchStr));
            response.contacts = std::move(contacts);
            return response;
        });
}

}  // namespace ycontacts

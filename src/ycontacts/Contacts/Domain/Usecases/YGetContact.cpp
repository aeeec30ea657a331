#include "ycontacts/Contacts/Domain/Usecases/YGetContact.h"

#include <utility>

namespace ycontacts {

YGetContact::YGetContact(std::shared_ptr<YContactsDataManagerContract> manager) : dataManager(std::move(manager)) {}

void YGetContact::run(const YGetContactRequest& request, Callback callback) {
    askAndDeliver(
        "YGetContact", dataManager, request, std::move(callback),
        [&](auto& manager, auto reply) { manager.getContact(request, std::move(reply)); },
        [](std::optional<YContact> contact) {
            // `error` stays empty: an absent contact is the only failure signal.
            YGetContactResponse response;
            response.contact = std::move(contact);
            return response;
        });
}

}  // namespace ycontacts

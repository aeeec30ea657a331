#include "ycontacts/Contacts/Domain/Usecases/YGetContact.h"

#include <utility>

namespace ycontacts {

YGetContact::YGetContact(std::shared_ptr<YContactsDataManagerContract> manager) : dataManager(std::move(manager)) {}

void YGetContact::run(const YGetContactRequest& request, Callback callback) {
    if (!dataManager) {
        Logger::shared().warning("YGetContact has no data manager; dropped the request of " + request.yuid);
        return;
    }
    dataManager->getContact(request.yuid, request.contactId, request.contactYuid, request.emailId,
                            request.preferPersonalInfo,
                            [this, weak = weakSelf(), callback = std::move(callback)](std::optional<YContact> contact) {
                                const auto alive = weak.lock();
                                if (!alive) return;
                                // `error` stays empty: an absent contact is the only failure signal.
                                YGetContactResponse response;
                                response.contact = std::move(contact);
                                invoke(callback, response);
                            });
}

}  // namespace ycontacts

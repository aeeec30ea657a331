#pragma once
// YGetContacts: lists or searches a user's contacts.

#include <memory>
#include <utility>

#include "ycontacts/Contacts/Domain/Usecases/YContactsQueryUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetContacts : public YContactsQueryUsecase {
public:
    explicit YGetContacts(std::shared_ptr<YContactsDataManagerContract> dataManager)
        : YContactsQueryUsecase(std::move(dataManager), "YGetContacts", &YContactsDataManagerContract::getContacts) {}
};

}  // namespace ycontacts

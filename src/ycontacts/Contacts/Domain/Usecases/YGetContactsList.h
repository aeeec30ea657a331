#pragma once
// YGetContactsList: lists a user's contacts through the data manager's list query.

#include <memory>
#include <utility>

#include "ycontacts/Contacts/Domain/Usecases/YContactsQueryUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Build with std::make_shared: the base holds the use case weakly while a request is queued or pending.
class YCONTACTS_EXPORT YGetContactsList : public YContactsQueryUsecase {
public:
    explicit YGetContactsList(std::shared_ptr<YContactsDataManagerContract> dataManager)
        : YContactsQueryUsecase(std::move(dataManager), "YGetContactsList",
                                &YContactsDataManagerContract::getContactsList) {}
};

}  // namespace ycontacts

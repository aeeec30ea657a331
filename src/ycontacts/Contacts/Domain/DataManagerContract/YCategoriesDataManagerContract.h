#pragma once
// YCategoriesDataManagerContract: what the category use cases ask of the categories data manager.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YCategoryResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/RequestType.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YCategoriesDataManagerContract {
public:
    using CategoriesCallback = std::function<void(std::optional<YCategoryResponse> response)>;
    using ContactsCallback = std::function<void(std::optional<std::vector<YContact>> contacts)>;

    virtual ~YCategoriesDataManagerContract() = default;

    virtual void fetchCategories(const std::string& yuid, RequestType requestType, CategoriesCallback callback) = 0;
    virtual void fetchContactsInCategory(const std::string& yuid, const std::string& categoryId,
                                         RequestType requestType, ContactsCallback callback) = 0;
};

}  // namespace ycontacts

#pragma once
// YContactsQueryUsecase: the one body of YGetContacts and YGetContactsList, which differ only in the query they ask.

#include <memory>

#include "ycontacts/Contacts/Domain/DataManagerContract/YContactsDataManagerContract.h"
#include "ycontacts/Contacts/Domain/Requests/YGetContactsRequest.h"
#include "ycontacts/Contacts/Domain/Responses/YGetContactsResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

// Passes the request's query to one list query of the data manager and delivers each answer it gives,
// in order, as long as the use case lives. Build a subclass with std::make_shared.
class YCONTACTS_EXPORT YContactsQueryUsecase : public YUsecase<YGetContactsRequest, YGetContactsResponse> {
public:
    const std::shared_ptr<YContactsDataManagerContract> dataManager;

protected:
    // getContacts and getContactsList share this signature.
    using Query = void (YContactsDataManagerContract::*)(const YContactsQuery& query,
                                                         YContactsDataManagerContract::ContactsCallback callback);

    // `name` opens the warning logged when there is no data manager.
    YContactsQueryUsecase(std::shared_ptr<YContactsDataManagerContract> dataManager, const char* name, Query query);

    void run(const YGetContactsRequest& request, Callback callback) final;

private:
    const char* const name_;
    const Query query_;
};

}  // namespace ycontacts

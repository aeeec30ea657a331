#pragma once
// YContactsNetworkContract: the contacts server calls the data manager makes (pages, search, usage counts).

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YContactNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactUsageCountNetworkResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactsNetworkContract {
public:
    using ContactsPageCallback = std::function<void(std::optional<YContactNetworkResponse> response)>;
    using SearchCallback = std::function<void(std::optional<std::vector<YContact>> contacts)>;
    using UsageCountCallback = std::function<void(std::optional<YContactUsageCountNetworkResponse> response)>;

    virtual ~YContactsNetworkContract() = default;

    virtual void getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                             int startIndex, int limit, std::optional<double> updatedTime,
                             ContactsPageCallback callback) = 0;
    virtual void searchContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                std::optional<int> limit, const std::optional<std::string>& searchText,
                                SearchCallback callback) = 0;
    virtual void getContactUsageCount(const std::string& yuid, UsageCountCallback callback) = 0;
    virtual void cancelTasks(const std::string& yuid) = 0;
};

}  // namespace ycontacts

#pragma once
// YContactsNetworkContract: the contacts server calls the data manager makes (pages, search, usage counts, photos).

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YContactImageNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactNetworkResponse.h"
#include "ycontacts/Contacts/Data/Network/YContactUsageCountNetworkResponse.h"
#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YContactType.h"
#include "ycontacts/Platform/MarloComponents/YActivityMetaData.h"
#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT YContactsNetworkContract {
public:
    using ContactsPageCallback = std::function<void(std::optional<YContactNetworkResponse> response)>;
    using SearchCallback = std::function<void(std::optional<std::vector<YContact>> contacts)>;
    using UsageCountCallback = std::function<void(std::optional<YContactUsageCountNetworkResponse> response)>;
    // Every caller waiting for one photo receives the same response object.
    using ImageCallback = std::function<void(std::shared_ptr<const YContactImageNetworkResponse> response)>;

    virtual ~YContactsNetworkContract() = default;

    virtual void getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                             int startIndex, int limit, std::optional<double> updatedTime,
                             ContactsPageCallback callback) = 0;
    virtual void searchContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                                std::optional<int> limit, const std::optional<std::string>& searchText,
                                SearchCallback callback) = 0;
    virtual void getContactUsageCount(const std::string& yuid, UsageCountCallback callback) = 0;
    virtual void cancelTasks(const std::string& yuid) = 0;
    // A user contact's or group's photo by its own user id, revalidated against `lastModifiedDate` (the date
    // of the cached copy) when one is given.
    virtual void getContactImage(const std::string& yuid, const std::string& contactYuid, bool isThumbnail,
                                 std::optional<std::chrono::system_clock::time_point> lastModifiedDate,
                                 const std::optional<YActivityMetaData>& metaData, YContactType contactType,
                                 ImageCallback callback) = 0;
    // A contact's photo by its contact id; never revalidated, so a photo there comes whole every time.
    virtual void getContactImage(const std::string& yuid, const std::string& contactId, bool isOrg, bool isThumbnail,
                                 const std::optional<YActivityMetaData>& metaData, ImageCallback callback) = 0;
};

}  // namespace ycontacts

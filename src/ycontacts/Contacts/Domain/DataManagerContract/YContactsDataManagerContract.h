#pragma once
// YContactsDataManagerContract: what the use cases and the facade ask of the contacts data manager.

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Domain/Entities/YContact.h"
#include "ycontacts/Contacts/Domain/Entities/YContactType.h"
#include "ycontacts/Contacts/Domain/Entities/YSuggestionContact.h"
#include "ycontacts/Contacts/Domain/RequestType.h"
#include "ycontacts/Platform/MarloComponents/YActivityMetaData.h"

namespace ycontacts {

class YContactsDataManagerContract {
public:
    using ContactsCallback = std::function<void(std::optional<std::vector<YContact>> contacts)>;
    using ContactCallback = std::function<void(std::optional<YContact> contact)>;
    using SuggestionsCallback =
        std::function<void(std::string searchStr, std::optional<std::vector<YSuggestionContact>> contacts)>;
    using OrgSuggestionsCallback =
        std::function<void(std::optional<std::string> searchStr, std::optional<std::vector<YContact>> contacts)>;
    using ImageHandler = std::function<void(std::optional<std::vector<std::uint8_t>> data,
                                            std::optional<std::string> filePath,
                                            std::optional<std::string> contactId)>;
    using UsageCountCallback = std::function<void(std::optional<std::map<std::string, std::string>> usageCountMap)>;
    // (organisation count, personal count)
    using ContactCount = std::pair<std::int64_t, std::int64_t>;

    virtual ~YContactsDataManagerContract() = default;

    virtual void start(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual void runInitialFetch(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual void syncContacts(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual std::optional<ContactCount> getContactCount(const std::string& yuids) = 0;
    virtual void resetAndStart(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
    virtual std::optional<double> lastUpdatedTime(const std::string& yuid) = 0;
    virtual bool isSyncInProgress(const std::string& yuid) = 0;
    virtual void getContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                             const std::optional<std::string>& searchStr, std::optional<int> from,
                             std::optional<int> limit, std::optional<bool> isOrg, RequestType requestType,
                             ContactsCallback callback) = 0;
    virtual void getContactsList(const std::string& yuid, const std::optional<std::string>& yoid,
                                 const std::optional<std::string>& searchStr, std::optional<int> from,
                                 std::optional<int> limit, std::optional<bool> isOrg, RequestType requestType,
                                 ContactsCallback callback) = 0;
    virtual void getContactsFromIds(const std::string& yuid, const std::optional<std::vector<std::string>>& contactIds,
                                    const std::optional<std::vector<std::string>>& emailIds,
                                    const std::optional<std::vector<std::string>>& contactYuids,
                                    std::optional<bool> isOrg, RequestType requestType, ContactsCallback callback) = 0;
    virtual void getContact(const std::string& yuid, const std::optional<std::string>& contactId,
                            const std::optional<std::string>& contactYuid, const std::optional<std::string>& emailId,
                            bool preferPersonalInfo, ContactCallback callback) = 0;
    virtual void getContactImage(const std::string& yuid, const std::optional<std::string>& contactYuid,
                                 const std::optional<std::string>& emailId, const std::optional<std::string>& contactId,
                                 bool isThumbnail, const std::optional<YActivityMetaData>& metaData,
                                 YContactType contactType, ImageHandler handler) = 0;
    virtual void getSuggestionContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                       const std::string& searchStr, int limit, std::optional<bool> isOrg,
                                       RequestType requestType, SuggestionsCallback callback) = 0;
    virtual void getOrgContactSuggestions(const std::string& yuid, const std::optional<std::string>& searchStr,
                                          std::optional<int> from, int limit, bool excludeGroups,
                                          bool shouldSearchNickname, OrgSuggestionsCallback callback) = 0;
    virtual void getUsageCount(const std::string& yuid, UsageCountCallback callback) = 0;
    virtual void removeAllData(const std::string& yuid) = 0;
    virtual bool wasInitialDownloadCompleted(const std::string& yuid, const std::optional<std::string>& yoid) = 0;
};

}  // namespace ycontacts

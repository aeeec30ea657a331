#pragma once
// YContactsURLConstructor: the one place where the contacts server's paths and query keys are spelled.

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Data/Network/YContactsURLConstructorContract.h"

namespace ycontacts {

class YContactsURLConstructor : public YContactsURLConstructorContract {
public:
    // Where add and delete go when the host is neither direct nor a proxy.
    static constexpr std::string_view contactsServerAddress = "https://contacts.ycontacts.invalid";

    YContactsURLConstructor() = default;

    std::optional<YContactsURLParameters> getContactsURL(const YContactsHost& host, const std::string& yuid,
                                                         const std::optional<std::string>& yoid, bool isOrg,
                                                         int startIndex, std::optional<int> limit,
                                                         std::optional<double> time,
                                                         std::optional<bool> showDeleted,
                                                         const std::optional<std::string>& searchText) const override;
    std::optional<YContactsURLParameters> getContactImageURL(const YContactsHost& host, const std::string& yuid,
                                                             const std::string& contactYuid, bool isThumbnail,
                                                             YContactType contactType) const override;
    std::optional<YContactsURLParameters> getContactImageURL(const YContactsHost& host, const std::string& yuid,
                                                             const std::string& contactId, bool isOrg,
                                                             bool isThumbnail) const override;
    std::string getDeleteContactsURL(const YContactsHost& host, const std::string& contactId,
                                     bool isOrg) const override;
    std::string getUpdateContactsURL(const YContactsHost& host, bool isOrg, const std::string& source,
                                     const std::string& format) const override;
    std::optional<YContactsURLParameters> getContactsUsageCountURL(const std::string& yuid,
                                                                   const YContactsHost& host) const override;

    // Parameters for a direct host: snake_case keys and an include list.
    static std::map<std::string, std::string> getIDCContactParam(int startIndex, std::optional<int> limit,
                                                                 std::optional<double> time,
                                                                 std::optional<bool> showDeleted,
                                                                 const std::optional<std::string>& searchText);
    // Parameters for a proxy host: camelCase keys and an explicit showDeleted.
    static std::map<std::string, std::string> getProxyContactParam(const std::string& yid, int startIndex,
                                                                   std::optional<int> limit,
                                                                   std::optional<double> time,
                                                                   std::optional<bool> showDeleted,
                                                                   const std::optional<std::string>& searchText);

private:
    // `url` with its query replaced by `items`, percent-encoded, in the given order.
    static std::string withQueryItems(const std::string& url,
                                      const std::vector<std::pair<std::string, std::string>>& items);
};

}  // namespace ycontacts

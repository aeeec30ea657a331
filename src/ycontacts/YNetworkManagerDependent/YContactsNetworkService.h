#pragma once
// YContactsNetworkService: the contacts server's read calls (a page of contacts, search, usage counts).

#include <memory>
#include <optional>
#include <string>

#include "ycontacts/Contacts/Data/Contracts/YContactsNetworkContract.h"
#include "ycontacts/YNetworkManagerDependent/YNetworkService.h"

namespace ycontacts {

class YContactsNetworkService : public YNetworkService,
                                public YContactsNetworkContract,
                                public std::enable_shared_from_this<YContactsNetworkService> {
public:
    // Fetch and search share one priority; usage counts can wait behind them.
    static constexpr YRequestPriority contactsPriority = YRequestPriority::high;
    static constexpr YRequestPriority usageCountPriority = YRequestPriority::low;

    // Uses the process-wide HTTP client. A null URL constructor makes every call fail with urlError.
    YContactsNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                            std::shared_ptr<YContactsURLConstructorContract> urlConstructor,
                            std::shared_ptr<YContactsParserContract> parser);
    YContactsNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                            std::shared_ptr<YContactsURLConstructorContract> urlConstructor,
                            std::shared_ptr<YContactsParserContract> parser,
                            std::weak_ptr<YNetworkManager> networkManager);

    // The process-wide instance: built from the first call's arguments; later arguments are ignored.
    static std::shared_ptr<YContactsNetworkService> shared(
        std::shared_ptr<YContactsAuthenticationContract> authorization,
        std::shared_ptr<YContactsURLConstructorContract> urlConstructor,
        std::shared_ptr<YContactsParserContract> parser);

    // Always calls back: the parsed page (absent when the reply could not be read), or a response carrying
    // authorizationError (no header, no host) or urlError (no address for this host). Full and incremental
    // pages alike ask for tombstones, so that a deletion during a download shifts no page.
    void getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg, int startIndex,
                     int limit, std::optional<double> updatedTime, ContactsPageCallback callback) override;
    // Page 1 of a server-side search. Calls back only when a non-empty body arrived; an unknown user,
    // a missing header or address end the call silently.
    void searchContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                        std::optional<int> limit, const std::optional<std::string>& searchText,
                        SearchCallback callback) override;
    // Calls back with the parsed counts, or with authorizationError / urlError as getContacts does.
    void getContactUsageCount(const std::string& yuid, UsageCountCallback callback) override;
    void cancelTasks(const std::string& yuid) override;

private:
    const std::shared_ptr<YContactsURLConstructorContract> urlConstructor;
};

}  // namespace ycontacts

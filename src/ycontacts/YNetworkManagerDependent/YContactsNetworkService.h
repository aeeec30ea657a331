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

    // Always calls back, with the parsed page or with a response that carries only its error:
    // authorizationError (no header, no host, or the server answered 401 or 403), urlError (no address for
    // this host), networkFailure (no answer: the transport failed or the request was cancelled), parserError
    // (the body is no contact page) or unknownError (any other error status). A 404 is read like a 200, so
    // the not-found envelope arrives as an empty, final page.
    void getContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg, int startIndex,
                     int limit, std::optional<double> updatedTime, ContactsPageCallback callback) override;
    // Page 1 of a server-side search. Calls back only when a non-empty body arrived; an unknown user,
    // a missing header or address end the call silently.
    void searchContacts(const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
                        std::optional<int> limit, const std::optional<std::string>& searchText,
                        SearchCallback callback) override;
    // Calls back with the parsed counts, or with a response carrying its error as getContacts does.
    void getContactUsageCount(const std::string& yuid, UsageCountCallback callback) override;
    void cancelTasks(const std::string& yuid) override;

private:
    const std::shared_ptr<YContactsURLConstructorContract> urlConstructor;
};

}  // namespace ycontacts

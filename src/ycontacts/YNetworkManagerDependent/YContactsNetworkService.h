#pragma once
// YContactsNetworkService: the contacts server's read calls (a page of contacts, search, usage counts, photos).

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Contacts/Data/Contracts/YContactsNetworkContract.h"
#include "ycontacts/Platform/MarloComponents/YMutex.h"
#include "ycontacts/YNetworkManagerDependent/YNetworkService.h"

namespace ycontacts {

class YContactsNetworkService : public YNetworkService,
                                public YContactsNetworkContract,
                                public std::enable_shared_from_this<YContactsNetworkService> {
public:
    // Fetch and search share one priority; usage counts can wait behind them.
    static constexpr YRequestPriority contactsPriority = YRequestPriority::high;
    static constexpr YRequestPriority usageCountPriority = YRequestPriority::low;
    static constexpr YRequestPriority photoPriority = YRequestPriority::normal;

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

    // Photos. Calls for the same user, photo and size made while a request for it is in flight send nothing
    // of their own: when that request ends, every waiting callback runs in call order with one shared
    // response. 200 gives newImage with the body, 204 and 403 noContent (no photo this user may see), 304
    // notModified; serverDate is read from "Date", else (except for 304) "Last-Modified". Any other status
    // gives unknownError, a transport failure networkFailure when it is -1009 (no connection) and
    // unknownError otherwise, a missing header or host authorizationError, a missing URL urlError.
    // If the service is destroyed before the request ends, the waiting callbacks are dropped.
    void getContactImage(const std::string& yuid, const std::string& contactYuid, bool isThumbnail,
                         std::optional<std::chrono::system_clock::time_point> lastModifiedDate,
                         const std::optional<YActivityMetaData>& metaData, YContactType contactType,
                         ImageCallback callback) override;
    void getContactImage(const std::string& yuid, const std::string& contactId, bool isOrg, bool isThumbnail,
                         const std::optional<YActivityMetaData>& metaData, ImageCallback callback) override;

private:
    using ImageURL =
        std::function<std::optional<YContactsURLParameters>(YContactsURLConstructorContract&, const YContactsHost&)>;
    // The user and the download key (the photo's identifier, then "_thumb" or "_normal"). The user is part of
    // it so that one user's caller is never answered with what the server let another user see.
    using DownloadKey = std::pair<std::string, std::string>;

    void downloadImage(const std::string& yuid, const std::string& key, ImageURL url,
                       std::map<std::string, std::string> headers, const std::optional<YActivityMetaData>& metaData,
                       ImageCallback callback);
    // Queues the callback for the key; true when no request for it is in flight, so the caller starts one.
    // One locked step: two first callers cannot both start a request.
    bool addHandler(ImageCallback callback, const DownloadKey& key) Y_EXCLUDES(imageMutex_);
    // Ends the key's download: takes its callbacks out and runs them, outside the lock, in call order.
    void invokeAndRemoveHandlers(const DownloadKey& key,
                                 const std::shared_ptr<const YContactImageNetworkResponse>& response)
        Y_EXCLUDES(imageMutex_);

    const std::shared_ptr<YContactsURLConstructorContract> urlConstructor;
    YMutex imageMutex_;
    // A key has an entry exactly while its request is in flight.
    std::map<DownloadKey, std::vector<ImageCallback>> handlersWithType Y_GUARDED_BY(imageMutex_);
};

}  // namespace ycontacts

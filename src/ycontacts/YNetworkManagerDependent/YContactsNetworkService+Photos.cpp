// Photo downloads: one request per user, photo and size in flight, revalidated with If-Modified-Since.

#include "ycontacts/Contacts/Data/Network/HttpHeaderDate.h"
#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

namespace ycontacts {

namespace {

using Response = YContactImageNetworkResponse;

std::optional<std::chrono::system_clock::time_point> headerDate(const YHTTPURLResponse& response,
                                                                std::string_view name) {
    const auto value = response.header(name);
    return value ? httpHeaderDate.parse(*value) : std::nullopt;
}

Response imageResponse(std::optional<std::vector<std::uint8_t>> data, const std::optional<YHTTPURLResponse>& http,
                       const std::optional<YNetworkError>& error) {
    if (error || !http) {
        const bool offline = error && error->code == YNetworkError::notConnectedToInternet;
        return Response::getResponse(offline ? YContactError::networkFailure : YContactError::unknownError);
    }
    Response response;
    switch (http->statusCode) {
        case 200:
            response.imageStatus = YContactImageStatus::newImage;
            response.imageData = data ? std::move(*data) : std::vector<std::uint8_t>();
            break;
        case 204:
        case 403:  // The photo is not one this user may see: the same as having none.
            response.imageStatus = YContactImageStatus::noContent;
            break;
        case 304:
            response.imageStatus = YContactImageStatus::notModified;
            response.serverDate = headerDate(*http, "Date");
            return response;
        default:
            return Response::getResponse(YContactError::unknownError);
    }
    response.serverDate = headerDate(*http, "Date");
    if (!response.serverDate) response.serverDate = headerDate(*http, "Last-Modified");
    return response;
}

std::string downloadKey(const std::string& identifier, bool isThumbnail) {
    return identifier + (isThumbnail ? "_thumb" : "_normal");
}

}  // namespace

void YContactsNetworkService::getContactImage(const std::string& yuid, const std::string& contactYuid, bool isThumbnail,
                                              std::optional<std::chrono::system_clock::time_point> lastModifiedDate,
                                              const std::optional<YActivityMetaData>& metaData,
                                              YContactType contactType, ImageCallback callback) {
    std::map<std::string, std::string> headers;
    if (lastModifiedDate) headers["If-Modified-Since"] = httpHeaderDate.format(*lastModifiedDate);
    downloadImage(
        yuid, downloadKey(contactYuid, isThumbnail),
        [yuid, contactYuid, isThumbnail, contactType](YContactsURLConstructorContract& urls,
                                                      const YContactsHost& host) {
            return urls.getContactImageURL(host, yuid, contactYuid, isThumbnail, contactType);
        },
        std::move(headers), metaData, std::move(callback));
}

void YContactsNetworkService::getContactImage(const std::string& yuid, const std::string& contactId, bool isOrg,
                                              bool isThumbnail, const std::optional<YActivityMetaData>& metaData,
                                              ImageCallback callback) {
    downloadImage(
        yuid, downloadKey(contactId, isThumbnail),
        [yuid, contactId, isOrg, isThumbnail](YContactsURLConstructorContract& urls, const YContactsHost& host) {
            return urls.getContactImageURL(host, yuid, contactId, isOrg, isThumbnail);
        },
        {}, metaData, std::move(callback));
}

void YContactsNetworkService::downloadImage(const std::string& yuid, const std::string& key, ImageURL url,
                                            std::map<std::string, std::string> headers,
                                            const std::optional<YActivityMetaData>& metaData, ImageCallback callback) {
    const DownloadKey downloadKey{yuid, key};
    if (!addHandler(std::move(callback), downloadKey)) return;
    std::weak_ptr<YContactsNetworkService> weakSelf = weak_from_this();
    // Every way the download ends comes through here, so the key is always cleared for the next request.
    auto finish = [weakSelf, downloadKey](Response response) {
        if (auto self = weakSelf.lock())
            self->invokeAndRemoveHandlers(downloadKey, std::make_shared<const Response>(std::move(response)));
    };
    if (!authorization) return finish(Response::getResponse(YContactError::authorizationError));
    authorization->getAuthorizationHeader(yuid, [weakSelf, yuid, url = std::move(url), headers = std::move(headers),
                                                 metaData, finish](std::optional<std::string> header,
                                                                   std::optional<std::string>) {
        auto self = weakSelf.lock();
        if (!self) return;
        if (!header) return finish(Response::getResponse(YContactError::authorizationError));
        const auto host = self->authorization->getContactsHost(yuid);
        if (!host) return finish(Response::getResponse(YContactError::authorizationError));
        const auto request = self->urlConstructor ? url(*self->urlConstructor, *host) : std::nullopt;
        if (!request) return finish(Response::getResponse(YContactError::urlError));
        const bool sent = self->sendGet(
            weakSelf, yuid, *request, *header, photoPriority,
            [finish](std::optional<std::vector<std::uint8_t>> data, std::optional<YHTTPURLResponse> response,
                     std::optional<YNetworkError> error) { finish(imageResponse(std::move(data), response, error)); },
            headers, metaData);
        if (!sent) finish(Response::getResponse(YContactError::networkFailure));
    });
}

bool YContactsNetworkService::addHandler(ImageCallback callback, const DownloadKey& key) {
    YMutexLock lock(imageMutex_);
    auto [entry, first] = handlersWithType.try_emplace(key);
    entry->second.push_back(std::move(callback));
    return first;
}

void YContactsNetworkService::invokeAndRemoveHandlers(const DownloadKey& key,
                                                      const std::shared_ptr<const Response>& response) {
    std::vector<ImageCallback> waiting;
    {
        YMutexLock lock(imageMutex_);
        const auto entry = handlersWithType.find(key);
        if (entry == handlersWithType.end()) return;
        waiting = std::move(entry->second);
        handlersWithType.erase(entry);
    }
    for (const auto& callback : waiting)
        if (callback) callback(response);
}

}  // namespace ycontacts

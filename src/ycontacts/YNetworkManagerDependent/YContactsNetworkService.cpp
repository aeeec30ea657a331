#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

#include <mutex>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace {

// Why a finished request has no body worth reading: the transport failed (a cancellation included), or the
// server refused the user. Absent for a 2xx answer and for a 404, whose body may be the not-found envelope
// that stands for an empty, final page.
std::optional<YContactError> failureOf(const std::optional<YHTTPURLResponse>& response,
                                       const std::optional<YNetworkError>& error) {
    if (error) return YContactError::networkFailure;
    if (!response) return YContactError::unknownError;
    const int status = response->statusCode;
    if (status == 401 || status == 403) return YContactError::authorizationError;
    if ((status >= 200 && status < 300) || status == 404) return std::nullopt;
    return YContactError::unknownError;
}

void logFailure(const std::string& call, const std::string& yuid, YContactError failure,
                const std::optional<YHTTPURLResponse>& response, const std::optional<YNetworkError>& error) {
    std::string detail;
    if (error) detail = " transport code: " + std::to_string(error->code);
    if (response) detail = " status: " + std::to_string(response->statusCode);
    Logger::shared().warning(call + " failed yuid: " + yuid + " error: " + std::string(toRawValue(failure)) +
                             detail);
}

// Hands a finished request's outcome to `callback`: what `parse` read from the body, or a response that
// carries only the failure (parserError when the body could not be read).
template <class Response, class Parse, class Callback>
void deliver(const std::string& call, const std::string& yuid, const std::optional<YHTTPURLResponse>& response,
             const std::optional<YNetworkError>& error, Parse parse, const Callback& callback) {
    auto failure = failureOf(response, error);
    std::optional<Response> parsed;
    if (!failure) {
        parsed = parse();
        if (!parsed) failure = YContactError::parserError;
    }
    if (failure) {
        logFailure(call, yuid, *failure, response, error);
        return callback(Response::getResponse(*failure));
    }
    callback(std::move(parsed));
}

}  // namespace

YContactsNetworkService::YContactsNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                                                 std::shared_ptr<YContactsURLConstructorContract> urlConstructor,
                                                 std::shared_ptr<YContactsParserContract> parser)
    : YNetworkService(std::move(authorization), std::move(parser)), urlConstructor(std::move(urlConstructor)) {}

YContactsNetworkService::YContactsNetworkService(std::shared_ptr<YContactsAuthenticationContract> authorization,
                                                 std::shared_ptr<YContactsURLConstructorContract> urlConstructor,
                                                 std::shared_ptr<YContactsParserContract> parser,
                                                 std::weak_ptr<YNetworkManager> networkManager)
    : YNetworkService(std::move(authorization), std::move(parser), std::move(networkManager)),
      urlConstructor(std::move(urlConstructor)) {}

std::shared_ptr<YContactsNetworkService> YContactsNetworkService::shared(
    std::shared_ptr<YContactsAuthenticationContract> authorization,
    std::shared_ptr<YContactsURLConstructorContract> urlConstructor,
    std::shared_ptr<YContactsParserContract> parser) {
    static std::once_flag once;
    static std::shared_ptr<YContactsNetworkService> instance;
    std::call_once(once, [&] {
        instance = std::make_shared<YContactsNetworkService>(std::move(authorization), std::move(urlConstructor),
                                                             std::move(parser));
    });
    return instance;
}

void YContactsNetworkService::getContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                          bool isOrg, int startIndex, int limit, std::optional<double> updatedTime,
                                          ContactsPageCallback callback) {
    auto fail = [callback](YContactError error) { callback(YContactNetworkResponse::getResponse(error)); };
    if (!authorization) return fail(YContactError::authorizationError);
    std::weak_ptr<YContactsNetworkService> weakSelf = weak_from_this();
    authorization->getAuthorizationHeader(
        yuid, [weakSelf, yuid, yoid, isOrg, startIndex, limit, updatedTime, callback, fail](
                  std::optional<std::string> header, std::optional<std::string>) {
            auto self = weakSelf.lock();
            if (!header || !self) return fail(YContactError::authorizationError);
            const auto host = self->authorization->getContactsHost(yuid);
            if (!host) return fail(YContactError::authorizationError);
            // An incremental download also asks for the contacts deleted since.
            const auto showDeleted = updatedTime ? std::optional<bool>(true) : std::nullopt;
            const auto request = self->urlConstructor
                                     ? self->urlConstructor->getContactsURL(*host, yuid, yoid, isOrg, startIndex,
                                                                            limit, updatedTime, showDeleted,
                                                                            std::nullopt)
                                     : std::nullopt;
            if (!request) return fail(YContactError::urlError);
            const bool sent = self->sendGet(
                weakSelf, yuid, *request, *header, contactsPriority,
                [parser = self->parser, host = *host, yuid, isOrg, updatedTime, callback](
                    std::optional<std::vector<std::uint8_t>> data, std::optional<YHTTPURLResponse> response,
                    std::optional<YNetworkError> error) {
                    deliver<YContactNetworkResponse>(
                        "Contacts page", yuid, response, error,
                        [&] {
                            return parser ? parser->parseSyncContacts(host, data, isOrg, updatedTime)
                                          : std::nullopt;
                        },
                        callback);
                });
            if (!sent) fail(YContactError::networkFailure);
        });
}

void YContactsNetworkService::searchContacts(const std::string& yuid, const std::optional<std::string>& yoid,
                                             bool isOrg, std::optional<int> limit,
                                             const std::optional<std::string>& searchText, SearchCallback callback) {
    if (!authorization) return;
    std::weak_ptr<YContactsNetworkService> weakSelf = weak_from_this();
    authorization->getAuthorizationHeader(
        yuid, [weakSelf, yuid, yoid, isOrg, limit, searchText, callback](std::optional<std::string> header,
                                                                          std::optional<std::string>) {
            auto self = weakSelf.lock();
            if (!header || !self || !self->urlConstructor) return;
            const auto host = self->authorization->getContactsHost(yuid);
            if (!host) return;
            const auto request = self->urlConstructor->getContactsURL(*host, yuid, yoid, isOrg, 1, limit,
                                                                      std::nullopt, std::nullopt, searchText);
            if (!request) return;
            self->sendGet(weakSelf, yuid, *request, *header, contactsPriority,
                          [parser = self->parser, host = *host, isOrg, callback](
                              std::optional<std::vector<std::uint8_t>> data, std::optional<YHTTPURLResponse>,
                              std::optional<YNetworkError>) {
                              if (!data || data->empty() || !parser) return;
                              callback(parser->parseContacts(host, data, isOrg));
                          });
        });
}

void YContactsNetworkService::getContactUsageCount(const std::string& yuid, UsageCountCallback callback) {
    auto fail = [callback](YContactError error) { callback(YContactUsageCountNetworkResponse::getResponse(error)); };
    if (!authorization) return fail(YContactError::authorizationError);
    std::weak_ptr<YContactsNetworkService> weakSelf = weak_from_this();
    authorization->getAuthorizationHeader(
        yuid, [weakSelf, yuid, callback, fail](std::optional<std::string> header, std::optional<std::string>) {
            auto self = weakSelf.lock();
            if (!header || !self) return fail(YContactError::authorizationError);
            const auto host = self->authorization->getContactsHost(yuid);
            if (!host) return fail(YContactError::authorizationError);
            const auto request =
                self->urlConstructor ? self->urlConstructor->getContactsUsageCountURL(yuid, *host) : std::nullopt;
            if (!request) return fail(YContactError::urlError);
            const bool sent = self->sendGet(
                weakSelf, yuid, *request, *header, usageCountPriority,
                [parser = self->parser, yuid, callback](std::optional<std::vector<std::uint8_t>> data,
                                                        std::optional<YHTTPURLResponse> response,
                                                        std::optional<YNetworkError> error) {
                    deliver<YContactUsageCountNetworkResponse>(
                        "Usage counts", yuid, response, error,
                        [&] { return parser ? parser->parseContactUsageCount(data) : std::nullopt; }, callback);
                });
            if (!sent) fail(YContactError::networkFailure);
        });
}

void YContactsNetworkService::cancelTasks(const std::string& yuid) { YNetworkService::cancelTasks(yuid); }

}  // namespace ycontacts

#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

#include <mutex>


namespace ycontacts {

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
            // Every page asks for tombstones: an incremental download needs the contacts deleted since, and
            // in a full listing a contact deleted while the download runs keeps its place as a tombstone
            // instead of moving every later contact up into a page already read.
            const std::optional<bool> showDeleted = true;
            const auto request = self->urlConstructor
                                     ? self->urlConstructor->getContactsURL(*host, yuid, yoid, isOrg, startIndex,
                                                                            limit, updatedTime, showDeleted,
                                                                            std::nullopt)
                                     : std::nullopt;
            if (!request) return fail(YContactError::urlError);
            self->sendGet(weakSelf, yuid, *request, *header, contactsPriority,
                          [parser = self->parser, host = *host, isOrg, updatedTime, callback](
                              std::optional<std::vector<std::uint8_t>> data, std::optional<YHTTPURLResponse>,
                              std::optional<YNetworkError>) {
                              callback(parser ? parser->parseSyncContacts(host, data, isOrg, updatedTime)
                                              : std::nullopt);
                          });
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
            self->sendGet(weakSelf, yuid, *request, *header, usageCountPriority,
                          [parser = self->parser, callback](std::optional<std::vector<std::uint8_t>> data,
                                                            std::optional<YHTTPURLResponse>,
                                                            std::optional<YNetworkError>) {
                              callback(parser ? parser->parseContactUsageCount(data) : std::nullopt);
                          });
        });
}

void YContactsNetworkService::cancelTasks(const std::string& yuid) { YNetworkService::cancelTasks(yuid); }

}  // namespace ycontacts

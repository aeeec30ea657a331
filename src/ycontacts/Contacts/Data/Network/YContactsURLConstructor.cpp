#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/YNetworkManager/YURLEncoding.h"

namespace ycontacts {

namespace {

const char* boolText(bool value) { return value ? "true" : "false"; }

// A sync time as the server's whole milliseconds, the fraction cut off. A time no 64-bit integer can hold
// is a caller's mistake: it is logged and the key left out rather than sent as garbage.
std::optional<std::string> wholeTime(double time) {
    constexpr double limit = 9223372036854775808.0;  // 2^63
    if (!std::isfinite(time) || time >= limit || time < -limit) {
        Logger::shared().error("Sync time cannot be sent to the server: " + std::to_string(time));
        return std::nullopt;
    }
    return std::to_string(static_cast<std::int64_t>(time));
}

const char* population(bool isOrg) { return isOrg ? "org" : "self"; }

}  // namespace

std::map<std::string, std::string> YContactsURLConstructor::getIDCContactParam(
    int startIndex, std::optional<int> limit, std::optional<double> time, std::optional<bool> showDeleted,
    const std::optional<std::string>& searchText) {
    std::map<std::string, std::string> parameters;
    std::string include = "emails,phones,urls,usage_count,categories";
    if (showDeleted == true) include += ",show_deleted";
    parameters["include"] = include;
    parameters["page"] = std::to_string(startIndex);
    if (limit) parameters["per_page"] = std::to_string(*limit);
    if (time) {
        if (auto whole = wholeTime(*time)) parameters["filter_updated_time"] = *whole;
    }
    if (searchText) parameters["q"] = *searchText;
    return parameters;
}

std::map<std::string, std::string> YContactsURLConstructor::getProxyContactParam(
    const std::string& yid, int startIndex, std::optional<int> limit, std::optional<double> time,
    std::optional<bool> showDeleted, const std::optional<std::string>& searchText) {
    std::map<std::string, std::string> parameters;
    parameters["yid"] = yid;
    parameters["page"] = std::to_string(startIndex);
    if (limit) parameters["perPage"] = std::to_string(*limit);
    if (time) {
        if (auto whole = wholeTime(*time)) parameters["filterUpdatedTime"] = *whole;
    }
    if (searchText) parameters["searchText"] = *searchText;
    if (showDeleted) parameters["showDeleted"] = boolText(*showDeleted);
    return parameters;
}

std::optional<YContactsURLParameters> YContactsURLConstructor::getContactsURL(
    const YContactsHost& host, const std::string& yuid, const std::optional<std::string>& yoid, bool isOrg,
    int startIndex, std::optional<int> limit, std::optional<double> time, std::optional<bool> showDeleted,
    const std::optional<std::string>& searchText) const {
    switch (host.kind()) {
        case YContactsHost::Kind::idc: {
            const std::string kind = time ? "sync" : "accounts";
            return YContactsURLParameters{
                host.base() + "/api/v1/" + kind + "/" + population(isOrg) + "/contacts",
                getIDCContactParam(startIndex, limit, time, showDeleted, searchText)};
        }
        case YContactsHost::Kind::proxy: {
            if (isOrg && !yoid) {
                Logger::shared().error("For mproxy yoid is required to get org contacts");
                return std::nullopt;
            }
            const std::string& yid = isOrg ? *yoid : yuid;
            return YContactsURLParameters{host.base() + "/yct/getContactsList",
                                          getProxyContactParam(yid, startIndex, limit, time, showDeleted,
                                                               searchText)};
        }
        case YContactsHost::Kind::other:
            break;
    }
    return std::nullopt;
}

std::optional<YContactsURLParameters> YContactsURLConstructor::getContactImageURL(const YContactsHost& host,
                                                                                  const std::string&,
                                                                                  const std::string& contactYuid,
                                                                                  bool isThumbnail,
                                                                                  YContactType contactType) const {
    if (host.kind() == YContactsHost::Kind::other) return std::nullopt;
    return YContactsURLParameters{host.base() + "/file/download",
                                  {{"ID", contactYuid},
                                   {"t", contactType == YContactType::user ? "user" : "group"},
                                   {"API", "true"},
                                   {"fs", isThumbnail ? "thumb" : "medium"}}};
}

std::optional<YContactsURLParameters> YContactsURLConstructor::getContactImageURL(const YContactsHost& host,
                                                                                  const std::string&,
                                                                                  const std::string& contactId,
                                                                                  bool isOrg,
                                                                                  bool isThumbnail) const {
    if (host.kind() == YContactsHost::Kind::other) return std::nullopt;
    return YContactsURLParameters{host.base() + "/syncapi/contact/photo",
                                  {{"contactId", contactId},
                                   {"isOrg", boolText(isOrg)},
                                   {"photosize", isThumbnail ? "thumbnail" : "normal"}}};
}

std::string YContactsURLConstructor::getDeleteContactsURL(const YContactsHost& host, const std::string& contactId,
                                                          bool isOrg) const {
    std::string url;
    switch (host.kind()) {
        case YContactsHost::Kind::idc: url = host.base() + "/syncapi/contact/delete"; break;
        case YContactsHost::Kind::proxy: url = host.base() + "/api/v1/" + population(isOrg) + "/contacts"; break;
        case YContactsHost::Kind::other: url = std::string(contactsServerAddress) + "/syncapi/contact/delete"; break;
    }
    return withQueryItems(url, {{"contactIds", contactId}, {"isOrg", boolText(isOrg)}});
}

std::string YContactsURLConstructor::getUpdateContactsURL(const YContactsHost& host, bool isOrg,
                                                          const std::string& source,
                                                          const std::string& format) const {
    std::string url;
    switch (host.kind()) {
        case YContactsHost::Kind::idc: url = host.base() + "/syncapi/contact/add"; break;
        case YContactsHost::Kind::proxy: url = host.base() + "/api/v1/" + population(isOrg) + "/contacts"; break;
        case YContactsHost::Kind::other: url = std::string(contactsServerAddress) + "/syncapi/contact/add"; break;
    }
    return withQueryItems(url, {{"format", format}, {"source", source}});
}

std::optional<YContactsURLParameters> YContactsURLConstructor::getContactsUsageCountURL(
    const std::string& yuid, const YContactsHost& host) const {
    if (host.kind() != YContactsHost::Kind::idc) return std::nullopt;
    return YContactsURLParameters{host.base() + "/api/v2/accounts/" + yuid + "/contacts/ids",
                                  {{"sort", "usage_count"}}};
}

std::string YContactsURLConstructor::withQueryItems(const std::string& url,
                                                    const std::vector<std::pair<std::string, std::string>>& items) {
    const auto fragmentAt = url.find('#');
    const std::string fragment = fragmentAt == std::string::npos ? std::string() : url.substr(fragmentAt);
    std::string withoutQuery = url.substr(0, std::min(url.find('?'), fragmentAt));
    std::string query;
    for (const auto& [name, value] : items) {
        if (!query.empty()) query += '&';
        query += percentEncode(name) + "=" + percentEncode(value);
    }
    return appendQuery(withoutQuery + fragment, query);
}

}  // namespace ycontacts

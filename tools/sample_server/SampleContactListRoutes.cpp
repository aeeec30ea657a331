// The contact list routes: full and incremental pages on the direct paths, and the proxy's list call.

#include "sample_server/SampleRouteSupport.h"

namespace sample_server {
namespace {

constexpr int kDefaultPerPage = 100;
constexpr int kMaxPerPage = 1000;

struct ListRequest {
    std::string owner;
    bool isOrg = false;
    ContactQuery query;
    WireSections sections;
};

// Reads page, page size and change time under the given keys; false after answering 400.
bool readPaging(const httplib::Request& request, httplib::Response& response, const char* perPageKey,
                const char* timeKey, ContactQuery& query) {
    const auto page = integerQueryValue(request, "page", 1);
    const auto perPage = integerQueryValue(request, perPageKey, kDefaultPerPage);
    const auto changedSince = integerQueryValue(request, timeKey, -1);
    if (!page || *page < 1 || *page > 1'000'000) {
        sendError(response, 400, "page must be a whole number from 1");
        return false;
    }
    if (!perPage || *perPage < 1) {
        sendError(response, 400, std::string(perPageKey) + " must be a whole number from 1");
        return false;
    }
    if (!changedSince) {
        sendError(response, 400, std::string(timeKey) + " must be a whole number of milliseconds");
        return false;
    }
    query.page = static_cast<int>(*page);
    query.perPage = static_cast<int>(std::min<long long>(*perPage, kMaxPerPage));
    if (*changedSince >= 0) query.changedSince = *changedSince;
    return true;
}

void answerPage(SampleRouteContext& context, httplib::Response& response, const ListRequest& list) {
    const ContactPage page = context.store.page(list.owner, list.isOrg, list.query);
    sendJson(response, 200, pageToWire(page, list.query.page, list.query.perPage, context.baseURL(), list.sections));
}

void directList(SampleRouteContext& context, const httplib::Request& request, httplib::Response& response,
                const SampleUser& user) {
    ListRequest list;
    list.isOrg = request.matches[2] == "org";
    if (list.isOrg && !user.yoid) {
        sendError(response, 404, "not found");
        return;
    }
    list.owner = list.isOrg ? *user.yoid : user.yuid;
    if (!readPaging(request, response, "per_page", "filter_updated_time", list.query)) return;
    list.sections = WireSections::fromInclude(queryValue(request, "include"));
    list.query.showDeleted = list.sections.showDeleted;
    list.query.search = queryValue(request, "q");
    answerPage(context, response, list);
}

void proxyList(SampleRouteContext& context, const httplib::Request& request, httplib::Response& response,
               const SampleUser& user) {
    const auto yid = queryValue(request, "yid");
    if (!yid || yid->empty()) {
        sendError(response, 400, "yid is required");
        return;
    }
    ListRequest list;
    list.owner = *yid;
    if (*yid == user.yuid) {
        list.isOrg = false;
    } else if (*yid == user.yoid) {
        list.isOrg = true;
    } else if (context.store.user(*yid) || context.store.organisationExists(*yid)) {
        sendError(response, 403, "not allowed to read these contacts");
        return;
    } else {
        sendError(response, 404, "not found");
        return;
    }
    if (!readPaging(request, response, "perPage", "filterUpdatedTime", list.query)) return;
    list.query.showDeleted = queryValue(request, "showDeleted") == "true";
    list.query.search = queryValue(request, "searchText");
    answerPage(context, response, list);
}

}  // namespace

void installContactListRoutes(httplib::Server& server, SampleRouteContext& context) {
    server.Get(R"(/api/v1/(accounts|sync)/(self|org)/contacts)",
               guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
                   directList(context, request, response, user);
               }));
    server.Get("/yct/getContactsList",
               guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
                   proxyList(context, request, response, user);
               }));
}

}  // namespace sample_server

// Per-account routes: usage counts of a user's contacts and the user's categories.

#include "sample_server/SampleRouteSupport.h"

namespace sample_server {

void installAccountRoutes(httplib::Server& server, SampleRouteContext& context) {
    server.Get(R"(/api/v2/accounts/([^/]+)/contacts/ids)",
               guarded(context, [&context](const httplib::Request& request, httplib::Response& response,
                                           const SampleUser& user) {
                   if (request.matches[1] != user.yuid) {
                       sendError(response, 403, "not allowed to read another account");
                       return;
                   }
                   auto counts = context.store.usageCounts(user.yuid);
                   if (queryValue(request, "sort") != "usage_count") {
                       // Without the sort key the ids come in creation order.
                       std::vector<std::pair<std::string, int>> unsorted;
                       for (const SampleContact& contact : context.store.contacts(user.yuid, false))
                           unsorted.emplace_back(contact.contactId, contact.usageCount);
                       counts = std::move(unsorted);
                   }
                   sendJson(response, 200, usageCountsToWire(counts));
               }));
    server.Get("/api/v1/accounts/self/categories",
               guarded(context, [](const httplib::Request&, httplib::Response& response, const SampleUser& user) {
                   sendJson(response, 200, categoriesToWire(user.categories));
               }));
}

}  // namespace sample_server

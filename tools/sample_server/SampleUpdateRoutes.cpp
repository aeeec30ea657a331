// Update routes: adding contacts from a JSON body and deleting contacts by id, on both path families.

#include <sstream>

#include "sample_server/SampleRouteSupport.h"

namespace sample_server {
namespace {

// The population a change goes to; false after answering 404 for a user without an organisation.
bool ownerFor(const SampleUser& user, bool isOrg, httplib::Response& response, std::string& owner) {
    if (isOrg && !user.yoid) {
        sendError(response, 404, "not found");
        return false;
    }
    owner = isOrg ? *user.yoid : user.yuid;
    return true;
}

void addContacts(SampleRouteContext& context, const httplib::Request& request, httplib::Response& response,
                 const SampleUser& user, bool isOrg) {
    std::string owner;
    if (!ownerFor(user, isOrg, response, owner)) return;
    const nlohmann::json body = nlohmann::json::parse(request.body, nullptr, false);
    if (body.is_discarded() || !body.is_object() || !body.contains("contacts") || !body["contacts"].is_array()) {
        sendError(response, 400, "the body must be {\"contacts\":[...]}");
        return;
    }
    std::vector<SampleContact> contacts;
    for (const nlohmann::json& object : body["contacts"]) {
        auto contact = contactFromWire(object);
        if (!contact) {
            sendError(response, 400, "unreadable contact object");
            return;
        }
        // The server owns ids and times: whatever the client sent for them is replaced.
        contact->contactId.clear();
        contact->createdTimeMs = 0;
        contact->photoModifiedMs = 0;
        contacts.push_back(std::move(*contact));
    }
    WireJson ids = WireJson::array();
    for (SampleContact& contact : contacts) {
        if (const auto id = context.store.add(owner, isOrg, std::move(contact))) ids.push_back(*id);
    }
    sendJson(response, 200, {{"status", "success"}, {"contact_ids", std::move(ids)}});
}

void deleteContacts(SampleRouteContext& context, const httplib::Request& request, httplib::Response& response,
                    const SampleUser& user, bool isOrg) {
    std::string owner;
    if (!ownerFor(user, isOrg, response, owner)) return;
    const auto ids = queryValue(request, "contactIds");
    if (!ids || ids->empty()) {
        sendError(response, 400, "contactIds is required");
        return;
    }
    std::stringstream stream(*ids);
    std::string id;
    // Unknown ids are ignored: deleting is idempotent.
    while (std::getline(stream, id, ',')) context.store.remove(owner, isOrg, id);
    sendJson(response, 200, {{"status", "success"}});
}

}  // namespace

void installUpdateRoutes(httplib::Server& server, SampleRouteContext& context) {
    server.Post("/syncapi/contact/add",
                guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
                    addContacts(context, request, response, user, false);
                }));
    server.Post(R"(/api/v1/(self|org)/contacts)",
                guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
                    addContacts(context, request, response, user, request.matches[1] == "org");
                }));
    const auto deleteById = guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
        deleteContacts(context, request, response, user, queryValue(request, "isOrg") == "true");
    });
    server.Post("/syncapi/contact/delete", deleteById);
    server.Delete("/syncapi/contact/delete", deleteById);
    server.Delete(R"(/api/v1/(self|org)/contacts)",
                  guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
                      deleteContacts(context, request, response, user, request.matches[1] == "org");
                  }));
}

}  // namespace sample_server

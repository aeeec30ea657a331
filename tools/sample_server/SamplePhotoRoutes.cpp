// Photo routes: a contact's photo by its yuid or by its contact id, revalidated with If-Modified-Since.

#include "sample_server/SamplePhoto.h"
#include "sample_server/SampleRouteSupport.h"

namespace sample_server {
namespace {

void answerPhoto(SampleRouteContext& context, const httplib::Request& request, httplib::Response& response,
                 const std::optional<SampleContact>& contact, bool thumbnail) {
    response.set_header("Date", formatHttpDate(context.store.tick()));
    if (!contact) {
        sendError(response, 403, "not allowed to see this photo");
        return;
    }
    if (!contact->hasPhoto) {
        response.status = 204;
        return;
    }
    response.set_header("Last-Modified", formatHttpDate(contact->photoModifiedMs));
    const auto since = parseHttpDate(request.get_header_value("If-Modified-Since"));
    if (since && *since >= contact->photoModifiedMs / 1000) {
        response.status = 304;
        return;
    }
    response.status = 200;
    response.set_content(photoBytes(contact->contactId, contact->photoModifiedMs, thumbnail), "image/png");
}

void photoByYuid(SampleRouteContext& context, const httplib::Request& request, httplib::Response& response,
                 const SampleUser& user) {
    const auto yuid = queryValue(request, "ID");
    const auto type = queryValue(request, "t");
    const auto size = queryValue(request, "fs");
    if (!yuid || (type != "user" && type != "group") || (size != "thumb" && size != "medium")) {
        sendError(response, 400, "ID, t=user|group and fs=thumb|medium are required");
        return;
    }
    answerPhoto(context, request, response, context.store.visibleContactByYuid(user, *yuid, *type), size == "thumb");
}

void photoById(SampleRouteContext& context, const httplib::Request& request, httplib::Response& response,
               const SampleUser& user) {
    const auto contactId = queryValue(request, "contactId");
    const auto isOrg = queryValue(request, "isOrg");
    const auto size = queryValue(request, "photosize");
    if (!contactId || (isOrg != "true" && isOrg != "false") || (size != "thumbnail" && size != "normal")) {
        sendError(response, 400, "contactId, isOrg=true|false and photosize=thumbnail|normal are required");
        return;
    }
    const bool org = isOrg == "true";
    std::optional<SampleContact> contact;
    if (!org || user.yoid) contact = context.store.contact(org ? *user.yoid : user.yuid, org, *contactId);
    answerPhoto(context, request, response, contact, size == "thumbnail");
}

}  // namespace

void installPhotoRoutes(httplib::Server& server, SampleRouteContext& context) {
    server.Get("/file/download",
               guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
                   photoByYuid(context, request, response, user);
               }));
    server.Get("/syncapi/contact/photo",
               guarded(context, [&context](const auto& request, auto& response, const SampleUser& user) {
                   photoById(context, request, response, user);
               }));
}

}  // namespace sample_server

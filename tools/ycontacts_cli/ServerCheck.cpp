#include "ycontacts_cli/ServerCheck.h"

#include <httplib.h>

#include <nlohmann/json.hpp>

namespace ycontacts_cli {

namespace {

std::string transportProblem(httplib::Error error, std::chrono::seconds timeout) {
    switch (error) {
        case httplib::Error::Connection:
            return "nothing accepts connections there";
        case httplib::Error::ConnectionTimeout:
            return "no connection within " + std::to_string(timeout.count()) + " s";
        case httplib::Error::Read:
            return "no reply within " + std::to_string(timeout.count()) + " s, or the connection broke";
        case httplib::Error::SSLConnection:
        case httplib::Error::SSLServerVerification:
        case httplib::Error::SSLLoadingCerts:
            return "the TLS connection failed";
        default:
            return httplib::to_string(error);
    }
}

// One list request: the user's own contacts, or (with `yoid`) the organisation's.
ServerCheck ask(httplib::Client& client, const ServerAddress& server, bool viaProxy, const std::string& yuid,
                const std::optional<std::string>& yoid, const std::string& token, std::chrono::seconds timeout) {
    ServerCheck check;
    const std::string whose = yoid ? "organisation " + *yoid + " of user " + yuid : "user " + yuid;
    std::string path;
    httplib::Params params;
    if (viaProxy) {
        path = server.path + "/yct/getContactsList";
        params = {{"yid", yoid.value_or(yuid)}, {"page", "1"}, {"perPage", "1"}};
    } else {
        path = server.path + (yoid ? "/api/v1/accounts/org/contacts" : "/api/v1/accounts/self/contacts");
        params = {{"page", "1"}, {"per_page", "1"}};
    }
    const auto reply = client.Get(path, params, httplib::Headers{{"Authorization", token}});
    if (!reply) {
        check.outcome = ServerCheck::Outcome::unreachable;
        check.message = "cannot reach the contacts server at " + server.base() + ": " +
                        transportProblem(reply.error(), timeout);
        return check;
    }
    check.httpStatus = reply->status;
    const auto body = nlohmann::json::parse(reply->body, nullptr, false);
    const bool isList = body.is_object() && body.contains("contacts") && body["contacts"].is_array();
    // The not-found envelope stands for an empty list: a direct server sends it for a user without organisation.
    const bool isNotFoundEnvelope = body.is_object() && body.value("status_code", 0) == 404;
    const std::string status = " (HTTP " + std::to_string(reply->status) + ")";
    if ((reply->status == 200 && isList) || (!viaProxy && yoid && isNotFoundEnvelope)) {
        check.outcome = ServerCheck::Outcome::ok;
        check.message = "the contacts server at " + server.base() + " answers for " + whose;
    } else if (reply->status == 200) {
        check.outcome = ServerCheck::Outcome::notContactsServer;
        check.message = "the server at " + server.base() + " answered, but not with a contacts list: check the URL" +
                        (viaProxy ? " and drop --proxy if it is the contacts server itself"
                                  : " and add --proxy if it is a proxy");
    } else if (reply->status == 401) {
        check.outcome = ServerCheck::Outcome::refusedToken;
        check.message = "the contacts server at " + server.base() + " refused the token for user " + yuid + status;
    } else if (reply->status == 403) {
        check.outcome = ServerCheck::Outcome::denied;
        check.message = "the contacts server at " + server.base() + " does not let this token read the contacts of " +
                        whose + status + (yoid ? ": check --org" : "");
    } else if (reply->status == 404) {
        check.outcome = ServerCheck::Outcome::notContactsServer;
        check.message = "the server at " + server.base() + " has no contacts list for " + whose + status +
                        ": check the URL, the user" + (yoid ? ", --org" : "") + " and --proxy";
    } else {
        check.outcome = ServerCheck::Outcome::unexpected;
        check.message = "the contacts server at " + server.base() + " answered with an error" + status;
    }
    return check;
}

}  // namespace

ServerCheck ServerCheck::run(const ServerAddress& server, bool viaProxy, const std::string& yuid,
                             const std::optional<std::string>& yoid, const std::string& token,
                             std::chrono::seconds timeout) {
    httplib::Client client(server.origin());
    if (!client.is_valid()) {
        ServerCheck check;
        check.outcome = Outcome::unreachable;
        check.message = "cannot talk to " + server.base() + ": this build has no client for that URL";
        return check;
    }
    client.set_connection_timeout(timeout);
    client.set_read_timeout(timeout);
    client.set_write_timeout(timeout);
    auto check = ask(client, server, viaProxy, yuid, std::nullopt, token, timeout);
    if (check.outcome != Outcome::ok || !yoid) return check;
    return ask(client, server, viaProxy, yuid, yoid, token, timeout);
}

}  // namespace ycontacts_cli

#include "sample_server/SampleRouteSupport.h"

#include <charconv>
#include <memory>

#include "sample_server/SampleHttpServer.h"
#include "sample_server/SamplePhoto.h"

namespace sample_server {
namespace {

// cpp-httplib compresses a body only when its type is exactly "application/json", and then prefers brotli at
// its slowest setting: about 1.7 s of server time for a 1000-contact page on a 2-core machine, for any client
// that accepts br (libcurl does). Naming the charset keeps replies uncompressed, the fastest on loopback.
constexpr const char* kJsonType = "application/json; charset=utf-8";

std::optional<int> pageOf(const httplib::Request& request) {
    const auto page = integerQueryValue(request, "page", -1);
    if (!page || *page < 0) return std::nullopt;
    return static_cast<int>(*page);
}

// The client is told the full length but receives only the first half before the connection closes.
void truncateBody(httplib::Response& response) {
    auto body = std::make_shared<std::string>(std::move(response.body));
    const std::string type = response.get_header_value("Content-Type");
    response.body.clear();
    response.set_header("Connection", "close");
    response.set_content_provider(body->size(), type.empty() ? kJsonType : type,
                                  [body](std::size_t, std::size_t, httplib::DataSink& sink) {
                                      sink.write(body->data(), body->size() / 2);
                                      return false;
                                  });
}

void malformBody(httplib::Response& response) {
    response.body.resize(response.body.size() / 2);
}

// Returns true when the fault took the place of the real reply.
bool playFault(SampleRouteContext& context, const Fault& fault, httplib::Response& response) {
    if (fault.delay.count() > 0) context.stopSignal.waitFor(fault.delay);
    if (fault.dropConnection) {
        SampleHttpServer::dropCurrentConnection();
        return true;
    }
    if (fault.error404Envelope) {
        sendJson(response, fault.status.value_or(200), errorBody(404, "not found"));
        response.set_header("Connection", "close");
        return true;
    }
    if (fault.status) {
        sendError(response, *fault.status, "injected fault");
        response.set_header("Connection", "close");
        return true;
    }
    return false;
}

}  // namespace

void SampleStopSignal::waitFor(std::chrono::milliseconds delay) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, delay, [this] { return raised_; });
}

void SampleStopSignal::raise() {
    {
        std::lock_guard lock(mutex_);
        raised_ = true;
    }
    changed_.notify_all();
}

void SampleStopSignal::reset() {
    std::lock_guard lock(mutex_);
    raised_ = false;
}

httplib::Server::Handler guarded(SampleRouteContext& context, AuthorizedHandler handler) {
    return [&context, handler = std::move(handler)](const httplib::Request& request, httplib::Response& response) {
        const std::optional<Fault> fault = context.faults.take(request.path, pageOf(request));
        if (fault && playFault(context, *fault, response)) return;

        const auto user = context.store.userForToken(request.get_header_value("Authorization"));
        if (!user)
            sendError(response, 401, "invalid authorization");
        else
            handler(request, response, *user);

        if (!response.has_header("Date")) response.set_header("Date", formatHttpDate(context.store.tick()));
        if (fault && fault->truncateBody)
            truncateBody(response);
        else if (fault && fault->malformedBody)
            malformBody(response);
    };
}

void sendJson(httplib::Response& response, int status, const WireJson& body) {
    response.status = status;
    response.set_content(body.dump(), kJsonType);
}

void sendError(httplib::Response& response, int status, const std::string& message) {
    sendJson(response, status, errorBody(status, message));
}

std::optional<std::string> queryValue(const httplib::Request& request, const std::string& key) {
    if (!request.has_param(key)) return std::nullopt;
    return request.get_param_value(key);
}

std::optional<long long> integerQueryValue(const httplib::Request& request, const std::string& key,
                                           long long fallback) {
    const auto text = queryValue(request, key);
    if (!text) return fallback;
    long long value = 0;
    const char* end = text->data() + text->size();
    const auto [next, error] = std::from_chars(text->data(), end, value);
    if (error != std::errc() || next != end) return std::nullopt;
    return value;
}

}  // namespace sample_server

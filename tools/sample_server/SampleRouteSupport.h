#pragma once
// Shared pieces of the sample server's HTTP routes: the context they work on, the guard every route runs
// behind (faults, authorization), and small request and reply helpers.

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include <httplib.h>

#include "sample_server/SampleContactStore.h"
#include "sample_server/SampleFault.h"
#include "sample_server/SampleRequestLog.h"
#include "sample_server/SampleWireJson.h"

namespace sample_server {

// Lets injected delays end early when the server stops.
class SampleStopSignal {
public:
    void waitFor(std::chrono::milliseconds delay);
    void raise();
    void reset();

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    bool raised_ = false;
};

struct SampleRouteContext {
    SampleContactStore& store;
    SampleFaultRegistry& faults;
    SampleRequestLog& log;
    SampleStopSignal& stopSignal;
    std::function<std::string()> baseURL;
};

using AuthorizedHandler = std::function<void(const httplib::Request&, httplib::Response&, const SampleUser&)>;

// Wraps a route: plays a matching fault, then checks the "Authorization" header (401 when it names no user)
// and runs the handler for that user.
httplib::Server::Handler guarded(SampleRouteContext& context, AuthorizedHandler handler);

void sendJson(httplib::Response& response, int status, const WireJson& body);
void sendError(httplib::Response& response, int status, const std::string& message);

// Query value of a key, absent when the key is missing.
std::optional<std::string> queryValue(const httplib::Request& request, const std::string& key);
// Whole-number query value; `fallback` when missing, absent when present but not a number.
std::optional<long long> integerQueryValue(const httplib::Request& request, const std::string& key,
                                           long long fallback);

void installContactListRoutes(httplib::Server& server, SampleRouteContext& context);
void installAccountRoutes(httplib::Server& server, SampleRouteContext& context);
void installPhotoRoutes(httplib::Server& server, SampleRouteContext& context);
void installUpdateRoutes(httplib::Server& server, SampleRouteContext& context);

}  // namespace sample_server

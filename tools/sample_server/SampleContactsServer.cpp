#include "sample_server/SampleContactsServer.h"

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "sample_server/SampleContactStore.h"
#include "sample_server/SampleDataGenerator.h"
#include "sample_server/SampleHttpServer.h"
#include "sample_server/SampleRouteSupport.h"
#include "sample_server/SampleWireJson.h"

namespace sample_server {
namespace {

// Enough workers that idle keep-alive connections of a client pool never starve new requests.
constexpr std::size_t kWorkerThreads = 32;

}  // namespace

struct SampleContactsServer::Impl {
    explicit Impl(const Options& options)
        : requestedPort(options.port),
          store(generateSampleData(options)),
          context{store, faults, log, stopSignal, [this] { return baseURL(); }} {}

    std::string baseURL() const { return "http://127.0.0.1:" + std::to_string(port.load()); }

    void logRequest(const httplib::Request& request) {
        LoggedRequest entry;
        entry.method = request.method;
        entry.path = request.path;
        entry.target = request.target;
        entry.params.insert(request.params.begin(), request.params.end());
        entry.authorization = request.get_header_value("Authorization");
        entry.ifModifiedSince = request.get_header_value("If-Modified-Since");
        log.append(std::move(entry));
    }

    int requestedPort;
    SampleContactStore store;
    SampleFaultRegistry faults;
    SampleRequestLog log;
    SampleStopSignal stopSignal;
    SampleRouteContext context;
    std::unique_ptr<SampleHttpServer> server;
    std::thread thread;
    std::atomic<int> port{0};
    std::mutex lifecycle;
};

SampleContactsServer::SampleContactsServer(Options options) : impl_(std::make_unique<Impl>(options)) {}

SampleContactsServer::~SampleContactsServer() { stop(); }

int SampleContactsServer::start() {
    std::lock_guard lock(impl_->lifecycle);
    if (impl_->server) return impl_->port;

    auto server = std::make_unique<SampleHttpServer>();
    server->new_task_queue = [] { return new httplib::ThreadPool(kWorkerThreads); };
    server->set_pre_routing_handler([impl = impl_.get()](const httplib::Request& request, httplib::Response&) {
        impl->logRequest(request);
        return httplib::Server::HandlerResponse::Unhandled;
    });
    server->set_error_handler([](const httplib::Request&, httplib::Response& response) {
        if (response.body.empty()) sendError(response, response.status, response.status == 404 ? "not found" : "error");
    });
    installContactListRoutes(*server, impl_->context);
    installAccountRoutes(*server, impl_->context);
    installPhotoRoutes(*server, impl_->context);
    installUpdateRoutes(*server, impl_->context);

    const int port = impl_->requestedPort == 0 ? server->bind_to_any_port("127.0.0.1")
                                               : (server->bind_to_port("127.0.0.1", impl_->requestedPort)
                                                      ? impl_->requestedPort
                                                      : -1);
    if (port <= 0) return -1;
    // Set before serving: replies carry URLs built from it.
    impl_->port = port;
    impl_->stopSignal.reset();
    auto listening = std::make_shared<std::atomic<bool>>(true);
    impl_->thread = std::thread([raw = server.get(), listening] {
        raw->listen_after_bind();
        *listening = false;
    });
    // The socket already queues connections; waiting for the accept loop makes a following stop() reliable.
    while (!server->is_running() && *listening) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (!server->is_running()) {
        impl_->thread.join();
        return -1;
    }
    impl_->server = std::move(server);
    return port;
}

void SampleContactsServer::stop() {
    std::lock_guard lock(impl_->lifecycle);
    if (!impl_->server) return;
    impl_->stopSignal.raise();
    impl_->server->stop();
    // Idle keep-alive connections would otherwise hold their workers until the keep-alive time-out.
    impl_->server->shutdownConnections();
    if (impl_->thread.joinable()) impl_->thread.join();
    impl_->server.reset();
}

int SampleContactsServer::port() const { return impl_->port; }

std::string SampleContactsServer::baseURL() const { return impl_->baseURL(); }

std::vector<std::string> SampleContactsServer::userIds() const { return impl_->store.userIds(); }

std::string SampleContactsServer::userToken(const std::string& yuid) const {
    const auto user = impl_->store.user(yuid);
    return user ? user->token : std::string();
}

std::optional<std::string> SampleContactsServer::yoidOf(const std::string& yuid) const {
    const auto user = impl_->store.user(yuid);
    return user ? user->yoid : std::nullopt;
}

std::vector<SampleCategory> SampleContactsServer::categories(const std::string& yuid) const {
    const auto user = impl_->store.user(yuid);
    return user ? user->categories : std::vector<SampleCategory>{};
}

std::vector<std::pair<std::string, int>> SampleContactsServer::usageCounts(const std::string& yuid) const {
    return impl_->store.usageCounts(yuid);
}

std::optional<std::string> SampleContactsServer::addContact(const std::string& owner, bool isOrg,
                                                            SampleContact contact) {
    return impl_->store.add(owner, isOrg, std::move(contact));
}

bool SampleContactsServer::updateContact(const std::string& owner, bool isOrg, SampleContact contact) {
    return impl_->store.update(owner, isOrg, std::move(contact));
}

bool SampleContactsServer::deleteContact(const std::string& owner, bool isOrg, const std::string& contactId) {
    return impl_->store.remove(owner, isOrg, contactId);
}

bool SampleContactsServer::changePhoto(const std::string& owner, bool isOrg, const std::string& contactId,
                                       bool hasPhoto) {
    return impl_->store.changePhoto(owner, isOrg, contactId, hasPhoto);
}

std::vector<SampleContact> SampleContactsServer::contacts(const std::string& owner, bool isOrg) const {
    return impl_->store.contacts(owner, isOrg);
}

std::optional<SampleContact> SampleContactsServer::contact(const std::string& owner, bool isOrg,
                                                           const std::string& contactId) const {
    return impl_->store.contact(owner, isOrg, contactId);
}

std::vector<SampleTombstone> SampleContactsServer::tombstones(const std::string& owner, bool isOrg) const {
    return impl_->store.tombstones(owner, isOrg);
}

std::int64_t SampleContactsServer::clockMs() { return impl_->store.tick(); }

std::string SampleContactsServer::toWireJson(const SampleContact& contact) const {
    return contactToWire(contact, baseURL()).dump();
}

void SampleContactsServer::injectFault(Fault fault) { impl_->faults.add(std::move(fault)); }

void SampleContactsServer::clearFaults() { impl_->faults.clear(); }

std::size_t SampleContactsServer::pendingFaults() const { return impl_->faults.pending(); }

std::vector<LoggedRequest> SampleContactsServer::requestLog() const { return impl_->log.entries(); }

void SampleContactsServer::clearRequestLog() { impl_->log.clear(); }

}  // namespace sample_server

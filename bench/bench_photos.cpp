// Measures photo fetching through the data manager: 1,000 concurrent asks for 50 contact photos (20 per photo)
// against the sample server on loopback, first with an empty photo cache (cold: one request per photo
// should reach the server, the other callers share its answer) and then again with every photo cached and
// fresh (warm: no request, the files answer). Prints the server's photo requests and the latency of the
// asks (from the call to the answer) at p50, p90 and p99. A cold run may show 51 requests: a caller that
// checked the cache just before a photo was stored, and reached the network service just after that
// photo's request ended, starts a request of its own.
//
// Usage: bench_photos
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "sample_server/SampleContactsServer.h"
#include "ycontacts/Contacts/Data/DataManager/YContactsDataManager.h"
#include "ycontacts/Contacts/Data/FileManager/YContactsFileService.h"
#include "ycontacts/Contacts/Data/Network/YContactsURLConstructor.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/YNetworkManagerDependent/YContactsNetworkService.h"

using namespace ycontacts;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int photos = 50;
constexpr int asks = 1000;
constexpr int askingThreads = 4;

class BenchAuthentication : public YContactsAuthenticationContract {
public:
    BenchAuthentication(std::string token, std::string base) : token_(std::move(token)), base_(std::move(base)) {}
    void getAuthorizationHeader(const std::string&, AuthorizationCallback callback) override {
        callback(token_, std::nullopt);
    }
    std::optional<YContactsHost> getContactsHost(const std::string&) override { return YContactsHost::idc(base_); }

private:
    std::string token_;
    std::string base_;
};

std::size_t photoRequests(const sample_server::SampleContactsServer& server) {
    std::size_t count = 0;
    for (const auto& request : server.requestLog()) count += request.path == "/file/download" ? 1 : 0;
    return count;
}

double percentile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, static_cast<std::size_t>(share * static_cast<double>(values.size())))];
}

// Every ask from `askingThreads` threads at once; returns each ask's latency in ms (-1 when unanswered).
std::vector<double> askAll(YContactsDataManager& manager, const std::vector<std::string>& yuids, int& withoutPhoto) {
    std::vector<double> latencies(asks, -1);
    std::mutex mutex;
    std::condition_variable done;
    int answered = 0;
    withoutPhoto = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < askingThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = t; i < asks; i += askingThreads) {
                YGetContactImageRequest request("u1");
                request.contactYuid = yuids[static_cast<std::size_t>(i % photos)];
                request.isThumbnail = false;
                const auto started = Clock::now();
                manager.getContactImage(
                    request, [&, i, started](std::optional<std::vector<std::uint8_t>> data, std::optional<std::string>,
                                             std::optional<std::string>) {
                        const double ms = std::chrono::duration<double, std::milli>(Clock::now() - started).count();
                        std::lock_guard lock(mutex);
                        latencies[static_cast<std::size_t>(i)] = ms;
                        withoutPhoto += data ? 0 : 1;
                        if (++answered == asks) done.notify_all();
                    });
            }
        });
    }
    for (auto& thread : threads) thread.join();
    std::unique_lock lock(mutex);
    done.wait_for(lock, std::chrono::seconds(120), [&] { return answered == asks; });
    return latencies;
}

void report(const char* phase, const std::vector<double>& latencies, std::size_t requests, int withoutPhoto) {
    const auto unanswered = std::count(latencies.begin(), latencies.end(), -1.0);
    std::printf(
        "%-5s %d asks for %d photos: %zu HTTP requests, %d answered without a photo, %ld unanswered; "
        "latency p50 %.2f ms, p90 %.2f ms, p99 %.2f ms\n",
        phase, asks, photos, requests, withoutPhoto, static_cast<long>(unanswered), percentile(latencies, 0.50),
        percentile(latencies, 0.90), percentile(latencies, 0.99));
}

}  // namespace

int main() {
    Logger::shared().setLevel(Logger::Level::error);
    sample_server::SampleServerOptions options;
    options.personalContactsPerUser = 2000;
    options.orgContactsPerOrg = 10;
    sample_server::SampleContactsServer server(options);
    if (server.start() < 0) return 1;
    std::vector<std::string> yuids;
    for (const auto& contact : server.contacts("u1", false))
        if (contact.hasPhoto && contact.yuid && contact.contactType == "user" && yuids.size() < photos)
            yuids.push_back(*contact.yuid);
    if (yuids.size() < photos) {
        std::fprintf(stderr, "the sample data has only %zu contacts with a photo\n", yuids.size());
        return 1;
    }

    const auto folder = std::filesystem::temp_directory_path() / ("bench-photos-" + std::to_string(::getpid()));
    std::filesystem::remove_all(folder);
    {
        auto files = std::make_shared<YContactsFileService>(folder);
        auto network = std::make_shared<YContactsNetworkService>(
            std::make_shared<BenchAuthentication>(server.userToken("u1"), server.baseURL()),
            std::make_shared<YContactsURLConstructor>(), nullptr);
        auto manager = std::make_shared<YContactsDataManager>(nullptr, network, nullptr, files);
        for (const char* phase : {"cold", "warm"}) {
            server.clearRequestLog();
            int withoutPhoto = 0;
            const auto latencies = askAll(*manager, yuids, withoutPhoto);
            report(phase, latencies, photoRequests(server), withoutPhoto);
        }
    }
    std::filesystem::remove_all(folder);
    return 0;
}

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Platform/YNetworkManager/NetworkTestServers.h"
#include "Support/Waiting.h"
#include "ycontacts/Platform/YNetworkManager/YNetworkManager.h"

namespace ycontacts {
namespace {

using namespace std::chrono_literals;
using testing::LocalHTTPServer;
using testing::ScriptedReplyServer;
using testing::SilentListener;
using testsupport::processThreadCount;
using testsupport::threadCountFallsTo;

constexpr auto kWait = 10s;

struct Outcome {
    std::optional<std::vector<std::uint8_t>> data;
    std::optional<YHTTPURLResponse> response;
    std::optional<YNetworkError> error;
    std::thread::id thread;

    std::string body() const { return data ? std::string(data->begin(), data->end()) : std::string(); }
};

// Hands out a completion and remembers what its first call delivered and how often it was called.
class Probe {
public:
    YNetworkCompletion completion() {
        return [promise = promise_, calls = calls_](auto data, auto response, auto error) {
            if (calls->fetch_add(1) == 0) {
                promise->set_value(Outcome{std::move(data), std::move(response), std::move(error),
                                           std::this_thread::get_id()});
            }
        };
    }
    // The first outcome, or nothing when the completion did not run in time.
    std::optional<Outcome> await() {
        if (future_.wait_for(kWait) != std::future_status::ready) return std::nullopt;
        return future_.get();
    }
    int calls() const { return calls_->load(); }

private:
    std::shared_ptr<std::promise<Outcome>> promise_ = std::make_shared<std::promise<Outcome>>();
    std::future<Outcome> future_ = promise_->get_future();
    std::shared_ptr<std::atomic<int>> calls_ = std::make_shared<std::atomic<int>>(0);
};

void echoRoutes(httplib::Server& server, LocalHTTPServer& self) {
    const auto echo = [&self](const httplib::Request& request, httplib::Response& response) {
        self.record(request);
        response.set_header("X-Echo-Method", request.method);
        response.set_content(request.body, "text/plain");
    };
    server.Get("/echo", echo);
    server.Post("/echo", echo);
    server.Put("/echo", echo);
    server.Patch("/echo", echo);
    server.Delete("/echo", echo);
    server.Get("/missing", [&self](const httplib::Request& request, httplib::Response& response) {
        self.record(request);
        response.status = 404;
        response.set_header("X-Reason", "no such contact");
        response.set_content("not here", "text/plain");
    });
    server.Get("/text", [&self](const httplib::Request& request, httplib::Response& response) {
        self.record(request);
        std::string text;
        for (int line = 0; line < 400; ++line) text += "contact line " + std::to_string(line) + "\n";
        response.set_content(text, "text/plain");
    });
    server.Get("/old", [](const httplib::Request&, httplib::Response& response) { response.set_redirect("/echo"); });
    server.Get("/loop", [](const httplib::Request&, httplib::Response& response) { response.set_redirect("/loop"); });
    server.Get(R"(/hold/(\w+))", [&self](const httplib::Request& request, httplib::Response& response) {
        self.record(request);
        self.holdUntilReleased();
        response.set_content("late", "text/plain");
    });
}

class YNetworkManagerTest : public ::testing::Test {
protected:
    std::shared_ptr<YNetworkManager> makeManager(YNetworkManager::Options options = {}) {
        return std::make_shared<YNetworkManager>(options);
    }

    std::optional<std::int64_t> get(YNetworkManager& manager, const std::string& url, Probe& probe,
                                    const std::map<std::string, std::string>& params = {},
                                    const std::map<std::string, std::string>& headers = {},
                                    const std::optional<std::string>& authorization = std::nullopt) {
        return manager.sendRequestURL(YHTTPMethod::GET, url, authorization, headers, params, false,
                                      YRequestPriority::normal, std::nullopt, std::nullopt, {}, probe.completion());
    }
    std::optional<std::int64_t> send(YHTTPMethod method, const std::string& path, Probe& probe,
                                     const std::map<std::string, std::string>& params = {}, bool multipart = false,
                                     YRequestPriority priority = YRequestPriority::normal) {
        return manager->sendRequestURL(method, server.url(path), std::nullopt, {}, params, multipart, priority,
                                       std::nullopt, std::nullopt, {}, probe.completion());
    }

    // The probe's first outcome is the transport error `code`, with neither an answer nor data.
    static void expectError(Probe& probe, int code, const std::string& label = "") {
        SCOPED_TRACE(label);
        const auto outcome = probe.await();
        ASSERT_TRUE(outcome && outcome->error);
        EXPECT_EQ(outcome->error->code, code) << outcome->error->message;
        EXPECT_FALSE(outcome->response);
        EXPECT_FALSE(outcome->data);
    }

    LocalHTTPServer server{echoRoutes};
    std::shared_ptr<YNetworkManager> manager = makeManager();
};

TEST_F(YNetworkManagerTest, GetPutsPercentEncodedParamsIntoTheQuery) {
    Probe plain;
    get(*manager, server.url("/echo"), plain, {{"q", "ann & bob"}, {"name", "\xC3\xA9t\xC3\xA9"}, {"n", "1+1=2"}});
    ASSERT_TRUE(plain.await());
    Probe withQuery;
    get(*manager, server.url("/echo?page=2#top"), withQuery, {{"limit", "10"}});
    ASSERT_TRUE(withQuery.await());
    Probe noParams;
    get(*manager, server.url("/echo?x=1"), noParams);
    ASSERT_TRUE(noParams.await());

    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].target, "/echo?n=1%2B1%3D2&name=%C3%A9t%C3%A9&q=ann%20%26%20bob");
    EXPECT_EQ(seen[1].target, "/echo?page=2&limit=10");
    EXPECT_EQ(seen[2].target, "/echo?x=1");
}

TEST_F(YNetworkManagerTest, OtherMethodsSendParamsAsFormOrMultipartBody) {
    Probe post;
    send(YHTTPMethod::POST, "/echo", post, {{"name", "Ann Lee"}, {"note", "a&b=c"}}, false, YRequestPriority::high);
    const auto posted = post.await();
    ASSERT_TRUE(posted);
    EXPECT_EQ(posted->body(), "name=Ann%20Lee&note=a%26b%3Dc");

    Probe multipart;
    send(YHTTPMethod::PUT, "/echo", multipart, {{"field", "value one"}}, true, YRequestPriority::low);
    ASSERT_TRUE(multipart.await());

    Probe deletion;
    send(YHTTPMethod::DELETE, "/echo", deletion, {{"id", "7"}});
    ASSERT_TRUE(deletion.await());

    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[0].method, "POST");
    EXPECT_EQ(seen[0].header("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(seen[1].method, "PUT");
    EXPECT_EQ(seen[1].header("Content-Type").rfind("multipart/form-data", 0), 0u);
    EXPECT_EQ(seen[1].multipartFields, (std::map<std::string, std::string>{{"field", "value one"}}));
    EXPECT_EQ(seen[2].method, "DELETE");
    EXPECT_EQ(seen[2].target, "/echo?id=7");
    EXPECT_TRUE(seen[2].body.empty());
}

TEST_F(YNetworkManagerTest, AuthorizationAndExtraHeadersArriveVerbatim) {
    Probe probe;
    get(*manager, server.url("/echo"), probe, {}, {{"X-Client", "desk 1.0"}, {"Authorization", "ignored"}},
        std::string("Bearer a.b/c=="));
    ASSERT_TRUE(probe.await());

    Probe prepared;
    YURLRequest request;
    request.url = server.url("/echo");
    request.method = YHTTPMethod::PATCH;
    request.headers = {{"If-Modified-Since", "Tue, 14 Nov 2023 08:00:00 GMT"}, {"Content-Type", "application/json"}};
    const std::string json = R"({"a":1})";
    request.body.assign(json.begin(), json.end());
    manager->send(request, std::string("Token t"), {{"v", "2"}}, YActivityMetaData("photo"), prepared.completion());
    const auto patched = prepared.await();
    ASSERT_TRUE(patched);
    EXPECT_EQ(patched->body(), json);

    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_EQ(seen[0].header("Authorization"), "Bearer a.b/c==");
    EXPECT_EQ(seen[0].headers.count("Authorization"), 1u);
    EXPECT_EQ(seen[0].header("X-Client"), "desk 1.0");
    EXPECT_EQ(seen[1].method, "PATCH");
    EXPECT_EQ(seen[1].target, "/echo?v=2");
    EXPECT_EQ(seen[1].header("Authorization"), "Token t");
    EXPECT_EQ(seen[1].header("If-Modified-Since"), "Tue, 14 Nov 2023 08:00:00 GMT");
    EXPECT_EQ(seen[1].header("Content-Type"), "application/json");
}

TEST_F(YNetworkManagerTest, AnyHTTPStatusIsDeliveredAsAnAnswerNotAnError) {
    Probe ok;
    get(*manager, server.url("/echo"), ok);
    Probe missing;
    get(*manager, server.url("/missing"), missing);
    Probe redirected;
    get(*manager, server.url("/old"), redirected);

    const auto found = ok.await();
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->error);
    ASSERT_TRUE(found->response && found->data);
    EXPECT_EQ(found->response->statusCode, 200);
    EXPECT_EQ(found->response->header("x-echo-method"), "GET");
    EXPECT_EQ(found->response->header("CONTENT-TYPE"), "text/plain");
    EXPECT_FALSE(found->response->header("X-Absent"));

    const auto notFound = missing.await();
    ASSERT_TRUE(notFound);
    EXPECT_FALSE(notFound->error);
    ASSERT_TRUE(notFound->response);
    EXPECT_EQ(notFound->response->statusCode, 404);
    EXPECT_EQ(notFound->response->header("x-reason"), "no such contact");
    EXPECT_EQ(notFound->body(), "not here");

    const auto moved = redirected.await();
    ASSERT_TRUE(moved && moved->response);
    EXPECT_EQ(moved->response->statusCode, 200);
    EXPECT_EQ(moved->response->url, server.url("/echo"));
    EXPECT_FALSE(moved->response->header("Location")) << "only the final answer's headers are kept";
}

TEST_F(YNetworkManagerTest, CompressedBodiesArriveDecompressed) {
    std::string expected;
    for (int line = 0; line < 400; ++line) expected += "contact line " + std::to_string(line) + "\n";

    Probe anyEncoding;
    get(*manager, server.url("/text"), anyEncoding);
    const auto first = anyEncoding.await();
    ASSERT_TRUE(first && first->response);
    const auto encoding = first->response->header("Content-Encoding");
    ASSERT_TRUE(encoding) << "the test server compresses text when the client accepts it";
    EXPECT_EQ(first->body(), expected);

    Probe gzipOnly;
    get(*manager, server.url("/text"), gzipOnly, {}, {{"Accept-Encoding", "gzip"}});
    const auto second = gzipOnly.await();
    ASSERT_TRUE(second && second->response);
    EXPECT_EQ(second->response->header("Content-Encoding"), "gzip");
    EXPECT_EQ(second->body(), expected);

    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 2u);
    EXPECT_NE(seen[0].header("Accept-Encoding").find("gzip"), std::string::npos);
}

TEST_F(YNetworkManagerTest, SequentialRequestsReuseOneConnection) {
    for (int i = 0; i < 3; ++i) {
        Probe probe;
        get(*manager, server.url("/echo"), probe);
        ASSERT_TRUE(probe.await());
    }
    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 3u);
    EXPECT_EQ(seen[1].remotePort, seen[0].remotePort);
    EXPECT_EQ(seen[2].remotePort, seen[0].remotePort);
}

TEST_F(YNetworkManagerTest, TransportFailuresMapToPlatformErrorCodes) {
    Probe refused;
    get(*manager, "http://127.0.0.1:" + std::to_string(testing::closedLoopbackPort()) + "/x", refused);
    expectError(refused, YNetworkError::notConnectedToInternet);

    SilentListener silent;
    auto impatient = makeManager({.connectTimeout = 2000ms, .transferTimeout = 300ms, .completionThreads = 1});
    Probe stalled;
    get(*impatient, "http://127.0.0.1:" + std::to_string(silent.port()) + "/x", stalled);
    expectError(stalled, YNetworkError::timedOut);

    Probe tooManyRedirects;
    get(*manager, server.url("/loop"), tooManyRedirects);
    expectError(tooManyRedirects, YNetworkError::badServerResponse);

    for (const char* url : {"not a url", "ftp://127.0.0.1/file", "http://"}) {
        Probe bad;
        const auto taskId = get(*manager, url, bad);
        EXPECT_TRUE(taskId) << url;
        expectError(bad, YNetworkError::badURL, url);
    }
}

TEST_F(YNetworkManagerTest, ServerFaultsMapToConnectionLostOrBadResponse) {
    struct Case {
        const char* name;
        std::string reply;
        int code;
    };
    const std::vector<Case> cases{
        {"closed without a reply", "", YNetworkError::networkConnectionLost},
        {"body shorter than announced", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\npartial",
         YNetworkError::networkConnectionLost},
        {"not HTTP at all", "hello there\r\n\r\n", YNetworkError::badServerResponse},
        {"gzip that is not gzip",
         "HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 9\r\n\r\nnot gzip!",
         YNetworkError::badServerResponse},
    };
    for (const auto& fault : cases) {
        ScriptedReplyServer scripted(fault.reply);
        Probe probe;
        get(*manager, "http://127.0.0.1:" + std::to_string(scripted.port()) + "/x", probe);
        expectError(probe, fault.code, fault.name);
    }
}

TEST_F(YNetworkManagerTest, CancelInFlightCompletesOnceWithCancelled) {
    Probe held;
    const auto taskId = get(*manager, server.url("/hold/1"), held);
    ASSERT_TRUE(taskId);
    ASSERT_TRUE(server.waitForRequests(1, kWait));

    manager->cancel(*taskId);
    expectError(held, YNetworkError::cancelled);

    Probe finished;
    const auto finishedId = get(*manager, server.url("/echo"), finished);
    ASSERT_TRUE(finished.await());
    manager->cancel(*finishedId);
    manager->cancel(*finishedId + 1000);
    manager->cancel(*taskId);

    server.releaseHeld();
    manager.reset();  // joins the completion threads: every completion that would run has run
    EXPECT_EQ(held.calls(), 1);
    EXPECT_EQ(finished.calls(), 1);
}

TEST_F(YNetworkManagerTest, ManyConcurrentRequestsGetDistinctIdsAndCompleteOnce) {
    constexpr int kSenders = 4;
    constexpr int kPerSender = 25;
    std::vector<Probe> probes(kSenders * kPerSender);
    std::vector<std::vector<std::int64_t>> ids(kSenders);
    std::vector<std::int64_t> startedIds(kSenders * kPerSender, 0);
    std::vector<std::thread> senders;
    for (int sender = 0; sender < kSenders; ++sender) {
        senders.emplace_back([&, sender] {
            for (int i = 0; i < kPerSender; ++i) {
                const int index = sender * kPerSender + i;
                const auto taskId = manager->sendRequestURL(
                    YHTTPMethod::GET, server.url("/echo"), std::nullopt, {}, {{"i", std::to_string(index)}}, false,
                    YRequestPriority::normal, std::nullopt, std::string("probe"),
                    [&startedIds, index](std::int64_t started) { startedIds[index] = started; },
                    probes[index].completion());
                ids[sender].push_back(taskId.value_or(-1));
            }
        });
    }
    for (auto& sender : senders) sender.join();

    std::set<std::int64_t> distinct;
    for (int sender = 0; sender < kSenders; ++sender) {
        for (int i = 0; i < kPerSender; ++i) {
            const std::int64_t taskId = ids[sender][i];
            EXPECT_GE(taskId, 1);
            if (i > 0) {
                EXPECT_GT(taskId, ids[sender][i - 1]);
            }
            EXPECT_EQ(startedIds[sender * kPerSender + i], taskId);
            distinct.insert(taskId);
        }
    }
    EXPECT_EQ(distinct.size(), static_cast<std::size_t>(kSenders * kPerSender));

    for (auto& probe : probes) {
        const auto outcome = probe.await();
        ASSERT_TRUE(outcome && outcome->response);
        EXPECT_EQ(outcome->response->statusCode, 200);
    }
    manager.reset();
    for (const auto& probe : probes) EXPECT_EQ(probe.calls(), 1);
}

TEST_F(YNetworkManagerTest, RequestsBeyondSixPerHostWaitAndStartByPriority) {
    const auto sendGet = [&](const std::string& path, YRequestPriority priority, Probe& probe) {
        return send(YHTTPMethod::GET, path, probe, {}, false, priority);
    };
    std::vector<Probe> held(6);
    std::vector<std::int64_t> heldIds;
    for (std::size_t i = 0; i < held.size(); ++i) {
        heldIds.push_back(sendGet("/hold/" + std::to_string(i), YRequestPriority::veryLow, held[i]).value_or(-1));
    }
    ASSERT_TRUE(server.waitForRequests(6, kWait));

    Probe low, top, normal;
    sendGet("/hold/low", YRequestPriority::low, low);
    sendGet("/hold/top", YRequestPriority::veryHigh, top);
    sendGet("/hold/normal", YRequestPriority::normal, normal);
    // Each cancellation frees one slot for the best waiting request.
    manager->cancel(heldIds[0]);
    ASSERT_TRUE(server.waitForRequests(7, kWait));
    manager->cancel(heldIds[1]);
    ASSERT_TRUE(server.waitForRequests(8, kWait));
    server.releaseHeld();
    ASSERT_TRUE(server.waitForRequests(9, kWait));

    const auto seen = server.seen();
    EXPECT_EQ(seen[6].path, "/hold/top");
    EXPECT_EQ(seen[7].path, "/hold/normal");
    EXPECT_EQ(seen[8].path, "/hold/low");
    for (Probe* probe : {&low, &top, &normal, &held[5]}) {
        const auto outcome = probe->await();
        ASSERT_TRUE(outcome && outcome->response);
        EXPECT_EQ(outcome->body(), "late");
    }
}

TEST_F(YNetworkManagerTest, ASlowCompletionDoesNotStallOtherTransfers) {
    // Shared with the first completion, which may outlive this body when an assertion below fails.
    auto secondDone = std::make_shared<std::promise<void>>();
    auto firstSawSecond = std::make_shared<std::promise<bool>>();
    auto firstResult = firstSawSecond->get_future();

    manager->sendRequestURL(YHTTPMethod::GET, server.url("/echo"), std::nullopt, {}, {}, false,
                            YRequestPriority::normal, std::nullopt, std::nullopt, {},
                            [firstSawSecond, secondFuture = secondDone->get_future().share()](auto, auto, auto) {
                                // Blocks its completion thread until the second request has completed.
                                firstSawSecond->set_value(secondFuture.wait_for(kWait) == std::future_status::ready);
                            });
    ASSERT_TRUE(server.waitForRequests(1, kWait));
    Probe second;
    get(*manager, server.url("/echo"), second);
    const auto outcome = second.await();
    if (outcome) secondDone->set_value();
    ASSERT_TRUE(outcome) << "the second transfer stalled behind the first completion";
    EXPECT_NE(outcome->thread, std::this_thread::get_id());
    ASSERT_EQ(firstResult.wait_for(kWait), std::future_status::ready);
    EXPECT_TRUE(firstResult.get());
}

TEST_F(YNetworkManagerTest, DestroyingTheManagerCancelsTransfersAndJoinsItsThreads) {
    // Once the server has answered, its worker threads all exist and the count below is stable.
    Probe warmUp;
    get(*manager, server.url("/echo"), warmUp);
    ASSERT_TRUE(warmUp.await());
    const std::size_t threadsBefore = processThreadCount();
    auto owned = makeManager({.connectTimeout = 10000ms, .transferTimeout = 60000ms, .completionThreads = 3});
    // Six transfers run and two wait for a free slot; all of them end with the manager.
    std::vector<Probe> probes(8);
    for (std::size_t i = 0; i < probes.size(); ++i) get(*owned, server.url("/hold/" + std::to_string(i)), probes[i]);
    ASSERT_TRUE(server.waitForRequests(1 + 6, kWait));
    EXPECT_GT(processThreadCount(), threadsBefore);

    owned.reset();

    for (auto& probe : probes) {
        EXPECT_EQ(probe.calls(), 1) << "completed before the destructor returned";
        expectError(probe, YNetworkError::cancelled);
    }
    EXPECT_TRUE(threadCountFallsTo(threadsBefore))
        << processThreadCount() << " threads, " << threadsBefore << " before";
}

TEST(YNetworkManagerSharedInstance, IsOneClientForTheProcess) {
    const auto first = YNetworkManager::sharedInstance();
    std::shared_ptr<YNetworkManager> fromThread;
    std::thread([&] { fromThread = YNetworkManager::sharedInstance(); }).join();
    ASSERT_TRUE(first);
    EXPECT_EQ(first, fromThread);
}

}  // namespace
}  // namespace ycontacts

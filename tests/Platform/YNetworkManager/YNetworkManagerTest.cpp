#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <future>
#include <map>
#include <memory>
#include <optional>
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
using testing::bindLoopback;
using testsupport::waitLimit;
using Headers = std::map<std::string, std::string>;

struct Outcome {
    std::optional<std::vector<std::uint8_t>> data;
    std::optional<YHTTPURLResponse> response;
    std::optional<YNetworkError> error;
    std::thread::id thread;
    std::string body() const { return data ? std::string(data->begin(), data->end()) : std::string(); }
};

// Collects every call of a completion; shared with it, since a completion may outlive a failed test.
struct Probe {
    std::shared_ptr<testsupport::Received<Outcome>> got = std::make_shared<testsupport::Received<Outcome>>();
    YNetworkCompletion completion() const {
        return [got = got](auto data, auto response, auto error) {
            got->add(Outcome{std::move(data), std::move(response), std::move(error), std::this_thread::get_id()});
        };
    }
    std::optional<Outcome> await() const { return got->waitFor(1) ? std::optional(got->values()[0]) : std::nullopt; }
    std::size_t calls() const { return got->values().size(); }
};

// Listens on a loopback port. Without a reply it never accepts, so connections hang unanswered; with one,
// it accepts one connection, reads the request head, writes `reply` verbatim and closes.
class RawServer {
public:
    explicit RawServer(std::optional<std::string> reply = std::nullopt) : fd_(bindLoopback(port_)) {
        ::listen(fd_, 16);
        if (!reply) return;
        thread_ = std::thread([fd = fd_, reply = std::move(*reply)] {
            const int connection = ::accept(fd, nullptr, nullptr);
            if (connection < 0) return;
            std::string head;
            char buffer[1024];
            for (ssize_t got = 1; got > 0 && head.find("\r\n\r\n") == std::string::npos;) {
                got = ::recv(connection, buffer, sizeof(buffer), 0);
                if (got > 0) head.append(buffer, static_cast<std::size_t>(got));
            }
            ::send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
            ::close(connection);
        });
    }
    ~RawServer() {
        ::shutdown(fd_, SHUT_RDWR);  // wakes an accept() that never got a connection
        if (thread_.joinable()) thread_.join();
        ::close(fd_);
    }
    std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/x"; }

private:
    int port_ = -1;
    int fd_;
    std::thread thread_;
};

// An httplib server that records what it is sent. "/hold/..." parks until releaseHeld() or destruction.
class LocalHTTPServer {
public:
    LocalHTTPServer() {
        const auto echo = [this](const httplib::Request& request, httplib::Response& response) {
            seen.add(request);
            response.set_header("X-Echo-Method", request.method);
            response.set_content(request.body, "text/plain");
        };
        server_.Get("/echo", echo);
        server_.Post("/echo", echo);
        server_.Put("/echo", echo);
        server_.Delete("/echo", echo);
        server_.Get("/missing", [](const httplib::Request&, httplib::Response& response) {
            response.status = 404;
            response.set_header("X-Reason", "no such contact");
            response.set_content("not here", "text/plain");
        });
        server_.Get("/text", [](const httplib::Request&, httplib::Response& response) {
            response.set_content(longText(), "text/plain");
        });
        server_.Get("/old", [](const httplib::Request&, httplib::Response& response) { response.set_redirect("/echo"); });
        server_.Get("/loop", [](const httplib::Request&, httplib::Response& response) { response.set_redirect("/loop"); });
        server_.Get(R"(/hold/(\w+))", [this](const httplib::Request& request, httplib::Response& response) {
            seen.add(request);
            released_.wait_for(waitLimit);
            response.set_content("late", "text/plain");
        });
        server_.set_keep_alive_timeout(1);
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        // stop() is ignored until the loop runs, so the destructor could otherwise wait forever.
        while (!server_.is_running()) std::this_thread::yield();
    }
    ~LocalHTTPServer() {
        releaseHeld();
        server_.stop();
        thread_.join();
    }

    static std::string longText() {
        std::string text;
        for (int line = 0; line < 400; ++line) text += "contact line " + std::to_string(line) + "\n";
        return text;
    }
    std::string url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(port_) + path; }
    void releaseHeld() {
        if (!releasing_.exchange(true)) release_.set_value();
    }

    testsupport::Received<httplib::Request> seen;

private:
    httplib::Server server_;
    int port_ = -1;
    std::thread thread_;
    std::promise<void> release_;
    std::shared_future<void> released_ = release_.get_future().share();
    std::atomic<bool> releasing_{false};
};

class YNetworkManagerTest : public ::testing::Test {
protected:
    std::optional<std::int64_t> send(YNetworkManager& client, YHTTPMethod method, const std::string& url,
                                     const Probe& probe, const Headers& params = {}, bool multipart = false,
                                     YRequestPriority priority = YRequestPriority::normal, const Headers& headers = {},
                                     const std::optional<std::string>& authorization = std::nullopt) {
        return client.sendRequestURL(method, url, authorization, headers, params, multipart, priority, std::nullopt,
                                     std::nullopt, {}, probe.completion());
    }
    std::optional<std::int64_t> get(const std::string& path, const Probe& probe,
                                    YRequestPriority priority = YRequestPriority::normal) {
        return send(*manager, YHTTPMethod::GET, server.url(path), probe, {}, false, priority);
    }

    // The probe's first outcome is the transport error `code`, with neither an answer nor data.
    static void expectError(const Probe& probe, int code) {
        const auto outcome = probe.await();
        ASSERT_TRUE(outcome && outcome->error);
        EXPECT_EQ(outcome->error->code, code) << outcome->error->message;
        EXPECT_FALSE(outcome->response);
        EXPECT_FALSE(outcome->data);
    }

    LocalHTTPServer server;
    std::shared_ptr<YNetworkManager> manager = std::make_shared<YNetworkManager>();
};

TEST_F(YNetworkManagerTest, ParamsGoToTheQueryOrAFormOrMultipartBodyOverOneConnection) {
    struct Request {
        YHTTPMethod method;
        const char* path;
        Headers params;
        bool multipart = false;
    };
    const std::vector<Request> requests{
        {YHTTPMethod::GET, "/echo", {{"q", "ann & bob"}, {"name", "\xC3\xA9t\xC3\xA9"}, {"n", "1+1=2"}}},
        {YHTTPMethod::GET, "/echo?page=2#top", {{"limit", "10"}}},
        {YHTTPMethod::GET, "/echo?x=1", {}},
        {YHTTPMethod::POST, "/echo", {{"name", "Ann Lee"}, {"note", "a&b=c"}}},
        {YHTTPMethod::PUT, "/echo", {{"field", "value one"}}, true},
        {YHTTPMethod::DELETE, "/echo", {{"id", "7"}}},
    };
    for (const auto& request : requests) {
        const bool first = &request == &requests.front();
        Probe probe;
        send(*manager, request.method, server.url(request.path), probe, request.params, request.multipart,
             YRequestPriority::normal, first ? Headers{{"X-Client", "desk 1.0"}, {"Authorization", "ignored"}} : Headers{},
             first ? std::optional<std::string>("Bearer a.b/c==") : std::nullopt);
        ASSERT_TRUE(probe.await());
    }

    const auto seen = server.seen.values();
    ASSERT_EQ(seen.size(), requests.size());
    EXPECT_EQ(seen[0].target, "/echo?n=1%2B1%3D2&name=%C3%A9t%C3%A9&q=ann%20%26%20bob");
    EXPECT_EQ(seen[0].get_header_value("Authorization"), "Bearer a.b/c==");
    EXPECT_EQ(seen[0].get_header_value_count("Authorization"), 1u);
    EXPECT_EQ(seen[0].get_header_value("X-Client"), "desk 1.0");
    EXPECT_EQ(seen[1].target, "/echo?page=2&limit=10");
    EXPECT_EQ(seen[2].target, "/echo?x=1");
    EXPECT_EQ(seen[3].method, "POST");
    EXPECT_EQ(seen[3].get_header_value("Content-Type"), "application/x-www-form-urlencoded");
    EXPECT_EQ(seen[3].body, "name=Ann%20Lee&note=a%26b%3Dc");
    EXPECT_EQ(seen[4].method, "PUT");
    ASSERT_EQ(seen[4].files.size(), 1u) << "one multipart/form-data part per parameter";
    EXPECT_EQ(seen[4].get_file_value("field").content, "value one");
    EXPECT_EQ(seen[5].method, "DELETE");
    EXPECT_EQ(seen[5].target, "/echo?id=7");
    EXPECT_TRUE(seen[5].body.empty());
    for (const auto& request : seen) EXPECT_EQ(request.remote_port, seen[0].remote_port) << request.target;
}

TEST_F(YNetworkManagerTest, AnyHTTPStatusIsAnAnswerWithTheFinalHeadersAndADecompressedBody) {
    Probe ok, missing, redirected, compressed, gzipOnly;
    get("/echo", ok);
    get("/missing", missing);
    get("/old", redirected);
    get("/text", compressed);
    send(*manager, YHTTPMethod::GET, server.url("/text"), gzipOnly, {}, false, YRequestPriority::normal,
         {{"Accept-Encoding", "gzip"}});

    const auto found = ok.await();
    ASSERT_TRUE(found && found->response && found->data);
    EXPECT_FALSE(found->error);
    EXPECT_EQ(found->response->statusCode, 200);
    EXPECT_EQ(found->response->header("x-echo-method"), "GET");
    EXPECT_EQ(found->response->header("CONTENT-TYPE"), "text/plain");
    EXPECT_FALSE(found->response->header("X-Absent"));

    const auto notFound = missing.await();
    ASSERT_TRUE(notFound && notFound->response);
    EXPECT_FALSE(notFound->error);
    EXPECT_EQ(notFound->response->statusCode, 404);
    EXPECT_EQ(notFound->response->header("x-reason"), "no such contact");
    EXPECT_EQ(notFound->body(), "not here");

    const auto moved = redirected.await();
    ASSERT_TRUE(moved && moved->response);
    EXPECT_EQ(moved->response->statusCode, 200);
    EXPECT_EQ(moved->response->url, server.url("/echo"));
    EXPECT_FALSE(moved->response->header("Location")) << "only the final answer's headers are kept";

    for (const auto* probe : {&compressed, &gzipOnly}) {
        const auto text = probe->await();
        ASSERT_TRUE(text && text->response);
        EXPECT_TRUE(text->response->header("Content-Encoding")) << "the server compresses what the client accepts";
        EXPECT_EQ(text->body(), LocalHTTPServer::longText());
    }
    EXPECT_EQ(gzipOnly.await()->response->header("Content-Encoding"), "gzip");
}

TEST_F(YNetworkManagerTest, TransportAndServerFaultsMapToPlatformErrorCodes) {
    const RawServer silent, closedEarly(""), shortBody("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\npartial"),
        notHTTP("hello there\r\n\r\n"),
        badGzip("HTTP/1.1 200 OK\r\nContent-Encoding: gzip\r\nContent-Length: 9\r\n\r\nnot gzip!");
    struct Case {
        const char* name;
        std::string url;
        int code;
        bool impatient = false;
    };
    const std::vector<Case> cases{
        {"refused", "http://127.0.0.1:" + std::to_string(testing::closedLoopbackPort()) + "/x",
         YNetworkError::notConnectedToInternet},
        {"never answered", silent.url(), YNetworkError::timedOut, true},
        {"endless redirects", server.url("/loop"), YNetworkError::badServerResponse},
        {"not a url", "not a url", YNetworkError::badURL},
        {"not http", "ftp://127.0.0.1/file", YNetworkError::badURL},
        {"no host", "http://", YNetworkError::badURL},
        {"closed without a reply", closedEarly.url(), YNetworkError::networkConnectionLost},
        {"body shorter than announced", shortBody.url(), YNetworkError::networkConnectionLost},
        {"not HTTP at all", notHTTP.url(), YNetworkError::badServerResponse},
        {"gzip that is not gzip", badGzip.url(), YNetworkError::badServerResponse},
    };
    YNetworkManager impatient({.connectTimeout = 2000ms, .transferTimeout = 300ms, .completionThreads = 1});
    for (const auto& fault : cases) {
        SCOPED_TRACE(fault.name);
        Probe probe;
        EXPECT_TRUE(send(fault.impatient ? impatient : *manager, YHTTPMethod::GET, fault.url, probe));
        expectError(probe, fault.code);
    }
}

TEST_F(YNetworkManagerTest, ConcurrentSendersGetIncreasingDistinctIdsBeforeTheirSingleCompletion) {
    constexpr int senders = 4, perSender = 25;
    std::vector<Probe> probes(senders * perSender);
    std::vector<std::int64_t> ids(probes.size(), -1), startedIds(probes.size(), 0);
    std::vector<std::thread> threads;
    for (int sender = 0; sender < senders; ++sender) {
        threads.emplace_back([&, sender] {
            for (int index = sender * perSender; index < (sender + 1) * perSender; ++index) {
                ids[index] = manager
                                 ->sendRequestURL(YHTTPMethod::GET, server.url("/echo"), std::nullopt, {},
                                                  {{"i", std::to_string(index)}}, false, YRequestPriority::normal,
                                                  YActivityMetaData("photo"), std::string("probe"),
                                                  [&startedIds, index](std::int64_t id) { startedIds[index] = id; },
                                                  probes[index].completion())
                                 .value_or(-1);
            }
        });
    }
    for (auto& thread : threads) thread.join();

    EXPECT_EQ(startedIds, ids) << "the start handler runs with the task id before sendRequestURL returns";
    EXPECT_EQ(std::set<std::int64_t>(ids.begin(), ids.end()).size(), ids.size());
    for (std::size_t index = 0; index < ids.size(); ++index) {
        EXPECT_GE(ids[index], 1);
        if (index % perSender != 0) EXPECT_GT(ids[index], ids[index - 1]);
        const auto outcome = probes[index].await();
        ASSERT_TRUE(outcome && outcome->response);
        EXPECT_EQ(outcome->response->statusCode, 200);
    }
    manager.reset();
    for (const auto& probe : probes) EXPECT_EQ(probe.calls(), 1u);
}

// Cancelling a running request frees its slot for the best waiting one; cancelling a waiting request keeps it
// from the server; either completes once, with cancelled. Ids that are unknown or done are ignored.
TEST_F(YNetworkManagerTest, RequestsBeyondSixPerHostWaitByPriorityAndCancelCompletesOnce) {
    std::vector<Probe> held(6);
    std::vector<std::int64_t> heldIds;
    for (std::size_t i = 0; i < held.size(); ++i) {
        heldIds.push_back(get("/hold/" + std::to_string(i), held[i], YRequestPriority::veryLow).value_or(-1));
    }
    ASSERT_TRUE(server.seen.waitFor(6));

    Probe low, top, normal, dropped;
    get("/hold/low", low, YRequestPriority::low);
    get("/hold/top", top, YRequestPriority::veryHigh);
    const auto droppedId = get("/hold/dropped", dropped, YRequestPriority::veryHigh);
    get("/hold/normal", normal, YRequestPriority::normal);
    manager->cancel(droppedId.value_or(-1));
    expectError(dropped, YNetworkError::cancelled);
    manager->cancel(heldIds[0]);
    expectError(held[0], YNetworkError::cancelled);
    ASSERT_TRUE(server.seen.waitFor(7));
    manager->cancel(heldIds[1]);
    ASSERT_TRUE(server.seen.waitFor(8));
    server.releaseHeld();
    ASSERT_TRUE(server.seen.waitFor(9));

    const auto seen = server.seen.values();
    EXPECT_EQ(seen[6].path, "/hold/top");
    EXPECT_EQ(seen[7].path, "/hold/normal");
    EXPECT_EQ(seen[8].path, "/hold/low");
    for (Probe* probe : {&low, &top, &normal, &held[5]}) {
        const auto outcome = probe->await();
        ASSERT_TRUE(outcome && outcome->response);
        EXPECT_EQ(outcome->body(), "late");
    }
    for (const auto id : {heldIds[0], heldIds[5], heldIds[5] + 1000}) manager->cancel(id);
    manager.reset();  // joins the completion threads: every completion that would run has run
    for (const Probe* probe : {&held[0], &held[1], &held[5], &dropped}) EXPECT_EQ(probe->calls(), 1u);
    EXPECT_EQ(server.seen.values().size(), 9u) << "the cancelled waiting request reached the server";
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
                                firstSawSecond->set_value(testsupport::becomesReady(secondFuture));
                            });
    ASSERT_TRUE(server.seen.waitFor(1));
    Probe second;
    get("/echo", second);
    const auto outcome = second.await();
    if (outcome) secondDone->set_value();
    ASSERT_TRUE(outcome) << "the second transfer stalled behind the first completion";
    EXPECT_NE(outcome->thread, std::this_thread::get_id());
    ASSERT_TRUE(testsupport::becomesReady(firstResult));
    EXPECT_TRUE(firstResult.get());
}

TEST_F(YNetworkManagerTest, DestroyingTheManagerCancelsTransfersAndJoinsItsThreads) {
    // Once the server has answered, its worker threads all exist and the count below is stable.
    Probe warmUp;
    get("/echo", warmUp);
    ASSERT_TRUE(warmUp.await());
    const std::size_t threadsBefore = testsupport::processThreadCount();
    auto owned = std::make_shared<YNetworkManager>(YNetworkManager::Options{.completionThreads = 3});
    // Six transfers run and two wait for a free slot; all of them end with the manager.
    std::vector<Probe> probes(8);
    for (std::size_t i = 0; i < probes.size(); ++i) {
        send(*owned, YHTTPMethod::GET, server.url("/hold/" + std::to_string(i)), probes[i]);
    }
    ASSERT_TRUE(server.seen.waitFor(1 + 6));
    EXPECT_GT(testsupport::processThreadCount(), threadsBefore);

    owned.reset();

    for (auto& probe : probes) {
        EXPECT_EQ(probe.calls(), 1u) << "completed before the destructor returned";
        expectError(probe, YNetworkError::cancelled);
    }
    EXPECT_TRUE(testsupport::threadCountFallsTo(threadsBefore));
}

}  // namespace
}  // namespace ycontacts

#include <gtest/gtest.h>
#include <httplib.h>

#include <atomic>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
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

std::string longText() {
    std::string text;
    for (int line = 0; line < 400; ++line) text += "contact line " + std::to_string(line) + "\n";
    return text;
}

// Records what it is sent. "/hold/..." parks until the server is destroyed.
void routes(httplib::Server& server, testing::LocalHTTPServer& self) {
    server.Get("/echo", [&self](const httplib::Request& request, httplib::Response& response) {
        self.record(request);
        response.set_header("X-Echo-Method", request.method);
    });
    server.Get("/missing", [](const httplib::Request&, httplib::Response& response) {
        response.status = 404;
        response.set_header("X-Reason", "no such contact");
        response.set_content("not here", "text/plain");
    });
    server.Get("/text", [](const httplib::Request&, httplib::Response& response) {
        response.set_content(longText(), "text/plain");
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
    std::optional<std::int64_t> send(YNetworkManager& client, YHTTPMethod method, const std::string& url,
                                     const Probe& probe, const Headers& params = {}, bool multipart = false,
                                     YRequestPriority priority = YRequestPriority::normal, const Headers& headers = {},
                                     const std::optional<std::string>& authorization = std::nullopt) {
        return client.sendRequestURL(method, url, authorization, headers, params, multipart, priority,
                                     YActivityMetaData("probe"), std::string("test"), {}, probe.completion());
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

    testing::LocalHTTPServer server{routes};
    std::shared_ptr<YNetworkManager> manager = std::make_shared<YNetworkManager>();
};

TEST_F(YNetworkManagerTest, ParamsGoToTheQueryHeadersAreSentAndConnectionsAreReused) {
    const std::vector<std::pair<const char*, Headers>> requests{
        {"/echo", {{"q", "ann & bob"}, {"name", "\xC3\xA9t\xC3\xA9"}, {"n", "1+1=2"}}},
        {"/echo?page=2#top", {{"limit", "10"}}},
        {"/echo?x=1", {}},
    };
    for (const auto& [path, params] : requests) {
        const bool first = path == requests.front().first;
        Probe probe;
        send(*manager, YHTTPMethod::GET, server.url(path), probe, params, false, YRequestPriority::normal,
             first ? Headers{{"X-Client", "desk 1.0"}, {"Authorization", "ignored"}} : Headers{},
             first ? std::optional<std::string>("Bearer a.b/c==") : std::nullopt);
        ASSERT_TRUE(probe.await());
    }

    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), requests.size());
    EXPECT_EQ(seen[0].target, "/echo?n=1%2B1%3D2&name=%C3%A9t%C3%A9&q=ann%20%26%20bob");
    EXPECT_EQ(seen[0].header("Authorization"), "Bearer a.b/c==");
    EXPECT_EQ(seen[0].get_header_value_count("Authorization"), 1u);
    EXPECT_EQ(seen[0].header("X-Client"), "desk 1.0");
    EXPECT_EQ(seen[1].target, "/echo?page=2&limit=10");
    EXPECT_EQ(seen[2].target, "/echo?x=1");
    // Sequential requests reuse the connection the first one opened.
    EXPECT_EQ(seen[1].remote_port, seen[0].remote_port);
    EXPECT_EQ(seen[2].remote_port, seen[0].remote_port);
}

TEST_F(YNetworkManagerTest, AnyHTTPStatusIsAnAnswerWithTheFinalHeadersAndADecompressedBody) {
    struct Answer {
        const char* path;
        Headers headers;
        int status;
        const char* finalPath;
        const char* header;  // looked up without regard to case
        std::optional<std::string> value;
        std::string body;
    };
    const Answer answers[] = {
        {"/echo", {}, 200, "/echo", "x-echo-method", "GET", ""},
        {"/missing", {}, 404, "/missing", "X-REASON", "no such contact", "not here"},
        {"/old", {}, 200, "/echo", "Location", std::nullopt, ""},  // only the final answer's headers are kept
        {"/text", {}, 200, "/text", "content-type", "text/plain", longText()},
        {"/text", {{"Accept-Encoding", "gzip"}}, 200, "/text", "Content-Encoding", "gzip", longText()},
    };
    for (const auto& answer : answers) {
        SCOPED_TRACE(answer.path);
        Probe probe;
        send(*manager, YHTTPMethod::GET, server.url(answer.path), probe, {}, false, YRequestPriority::normal,
             answer.headers);
        const auto outcome = probe.await();
        ASSERT_TRUE(outcome && outcome->response && outcome->data);
        EXPECT_FALSE(outcome->error);
        EXPECT_EQ(outcome->response->statusCode, answer.status);
        EXPECT_EQ(outcome->response->url, server.url(answer.finalPath));
        EXPECT_EQ(outcome->response->header(answer.header), answer.value);
        EXPECT_EQ(outcome->body(), answer.body);
    }
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

// Beyond six requests per host, requests wait and start by priority. Cancelling a running one frees its slot,
// cancelling a waiting one keeps it from the server, and destroying the client cancels the rest and joins its
// threads. Every completion runs once; ids unknown or done are ignored.
TEST_F(YNetworkManagerTest, RequestsBeyondSixPerHostWaitByPriorityAndEndOnceWhenCancelledOrDestroyed) {
    // Once the server has answered, its worker threads all exist and the count below is stable.
    Probe warmUp, finished;
    get("/echo", warmUp);
    ASSERT_TRUE(warmUp.await());
    const std::size_t threadsBefore = testsupport::processThreadCount();
    auto owned = std::make_shared<YNetworkManager>(YNetworkManager::Options{.completionThreads = 3});
    const auto hold = [&](const std::string& name, const Probe& probe, YRequestPriority priority) {
        return send(*owned, YHTTPMethod::GET, server.url("/hold/" + name), probe, {}, false, priority).value_or(-1);
    };
    const auto finishedId = send(*owned, YHTTPMethod::GET, server.url("/echo"), finished).value_or(-1);
    ASSERT_TRUE(finished.await());
    std::vector<Probe> held(6);
    std::vector<std::int64_t> heldIds;
    for (std::size_t i = 0; i < held.size(); ++i)
        heldIds.push_back(hold(std::to_string(i), held[i], YRequestPriority::veryLow));
    ASSERT_TRUE(server.waitForRequests(2 + 6));
    EXPECT_GT(testsupport::processThreadCount(), threadsBefore);

    Probe low, top, dropped, normal;
    hold("low", low, YRequestPriority::low);
    hold("top", top, YRequestPriority::veryHigh);
    const auto droppedId = hold("dropped", dropped, YRequestPriority::veryHigh);
    hold("normal", normal, YRequestPriority::normal);
    owned->cancel(droppedId);
    expectError(dropped, YNetworkError::cancelled);
    owned->cancel(heldIds[0]);
    ASSERT_TRUE(server.waitForRequests(9));
    owned->cancel(heldIds[1]);
    ASSERT_TRUE(server.waitForRequests(10));
    for (const auto id : {heldIds[0], finishedId, finishedId + 1000}) owned->cancel(id);

    owned.reset();

    const auto seen = server.seen();
    ASSERT_EQ(seen.size(), 10u) << "a cancelled or still waiting request reached the server";
    EXPECT_EQ(seen[8].path, "/hold/top");
    EXPECT_EQ(seen[9].path, "/hold/normal");
    held.insert(held.end(), {low, top, dropped, normal});
    for (const auto& probe : held) {
        EXPECT_EQ(probe.calls(), 1u) << "completed once, before the destructor returned";
        expectError(probe, YNetworkError::cancelled);
    }
    EXPECT_EQ(finished.calls(), 1u);
    EXPECT_TRUE(testsupport::threadCountFallsTo(threadsBefore));
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
    ASSERT_TRUE(server.waitForRequests(1));
    Probe second;
    get("/echo", second);
    const auto outcome = second.await();
    if (outcome) secondDone->set_value();
    ASSERT_TRUE(outcome) << "the second transfer stalled behind the first completion";
    EXPECT_NE(outcome->thread, std::this_thread::get_id());
    ASSERT_TRUE(testsupport::becomesReady(firstResult));
    EXPECT_TRUE(firstResult.get());
}

}  // namespace
}  // namespace ycontacts

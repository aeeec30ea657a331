// Injected faults: each kind reaches the client as intended and is used up after its count.

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

#include "SampleServer/SampleServerTestSupport.h"

using sample_server::Fault;
using sample_server::SampleContactsServer;
using sample_server_test::getJson;
using sample_server_test::rawGet;
using sample_server_test::smallOptions;

namespace {

constexpr const char* kListPath = "/api/v1/accounts/self/contacts";

class SampleFaults : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_GT(server.start(), 0); }

    sample_server_test::JsonReply list(int page = 1) {
        return getJson(server, kListPath, {{"page", std::to_string(page)}, {"per_page", "10"}}, token());
    }

    std::string token() const { return server.userToken("u1"); }

    // Waits (bounded) until the server has logged `count` requests.
    bool waitForRequests(std::size_t count) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (server.requestLog().size() < count) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            std::this_thread::yield();
        }
        return true;
    }

    SampleContactsServer server{smallOptions()};
};

}  // namespace

TEST_F(SampleFaults, StatusFaultAnswersWithThatStatusForItsCountThenStops) {
    server.injectFault(Fault{.pathContains = "/self/contacts", .times = 2, .status = 500});
    for (int i = 0; i < 2; ++i) {
        const auto reply = list();
        EXPECT_EQ(reply.status, 500);
        EXPECT_EQ(reply.body["status_code"], 500);
        EXPECT_TRUE(reply.body["errors"].is_array());
    }
    EXPECT_EQ(server.pendingFaults(), 0u);
    EXPECT_EQ(list().status, 200);
}

TEST_F(SampleFaults, FaultMatchesOnlyItsPathAndPage) {
    server.injectFault(Fault{.pathContains = "/self/contacts", .page = 2, .status = 503});
    EXPECT_EQ(getJson(server, "/api/v1/accounts/self/categories", {}, token()).status, 200);
    EXPECT_EQ(list(1).status, 200);
    EXPECT_EQ(list(3).status, 200);
    EXPECT_EQ(server.pendingFaults(), 1u);
    EXPECT_EQ(list(2).status, 503);
    EXPECT_EQ(list(2).status, 200);
}

TEST_F(SampleFaults, Error404EnvelopeComesWithStatus200UnlessAStatusIsGiven) {
    server.injectFault(Fault{.pathContains = "/yct/getContactsList", .error404Envelope = true});
    auto reply = getJson(server, "/yct/getContactsList", {{"yid", "u1"}}, token());
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, nlohmann::json::parse(R"({"errors":[{"message":"not found"}],"status_code":404})"));
    EXPECT_TRUE(getJson(server, "/yct/getContactsList", {{"yid", "u1"}}, token()).body.contains("contacts"));

    server.injectFault(Fault{.pathContains = kListPath, .status = 404, .error404Envelope = true});
    reply = list();
    EXPECT_EQ(reply.status, 404);
    EXPECT_EQ(reply.body["status_code"], 404);
}

TEST_F(SampleFaults, TruncatedBodyAnnouncesTheFullLengthAndClosesHalfWay) {
    const std::string target = std::string(kListPath) + "?page=1&per_page=10";
    const auto whole = rawGet(server.port(), target, token());
    ASSERT_EQ(whole.status, 200);
    ASSERT_EQ(whole.contentLength, whole.body.size());

    server.injectFault(Fault{.pathContains = kListPath, .truncateBody = true});
    const auto cut = rawGet(server.port(), target, token());
    EXPECT_EQ(cut.status, 200);
    EXPECT_EQ(cut.contentLength, whole.body.size());
    EXPECT_EQ(cut.body, whole.body.substr(0, whole.body.size() / 2));

    httplib::Client client(server.baseURL());
    server.injectFault(Fault{.pathContains = kListPath, .truncateBody = true});
    const auto result = client.Get(target.c_str(), httplib::Headers{{"Authorization", token()}});
    EXPECT_FALSE(result) << "a client reading by Content-Length sees the body end early";
    EXPECT_EQ(server.pendingFaults(), 0u);
}

TEST_F(SampleFaults, MalformedBodyIsCompleteOnTheWireButNotJson) {
    server.injectFault(Fault{.pathContains = kListPath, .malformedBody = true});
    const auto reply = rawGet(server.port(), std::string(kListPath) + "?page=1", token());
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.contentLength, reply.body.size());
    EXPECT_FALSE(reply.body.empty());
    EXPECT_TRUE(nlohmann::json::parse(reply.body, nullptr, false).is_discarded());
    EXPECT_EQ(list().body["contacts"].size(), 10u);
}

TEST_F(SampleFaults, DroppedConnectionSendsNothingAtAll) {
    server.injectFault(Fault{.pathContains = kListPath, .dropConnection = true});
    const auto raw = rawGet(server.port(), std::string(kListPath) + "?page=1", token());
    EXPECT_TRUE(raw.bytes.empty()) << raw.bytes;

    server.injectFault(Fault{.pathContains = "/file/download", .dropConnection = true});
    httplib::Client client(server.baseURL());
    const auto result = client.Get("/file/download?ID=u1&t=user&API=true&fs=thumb",
                                   httplib::Headers{{"Authorization", token()}});
    EXPECT_FALSE(result);
    EXPECT_EQ(list().status, 200) << "later requests are served normally";
}

TEST_F(SampleFaults, DelayedRequestIsAnsweredAfterALaterRequestAndStillCorrectly) {
    server.injectFault(Fault{.pathContains = kListPath, .page = 4, .delay = std::chrono::milliseconds(50)});
    const auto delayedButFine = list(4);
    EXPECT_EQ(delayedButFine.status, 200);
    EXPECT_EQ(delayedButFine.body["page"], 4);

    // A long delay: a request sent later overtakes the delayed one; stopping the server ends the wait.
    server.clearRequestLog();
    server.injectFault(Fault{.pathContains = kListPath, .page = 2, .delay = std::chrono::minutes(5)});
    auto delayed = std::async(std::launch::async, [this] { return list(2).status; });
    ASSERT_TRUE(waitForRequests(1));
    EXPECT_EQ(list(1).status, 200);
    EXPECT_EQ(delayed.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
    server.stop();
    EXPECT_EQ(delayed.wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST_F(SampleFaults, ClearFaultsDropsEveryPendingFault) {
    server.injectFault(Fault{.pathContains = "", .times = 100, .status = 500});
    server.injectFault(Fault{.pathContains = "/yct", .dropConnection = true});
    EXPECT_EQ(server.pendingFaults(), 2u);
    server.clearFaults();
    EXPECT_EQ(server.pendingFaults(), 0u);
    EXPECT_EQ(list().status, 200);
}

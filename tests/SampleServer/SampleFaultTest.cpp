// Injected faults: each kind reaches the client as intended and is used up after its count.

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <thread>

#include "SampleServer/SampleServerTestSupport.h"
#include "Support/SampleServerFixture.h"
#include "Support/Waiting.h"

using sample_server::Fault;
using sample_server_test::getJson;
using sample_server_test::smallOptions;

namespace {

constexpr const char* kListPath = "/api/v1/accounts/self/contacts";

class SampleFaults : public ycontacts::testsupport::SampleServerTest {
protected:
    SampleFaults() : SampleServerTest(smallOptions()) {}

    sample_server_test::JsonReply list(int page = 1) {
        return getJson(server, kListPath, {{"page", std::to_string(page)}, {"per_page", "10"}}, token());
    }

    std::string token() const { return server.userToken("u1"); }
};

}  // namespace

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

TEST_F(SampleFaults, DelayedRequestIsAnsweredAfterALaterRequestAndStillCorrectly) {
    server.injectFault(Fault{.pathContains = kListPath, .page = 4, .delay = std::chrono::milliseconds(50)});
    const auto delayedButFine = list(4);
    EXPECT_EQ(delayedButFine.status, 200);
    EXPECT_EQ(delayedButFine.body["page"], 4);

    // A long delay: a request sent later overtakes the delayed one; stopping the server ends the wait.
    server.clearRequestLog();
    server.injectFault(Fault{.pathContains = kListPath, .page = 2, .delay = std::chrono::minutes(5)});
    auto delayed = std::async(std::launch::async, [this] { return list(2).status; });
    ASSERT_TRUE(ycontacts::testsupport::eventually([&] { return !server.requestLog().empty(); }));
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

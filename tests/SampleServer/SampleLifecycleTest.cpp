// The server's connections: keep-alive and pipelined requests, a dropped connection that leaves the others
// alone, and a stop that closes idle connections and leaves no thread behind.

#include <gtest/gtest.h>

#include "SampleServer/SampleServerTestSupport.h"
#include "Support/Waiting.h"

using sample_server::Fault;
using sample_server::SampleContactsServer;
using sample_server_test::RawConnection;
using sample_server_test::rawGet;
using sample_server_test::smallOptions;
using ycontacts::testsupport::processThreadCount;
using ycontacts::testsupport::threadCountFallsTo;

namespace {

const std::string kListTarget = "/api/v1/accounts/self/contacts?per_page=5&page=";

int pageOf(const sample_server_test::RawReply& reply) {
    const auto body = nlohmann::json::parse(reply.body, nullptr, false);
    return body.is_object() ? body.value("page", -1) : -1;
}

}  // namespace

TEST(SampleLifecycle, OneConnectionServesPipelinedRequestsInOrder) {
    SampleContactsServer server{smallOptions()};
    ASSERT_GT(server.start(), 0);
    RawConnection connection(server.port());
    ASSERT_TRUE(connection.sendGets({kListTarget + "1", kListTarget + "2", kListTarget + "3"}, "token-u1"));
    for (int page = 1; page <= 3; ++page) {
        const auto reply = connection.readReply();
        ASSERT_EQ(reply.status, 200) << "page " << page;
        EXPECT_EQ(pageOf(reply), page);
    }
    ASSERT_TRUE(connection.sendGets({kListTarget + "4"}, "token-u1"));
    EXPECT_EQ(pageOf(connection.readReply()), 4) << "the connection stays open after a pipelined burst";
}

TEST(SampleLifecycle, DroppedConnectionLeavesOtherOpenConnectionsServing) {
    SampleContactsServer server{smallOptions()};
    ASSERT_GT(server.start(), 0);
    RawConnection kept(server.port());
    ASSERT_TRUE(kept.sendGets({kListTarget + "1"}, "token-u1"));
    ASSERT_EQ(kept.readReply().status, 200);

    server.injectFault(Fault{.pathContains = "/self/contacts", .page = 2, .dropConnection = true});
    RawConnection dropped(server.port());
    ASSERT_TRUE(dropped.sendGets({kListTarget + "2"}, "token-u1"));
    EXPECT_EQ(dropped.readReply().status, 0);
    EXPECT_TRUE(dropped.closedByServer());

    ASSERT_TRUE(kept.sendGets({kListTarget + "2"}, "token-u1"));
    const auto reply = kept.readReply();
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(pageOf(reply), 2);
}

TEST(SampleLifecycle, StopClosesIdleConnectionsJoinsItsThreadsAndStartServesAgain) {
    const std::size_t threadsBefore = processThreadCount();
    SampleContactsServer server{smallOptions()};
    ASSERT_GT(server.start(), 0);
    RawConnection idle(server.port());
    ASSERT_TRUE(idle.sendGets({kListTarget + "1"}, "token-u1"));
    ASSERT_EQ(idle.readReply().status, 200);
    EXPECT_GT(processThreadCount(), threadsBefore);

    server.stop();
    EXPECT_TRUE(threadCountFallsTo(threadsBefore));
    EXPECT_TRUE(idle.closedByServer());
    EXPECT_EQ(rawGet(server.port(), kListTarget + "1", "token-u1").status, 0) << "nothing listens any more";

    ASSERT_GT(server.start(), 0);
    EXPECT_EQ(rawGet(server.port(), kListTarget + "1", "token-u1").status, 200);
    server.stop();
    EXPECT_TRUE(threadCountFallsTo(threadsBefore));
}

#include "ycontacts/YNetworkManagerDependent/YNetworkService.h"

#include <gtest/gtest.h>

#include <future>

#include "Support/Waiting.h"
#include "sample_server/SampleContactsServer.h"
#include "ycontacts/Contacts/Data/Network/YContactsParser.h"

namespace ycontacts {
namespace {

using Ids = std::vector<std::int64_t>;

// Records the cancellations the registry asks for instead of reaching a client.
class RecordingService : public YNetworkService {
public:
    RecordingService() : YNetworkService(nullptr, std::make_shared<YContactsParser>()) {}
    Ids cancelled;

protected:
    void cancelTask(std::int64_t taskId) override { cancelled.push_back(taskId); }
};

TEST(YNetworkServiceTest, TheRegistryKeepsEachUsersIdsInOrderAndCancelTakesThemAll) {
    RecordingService service;
    service.addTaskId("u1", std::nullopt);
    EXPECT_FALSE(service.taskIds("u1"));
    for (const auto id : {4, 9, 4, 7}) service.addTaskId("u1", id);
    service.addTaskId("u2", 1);
    // Removing takes the first occurrence; unknown ids change nothing.
    service.removeTaskId("u1", 4);
    service.removeTaskId("u1", std::nullopt);
    service.removeTaskId("u1", 77);
    EXPECT_EQ(service.taskIds("u1"), (Ids{9, 4, 7}));
    service.removeTaskId("u2", 1);
    EXPECT_EQ(service.taskIds("u2"), Ids{}) << "an emptied list stays as an empty list";

    service.cancelTasks("u1");
    service.cancelTasks("u1");
    EXPECT_EQ(service.cancelled, (Ids{9, 4, 7}));
    // A completion arriving after the cancel finds nothing to remove and creates no entry.
    service.removeTaskId("u1", 9);
    EXPECT_FALSE(service.taskIds("u1"));
}

// Sends through a real client but never asks it to cancel: as if every transfer had already finished by the
// time cancelTasks reached the client, so only the registry stands between a cancelled request and its body.
class LateCancelService : public YNetworkService, public std::enable_shared_from_this<LateCancelService> {
public:
    explicit LateCancelService(std::weak_ptr<YNetworkManager> client)
        : YNetworkService(nullptr, std::make_shared<YContactsParser>(), std::move(client)) {}

    void get(const std::string& yuid, const std::string& url, BodyCompletion completion) {
        ASSERT_TRUE(sendGet(weak_from_this(), yuid, YContactsURLParameters{url, {}}, "token-u1",
                            YRequestPriority::normal, std::move(completion)));
    }

protected:
    void cancelTask(std::int64_t) override {}
};

// What a completion received, as one line: body or not, the status and the transport error's code.
std::string outcome(const auto& data, const auto& response, const auto& error) {
    return std::string(data ? "body " : "no body ") + (response ? std::to_string(response->statusCode) : "-") + " " +
           (error ? std::to_string(error->code) : "-");
}

TEST(YNetworkServiceTest, ARequestCancelledAfterItsTransferFinishedDeliversNoBody) {
    sample_server::SampleContactsServer server{sample_server::SampleServerOptions{}};
    ASSERT_GT(server.start(), 0);
    const auto url = server.baseURL() + "/api/v1/accounts/self/contacts";
    // One completion thread: while the first completion blocks, every later one waits behind it.
    auto client = std::make_shared<YNetworkManager>(YNetworkManager::Options{.completionThreads = 1});
    auto service = std::make_shared<LateCancelService>(client);

    std::promise<std::string> blockerOutcome, cancelledOutcome;
    std::promise<void> blockerRunning, gate;
    auto gateOpened = gate.get_future().share();
    service->get("u0", url, [&](auto data, auto response, auto error) {
        blockerRunning.set_value();
        gateOpened.wait();
        blockerOutcome.set_value(outcome(data, response, error));
    });
    auto running = blockerRunning.get_future();
    ASSERT_TRUE(testsupport::becomesReady(running));
    service->get("u1", url, [&](auto data, auto response, auto error) {
        cancelledOutcome.set_value(outcome(data, response, error));
    });
    service->cancelTasks("u1");
    gate.set_value();

    auto blocker = blockerOutcome.get_future();
    auto cancelled = cancelledOutcome.get_future();
    ASSERT_TRUE(testsupport::becomesReady(blocker) && testsupport::becomesReady(cancelled));
    EXPECT_EQ(blocker.get(), "body 200 -");
    EXPECT_EQ(cancelled.get(), "no body - " + std::to_string(YNetworkError::cancelled));
    // The server did answer it: the client finished the transfer, the registry withheld its body.
    EXPECT_EQ(server.requestLog().size(), 2u);
}

}  // namespace
}  // namespace ycontacts

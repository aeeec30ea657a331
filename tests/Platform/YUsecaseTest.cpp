#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

#include "Support/UsecaseSupport.h"
#include "ycontacts/Platform/MarloComponents/YRequest.h"
#include "ycontacts/Platform/MarloComponents/YResponse.h"
#include "ycontacts/Platform/MarloComponents/YUsecase.h"

namespace ycontacts {
namespace {

struct EchoResponse : YResponse {
    std::string yuid;
    int round = 0;
    std::thread::id thread;
};

// Answers twice, at once, on the thread that runs it, and counts its runs.
class EchoUsecase : public YUsecase<YRequest, EchoResponse> {
public:
    std::shared_ptr<std::atomic<int>> runs = std::make_shared<std::atomic<int>>(0);

protected:
    void run(const YRequest& request, Callback callback) override {
        ++*runs;
        for (int round = 1; round <= 2; ++round) {
            EchoResponse response;
            response.yuid = request.yuid;
            response.round = round;
            response.thread = std::this_thread::get_id();
            invoke(callback, response);
        }
    }
};

TEST(YUsecaseTest, ExecuteRunsOnTheUsecaseQueueAndDeliversEachInvokeInOrder) {
    auto usecase = std::make_shared<EchoUsecase>();
    const auto responses = testsupport::responsesOf<EchoResponse>(*usecase, YRequest("user-1"), 2);
    ASSERT_EQ(responses.size(), 2u);
    EXPECT_EQ(responses[0].round, 1);
    EXPECT_EQ(responses[1].round, 2);
    EXPECT_EQ(responses[0].yuid, "user-1");
    EXPECT_NE(responses[0].thread, std::this_thread::get_id());
    EXPECT_EQ(usecase->runs->load(), 1);
}

}  // namespace
}  // namespace ycontacts

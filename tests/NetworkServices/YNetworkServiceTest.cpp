#include "ycontacts/YNetworkManagerDependent/YNetworkService.h"

#include <gtest/gtest.h>

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

TEST(YNetworkServiceTest, AddKeepsDuplicatesAndRemoveTakesTheFirstOccurrence) {
    RecordingService service;
    service.addTaskId("u1", std::nullopt);
    EXPECT_FALSE(service.taskIds("u1"));

    service.addTaskId("u1", 4);
    service.addTaskId("u1", 9);
    service.addTaskId("u1", 4);
    service.addTaskId("u2", 1);
    EXPECT_EQ(service.taskIds("u1"), (Ids{4, 9, 4}));

    service.removeTaskId("u1", 4);
    EXPECT_EQ(service.taskIds("u1"), (Ids{9, 4}));
    service.removeTaskId("u1", std::nullopt);
    service.removeTaskId("u1", 77);
    service.removeTaskId("nobody", 9);
    EXPECT_EQ(service.taskIds("u1"), (Ids{9, 4}));
    EXPECT_FALSE(service.taskIds("nobody"));

    service.removeTaskId("u2", 1);
    EXPECT_EQ(service.taskIds("u2"), Ids{});  // an emptied list stays as an empty list
}

TEST(YNetworkServiceTest, CancelGoesInListOrderAndDropsTheUser) {
    RecordingService service;
    service.addTaskId("u1", 5);
    service.addTaskId("u1", 7);
    service.addTaskId("u2", 6);
    service.cancelTasks("u1");
    EXPECT_EQ(service.cancelled, (Ids{5, 7}));
    EXPECT_FALSE(service.taskIds("u1"));
    EXPECT_EQ(service.taskIds("u2"), Ids{6});

    service.cancelTasks("u1");
    EXPECT_EQ(service.cancelled, (Ids{5, 7}));
    // A completion arriving after the cancel finds nothing to remove and creates no entry.
    service.removeTaskId("u1", 5);
    EXPECT_FALSE(service.taskIds("u1"));
}

TEST(YNetworkServiceTest, CancelWithTheClientGoneStillDropsTheUser) {
    auto client = std::make_shared<YNetworkManager>();
    YNetworkService service(nullptr, std::make_shared<YContactsParser>(), client);
    client.reset();
    service.addTaskId("u1", 3);
    service.cancelTasks("u1");
    EXPECT_FALSE(service.taskIds("u1"));
}

TEST(YNetworkServiceTest, EveryServiceHasItsOwnLabelledBox) {
    RecordingService first;
    RecordingService second;
    const std::string prefix = "com.ycontacts.SafeReadWrite.";
    EXPECT_EQ(first.tasksListLabel().rfind(prefix, 0), 0u);
    EXPECT_EQ(first.tasksListLabel().size(), prefix.size() + 36);
    EXPECT_NE(first.tasksListLabel(), second.tasksListLabel());
}

}  // namespace
}  // namespace ycontacts

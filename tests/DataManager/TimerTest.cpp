// The data manager's two timers, seen through what they do: the scheduled sync announces downloads from the
// data manager's own thread, and the in-memory timer empties the search state some time after a search.

#include <algorithm>
#include <future>
#include <mutex>
#include <thread>

#include "DataManager/DataManagerTestSupport.h"

namespace ycontacts::dmtest {
namespace {

// Notes the threads, other than the test's, that announce a download; the first one's end fulfils `ended`.
class QueueThreadObserver : public YContactsNotification {
public:
    void downloadStarted(const std::string&, const std::optional<std::string>&, bool) override {
        if (std::this_thread::get_id() == test_) return;
        std::call_once(once_, [this] { fulfilWhenThreadEnds(ended); });
        threads.add(std::this_thread::get_id());
    }
    Received<std::thread::id> threads;
    const std::shared_ptr<std::promise<void>> ended = std::make_shared<std::promise<void>>();

private:
    const std::thread::id test_ = std::this_thread::get_id();
    std::once_flag once_;
};

TEST_F(FakesTest, TimersRunOnTheDataManagersThreadWhichEndsWithIt) {
    LogCapture quiet;
    // Every page fails at once, so each scheduled sync announces a fresh download of the incomplete user.
    ON_CALL(*network, getContacts).WillByDefault([](auto&&, auto&&, auto, auto, auto, auto, auto callback) {
        callback(YContactNetworkResponse::getResponse(YContactError::networkFailure));
    });
    const auto observer = std::make_shared<QueueThreadObserver>();
    YNotificationCenter::shared().addObserver<YContactsNotification>(observer);
    auto ended = observer->ended->get_future();
    auto manager = std::make_shared<YContactsDataManager>(database, network, preference, fileService,
                                                          YContactsDataManager::Intervals{0.002, 0.005});
    manager->start("u1", std::nullopt);

    ASSERT_TRUE(observer->threads.waitFor(3));
    const auto threads = observer->threads.values();
    EXPECT_TRUE(std::all_of(threads.begin(), threads.end(), [&](auto id) { return id == threads.front(); }));

    // Each search (re)starts the in-memory timer, replacing the one before; only its firing empties the state.
    for (const char* keyword : {"a", "ab"}) {
        manager->getContacts({.yuid = "u1", .searchStr = keyword, .requestType = RequestType::server}, nullptr);
    }
    EXPECT_TRUE(eventually([&] { return manager->queries()->inMemoryState().currentNetworkKeyword.empty(); }));
    manager->getContacts({.yuid = "u2", .searchStr = "b", .requestType = RequestType::server}, nullptr);
    EXPECT_TRUE(eventually([&] { return manager->queries()->inMemoryState().currentNetworkKeyword.empty(); }));

    manager.reset();
    EXPECT_TRUE(becomesReady(ended));
    YNotificationCenter::shared().removeObserver<YContactsNotification>(observer.get());
}

}  // namespace
}  // namespace ycontacts::dmtest

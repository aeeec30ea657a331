#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <latch>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "Support/FakeAuthentication.h"
#include "Support/FakeContactsDatabaseService.h"
#include "Support/FakeContactsFileService.h"
#include "Support/FakeContactsNetworkService.h"
#include "Support/FakeContactsPreferenceService.h"
#include "Support/FakeDataManagers.h"
#include "Support/LogCapture.h"
#include "Support/TemporaryDirectory.h"
#include "Support/UsecaseSupport.h"
#include "Support/Waiting.h"
#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

namespace ycontacts {
namespace {

using namespace testsupport;
using ::testing::_;
using ::testing::AllOf;
using ::testing::Field;
using ::testing::InvokeArgument;
using ::testing::NiceMock;
using ::testing::StrictMock;
namespace fs = std::filesystem;

// Counts every builder call and keeps what each builder was given and what it made.
struct BuilderLog {
    std::atomic<int> database{0};
    std::atomic<int> file{0};
    std::atomic<int> network{0};
    std::atomic<int> preference{0};
    std::atomic<int> dataManager{0};

    std::mutex mutex;
    std::optional<fs::path> databaseURL;
    std::optional<fs::path> contactImageDirURL;
    std::optional<fs::path> preferenceURL;
    std::shared_ptr<YContactsAuthenticationContract> authorization;
    std::shared_ptr<YContactsDatabaseContract> madeDatabase;
    std::shared_ptr<YContactsFileServiceContract> madeFile;
    std::shared_ptr<YContactsNetworkContract> madeNetwork;
    std::shared_ptr<YContactsPreferenceContract> madePreference;
    // What the data manager builder received.
    std::shared_ptr<YContactsDatabaseContract> givenDatabase;
    std::shared_ptr<YContactsNetworkContract> givenNetwork;
    std::shared_ptr<YContactsPreferenceContract> givenPreference;
    std::shared_ptr<YContactsFileServiceContract> givenFile;

    // Calls so far, in the order database, file, network, preference, data manager.
    std::vector<int> calls() const {
        return {database.load(), file.load(), network.load(), preference.load(), dataManager.load()};
    }
};

// Wraps `make` so that each call is counted and what it made is kept in `made`.
template <class Contract, class Fake, class... Args>
auto counted(BuilderLog& log, std::atomic<int>& calls, std::shared_ptr<Contract>& made,
             std::function<void(Args...)> record) {
    return [&log, &calls, &made, record](Args... args) -> std::shared_ptr<Contract> {
        ++calls;
        std::lock_guard lock(log.mutex);
        record(args...);
        made = std::make_shared<NiceMock<Fake>>();
        return made;
    };
}

YContactService::Builders countingBuilders(BuilderLog& log, std::shared_ptr<YContactsDataManagerContract> manager) {
    YContactService::Builders builders;
    builders.database = counted<YContactsDatabaseContract, FakeContactsDatabaseService>(
        log, log.database, log.madeDatabase, std::function([&log](const fs::path& url) { log.databaseURL = url; }));
    builders.file = counted<YContactsFileServiceContract, FakeContactsFileService>(
        log, log.file, log.madeFile, std::function([&log](const fs::path& url) { log.contactImageDirURL = url; }));
    builders.network = counted<YContactsNetworkContract, FakeContactsNetworkService>(
        log, log.network, log.madeNetwork,
        std::function([&log](const std::shared_ptr<YContactsAuthenticationContract>& authorization) {
            log.authorization = authorization;
        }));
    builders.preference = counted<YContactsPreferenceContract, FakeContactsPreferenceService>(
        log, log.preference, log.madePreference,
        std::function([&log](const std::optional<fs::path>& url) { log.preferenceURL = url; }));
    builders.dataManager = [&log, manager](auto database, auto network, auto preference, auto file) {
        ++log.dataManager;
        std::lock_guard lock(log.mutex);
        log.givenDatabase = database;
        log.givenNetwork = network;
        log.givenPreference = preference;
        log.givenFile = file;
        return manager;
    };
    return builders;
}

class YContactServiceTest : public ::testing::Test {
protected:
    void TearDown() override { YSqliteHelper::getShared().unregisterDB(YContactService::databaseIdentifier); }

    YContactService::Config fullConfig() {
        return YContactService::Config(authenticator, folder.file("store.sqlite"), folder.file("photos"));
    }

    TemporaryDirectory folder;
    std::shared_ptr<FakeAuthentication> authenticator = std::make_shared<FakeAuthentication>();
    std::shared_ptr<StrictMock<FakeContactsDataManager>> dataManager =
        std::make_shared<StrictMock<FakeContactsDataManager>>();
    BuilderLog log;
    YContactService service{countingBuilders(log, dataManager)};
};

TEST_F(YContactServiceTest, ServicesFirstNeededBeforeConfigStayAbsentAfterConfigIsSet) {
    ASSERT_NE(service.syncHandler(), nullptr);
    service.config = fullConfig();
    ASSERT_NE(service.syncHandler(), nullptr);
    EXPECT_CALL(*dataManager, removeAllData("u1"));
    service.removeAllData("u1");
    ASSERT_TRUE(drainUsecaseQueue());

    EXPECT_EQ(log.calls(), (std::vector<int>{0, 0, 0, 1, 1}));
    std::lock_guard lock(log.mutex);
    EXPECT_EQ(log.givenDatabase, nullptr);
    EXPECT_EQ(log.givenNetwork, nullptr);
    EXPECT_EQ(log.givenFile, nullptr);
    EXPECT_EQ(log.givenPreference, log.madePreference);
    EXPECT_FALSE(fs::exists(folder.file("store.sqlite")));
}

TEST_F(YContactServiceTest, ConfiguredServicesGetTheirInputsUnchangedAndTheDatabaseIsRegisteredAtThatPath) {
    service.config = fullConfig();
    ASSERT_NE(service.syncHandler(), nullptr);

    {
        std::lock_guard lock(log.mutex);
        EXPECT_EQ(log.databaseURL, folder.file("store.sqlite"));
        EXPECT_EQ(log.contactImageDirURL, folder.file("photos"));
        EXPECT_EQ(log.preferenceURL, folder.file("store.sqlite"));
        EXPECT_EQ(log.authorization, authenticator);
        EXPECT_EQ(log.givenDatabase, log.madeDatabase);
        EXPECT_EQ(log.givenNetwork, log.madeNetwork);
        EXPECT_EQ(log.givenPreference, log.madePreference);
        EXPECT_EQ(log.givenFile, log.madeFile);
    }

    // The default store registers the configured file itself (not a file inside it) as "DefaultDB".
    const auto store = YContactService::Builders::defaults().database(folder.file("store.sqlite"));
    ASSERT_TRUE(YSqliteHelper::getShared().execute("CREATE TABLE probe(x INTEGER)", true, "DefaultDB").ok());
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open_v2(folder.file("store.sqlite").c_str(), &database, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(database, "SELECT count(*) FROM sqlite_master WHERE name = 'probe'", -1, &statement,
                                 nullptr),
              SQLITE_OK);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ROW);
    EXPECT_EQ(sqlite3_column_int(statement, 0), 1);
    sqlite3_finalize(statement);
    sqlite3_close(database);
}

TEST_F(YContactServiceTest, MissingLocationsLeaveOnlyTheirServicesAbsent) {
    service.config = YContactService::Config(authenticator, std::nullopt, std::nullopt);
    ASSERT_NE(service.syncHandler(), nullptr);

    EXPECT_EQ(log.calls(), (std::vector<int>{0, 0, 1, 1, 1}));
    std::lock_guard lock(log.mutex);
    EXPECT_EQ(log.givenDatabase, nullptr);
    EXPECT_EQ(log.givenFile, nullptr);
    EXPECT_EQ(log.givenNetwork, log.madeNetwork);
}

TEST_F(YContactServiceTest, ConcurrentFirstUseBuildsEveryComponentOnce) {
    service.config = fullConfig();
    constexpr int callers = 8;
    std::latch ready(callers);
    std::vector<std::shared_ptr<YContactSyncHandlerContract>> handlers(callers);
    std::vector<std::thread> threads;
    for (int caller = 0; caller < callers; ++caller) {
        threads.emplace_back([&, caller] {
            ready.arrive_and_wait();
            handlers[caller] = service.syncHandler();
        });
    }
    for (auto& thread : threads) thread.join();

    for (const auto& handler : handlers) EXPECT_EQ(handler, handlers.front());
    EXPECT_NE(handlers.front(), nullptr);
    EXPECT_EQ(log.calls(), (std::vector<int>{1, 1, 1, 1, 1}));
}

TEST(YContactServiceBuildersTest, ABuilderThatThrowsLeavesItsSlotAbsentForGood) {
    std::atomic<int> attempts{0};
    YContactService::Builders builders;
    builders.preference = [&attempts](const auto&) -> std::shared_ptr<YContactsPreferenceContract> {
        ++attempts;
        throw std::runtime_error("no preferences today");
    };
    std::shared_ptr<YContactsPreferenceContract> received = std::make_shared<NiceMock<FakeContactsPreferenceService>>();
    builders.dataManager = [&received](auto, auto, auto preference, auto) {
        received = preference;
        return std::shared_ptr<YContactsDataManagerContract>(std::make_shared<NiceMock<FakeContactsDataManager>>());
    };
    YContactService service(builders);

    ASSERT_NE(service.syncHandler(), nullptr);
    service.syncHandler();

    EXPECT_EQ(attempts.load(), 1);
    EXPECT_EQ(received, nullptr);
}

// What the host gets back is pinned against a real store in YContactServiceStoreTest.
TEST_F(YContactServiceTest, SuggestionsFromTheNetworkAreSuggestionsAskedOfTheServer) {
    EXPECT_CALL(*dataManager,
                getSuggestionContacts(YContactsQuery{.yuid = "u1", .yoid = "o1", .searchStr = "ann", .limit = 20}, _));
    EXPECT_CALL(*dataManager, getSuggestionContacts(YContactsQuery{.yuid = "u1",
                                                                   .yoid = "o1",
                                                                   .searchStr = "bob",
                                                                   .limit = 5,
                                                                   .isOrg = true,
                                                                   .requestType = RequestType::server},
                                                    _));
    service.getSuggestionContacts("u1", "ann", "o1", 20, std::nullopt, RequestType::preferLocal, nullptr);
    service.getSuggestionContactsFromNetwork("u1", "o1", "bob", 5, true, nullptr);
    ASSERT_TRUE(drainUsecaseQueue());
}

TEST_F(YContactServiceTest, GetContactImageAsksTheSameWhateverIsOrgSays) {
    const auto asked =
        AllOf(Field(&YGetContactImageRequest::contactYuid, "y1"), Field(&YGetContactImageRequest::emailId, "e@x"),
              Field(&YGetContactImageRequest::contactId, "c1"), Field(&YGetContactImageRequest::isThumbnail, false),
              Field(&YGetContactImageRequest::contactType, YContactType::user));
    EXPECT_CALL(*dataManager, getContactImage(asked, _))
        .Times(3)
        .WillRepeatedly(InvokeArgument<1>(std::vector<std::uint8_t>{9}, std::string("/p/c1.png"), std::string("c1")));
    Received<std::pair<std::optional<std::vector<std::uint8_t>>, std::optional<std::string>>> answers;
    auto collect = [&](std::optional<std::vector<std::uint8_t>> data, std::optional<std::string> path) {
        answers.add({std::move(data), std::move(path)});
    };

    for (const std::optional<bool> isOrg : {std::optional<bool>(true), std::optional<bool>(false),
                                            std::optional<bool>()}) {
        service.getContactImage("u1", "e@x", "c1", "y1", false, isOrg, RequestType::server, collect);
    }

    ASSERT_TRUE(answers.waitFor(3));
    for (const auto& [data, path] : answers.values()) {
        EXPECT_EQ(data, std::vector<std::uint8_t>{9});
        EXPECT_EQ(path, "/p/c1.png");
    }
}

TEST_F(YContactServiceTest, RemoveAllDataReachesTheDataManagerOffTheCallersThread) {
    std::promise<std::thread::id> ranOn;
    EXPECT_CALL(*dataManager, removeAllData("u9")).WillOnce([&] { ranOn.set_value(std::this_thread::get_id()); });

    service.removeAllData("u9");

    auto thread = ranOn.get_future();
    ASSERT_EQ(thread.wait_for(waitLimit), std::future_status::ready);
    EXPECT_NE(thread.get(), std::this_thread::get_id());
}

TEST(YContactServiceWithoutDataManagerTest, OperationsAreLoggedNoOps) {
    LogCapture warnings(Logger::Level::warning);
    YContactService service{YContactService::Builders{}};
    service.config = YContactService::Config(std::make_shared<FakeAuthentication>(), std::nullopt, std::nullopt);
    std::atomic<int> callbacks{0};

    service.getContacts("u1", std::nullopt, std::nullopt, std::nullopt, std::nullopt, RequestType::preferLocal,
                        [&](auto) { ++callbacks; });
    service.getContact("u1", "e@x", std::nullopt, std::nullopt, [&](auto) { ++callbacks; });
    service.removeAllData("u1");
    const auto handler = service.syncHandler();
    ASSERT_NE(handler, nullptr);
    handler->start("u1", std::nullopt);

    EXPECT_TRUE(warnings.waitForLinesContaining("YGetContacts has no data manager", 1));
    EXPECT_TRUE(warnings.waitForLinesContaining("YGetContact has no data manager", 1));
    EXPECT_TRUE(warnings.waitForLinesContaining("cannot remove the data of u1", 1));
    EXPECT_TRUE(warnings.waitForLinesContaining("dropped the sync command start", 1));
    EXPECT_FALSE(handler->getContactCount("u1").has_value());
    EXPECT_FALSE(handler->lastUpdatedTime("u1").has_value());
    EXPECT_FALSE(handler->isSyncInProgress("u1"));
    ASSERT_TRUE(drainUsecaseQueue());
    EXPECT_EQ(callbacks.load(), 0);
}

TEST(YContactServiceSharedInstanceTest, IsOneInstanceThatStartsWithoutConfig) {
    auto& first = YContactService::sharedInstance();
    auto& second = YContactService::sharedInstance();
    EXPECT_EQ(&first, &second);
    EXPECT_FALSE(first.config.has_value());
}

}  // namespace
}  // namespace ycontacts

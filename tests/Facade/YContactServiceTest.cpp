#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <filesystem>
#include <latch>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Usecases/UsecaseTestSupport.h"
#include "ycontacts/Contacts/YContactService.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

namespace ycontacts {
namespace {

using namespace usecasetest;
using ::testing::_;
using ::testing::Eq;
using ::testing::NiceMock;
using ::testing::Optional;
using ::testing::StrictMock;
namespace fs = std::filesystem;

class StubDatabase : public YContactsDatabaseContract {
public:
    MOCK_METHOD(void, save, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(std::optional<ContactCount>, getContactCount, (const std::string&), (override));
    MOCK_METHOD(void, updateContacts, (const std::string&, const std::vector<YContact>&), (override));
    MOCK_METHOD(void, deleteContacts, (const std::string&, const std::vector<std::string>&), (override));
    MOCK_METHOD(void, updateContactId, (const std::string&, const std::string&, const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts,
                (const std::string&, std::optional<bool>, const std::optional<std::string>&, std::optional<int>,
                 std::optional<int>),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsList,
                (const std::string&, std::optional<bool>, const std::optional<std::string>&, std::optional<int>,
                 std::optional<int>),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContactsFromEmailIds,
                (const std::string&, const std::vector<std::string>&, std::optional<bool>), (override));
    MOCK_METHOD(std::optional<YContact>, getContactByEmailId, (const std::string&, const std::string&, bool),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactYuid, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(std::optional<YContact>, getContactByContactId, (const std::string&, const std::string&), (override));
    MOCK_METHOD(void, deleteAllDetails, (const std::string&), (override));
    MOCK_METHOD(std::optional<std::vector<YSuggestionContact>>, getSuggestionContacts,
                (const std::string&, std::optional<bool>, const std::string&, int), (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getOrgContactSuggestions,
                (const std::string&, const std::optional<std::string>&, std::optional<int>, int, bool, bool),
                (override));
    MOCK_METHOD(void, fixPersonalContacts, (const std::string&), (override));
    MOCK_METHOD(void, updateContactsUsageCount, (const std::string&, (const std::map<std::string, std::string>&)),
                (override));
    MOCK_METHOD(std::optional<std::vector<YContact>>, getContacts, (const std::string&, const std::string&),
                (override));
    MOCK_METHOD(void, addCategories, (const std::string&, const std::vector<YContactCategory>&), (override));
    MOCK_METHOD(std::optional<std::vector<YContactCategory>>, getCategories, (const std::string&), (override));
    MOCK_METHOD(void, deleteCategories, (const std::string&, const std::vector<std::string>&), (override));
};

class StubFileService : public YContactsFileServiceContract {
public:
    MOCK_METHOD(ImageFile, getContactImage, (const std::string&, const std::string&, bool), (override));
    MOCK_METHOD(std::string, saveContactImage,
                (const std::string&, const std::string&, const std::vector<std::uint8_t>&, bool), (override));
    MOCK_METHOD(void, deleteContactImage, (const std::string&, const std::string&), (override));
    MOCK_METHOD(void, deleteAllImages, (const std::string&), (override));
    MOCK_METHOD(std::optional<std::chrono::system_clock::time_point>, getModifiedDate,
                (const std::string&, const std::string&, bool), (override));
    MOCK_METHOD(void, updateModifiedDate,
                (const std::string&, const std::string&, bool, std::chrono::system_clock::time_point), (override));
};

class StubNetwork : public YContactsNetworkContract {
public:
    MOCK_METHOD(void, getContacts,
                (const std::string&, const std::optional<std::string>&, bool, int, int, std::optional<double>,
                 ContactsPageCallback),
                (override));
    MOCK_METHOD(void, searchContacts,
                (const std::string&, const std::optional<std::string>&, bool, std::optional<int>,
                 const std::optional<std::string>&, SearchCallback),
                (override));
    MOCK_METHOD(void, getContactUsageCount, (const std::string&, UsageCountCallback), (override));
    MOCK_METHOD(void, cancelTasks, (const std::string&), (override));
};

class StubPreference : public YContactsPreferenceContract {
public:
    MOCK_METHOD(void, setStartIndex, (const std::string&, std::int64_t, bool), (override));
    MOCK_METHOD(std::int64_t, startIndex, (const std::string&, bool), (override));
    MOCK_METHOD(void, setCompleteState, (const std::string&, bool, bool), (override));
    MOCK_METHOD(bool, completeState, (const std::string&, bool), (override));
    MOCK_METHOD(std::optional<double>, lastUpdatedTime, (const std::string&), (override));
    MOCK_METHOD(void, setLastUpdatedTime, (const std::string&, double), (override));
    MOCK_METHOD(void, removeAllPreferences, (const std::string&), (override));
};

class StubAuthenticator : public YContactsAuthenticationContract {
public:
    void getAuthorizationHeader(const std::string&, AuthorizationCallback callback) override {
        callback("Bearer t", std::nullopt);
    }
    std::optional<YContactsHost> getContactsHost(const std::string&) override { return std::nullopt; }
};

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
};

YContactService::Builders countingBuilders(BuilderLog& log, std::shared_ptr<YContactsDataManagerContract> manager) {
    YContactService::Builders builders;
    builders.database = [&log](const fs::path& url) -> std::shared_ptr<YContactsDatabaseContract> {
        ++log.database;
        std::lock_guard lock(log.mutex);
        log.databaseURL = url;
        log.madeDatabase = std::make_shared<NiceMock<StubDatabase>>();
        return log.madeDatabase;
    };
    builders.file = [&log](const fs::path& url) -> std::shared_ptr<YContactsFileServiceContract> {
        ++log.file;
        std::lock_guard lock(log.mutex);
        log.contactImageDirURL = url;
        log.madeFile = std::make_shared<NiceMock<StubFileService>>();
        return log.madeFile;
    };
    builders.network = [&log](const std::shared_ptr<YContactsAuthenticationContract>& authorization)
        -> std::shared_ptr<YContactsNetworkContract> {
        ++log.network;
        std::lock_guard lock(log.mutex);
        log.authorization = authorization;
        log.madeNetwork = std::make_shared<NiceMock<StubNetwork>>();
        return log.madeNetwork;
    };
    builders.preference = [&log]() -> std::shared_ptr<YContactsPreferenceContract> {
        ++log.preference;
        std::lock_guard lock(log.mutex);
        log.madePreference = std::make_shared<NiceMock<StubPreference>>();
        return log.madePreference;
    };
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
    void SetUp() override {
        std::random_device random;
        folder = fs::temp_directory_path() / ("ycontacts-facade-" + std::to_string(random()));
        fs::create_directories(folder);
    }
    void TearDown() override {
        YSqliteHelper::getShared().unregisterDB(YContactService::databaseIdentifier);
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    YContactService::Config fullConfig() {
        return YContactService::Config(authenticator, folder / "store.sqlite", folder / "photos");
    }

    fs::path folder;
    std::shared_ptr<StubAuthenticator> authenticator = std::make_shared<StubAuthenticator>();
    std::shared_ptr<StrictMock<MockContactsDataManager>> dataManager =
        std::make_shared<StrictMock<MockContactsDataManager>>();
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

    EXPECT_EQ(log.database.load(), 0);
    EXPECT_EQ(log.file.load(), 0);
    EXPECT_EQ(log.network.load(), 0);
    EXPECT_EQ(log.preference.load(), 1);
    EXPECT_EQ(log.dataManager.load(), 1);
    std::lock_guard lock(log.mutex);
    EXPECT_EQ(log.givenDatabase, nullptr);
    EXPECT_EQ(log.givenNetwork, nullptr);
    EXPECT_EQ(log.givenFile, nullptr);
    EXPECT_EQ(log.givenPreference, log.madePreference);
    EXPECT_FALSE(fs::exists(folder / "store.sqlite"));
}

TEST_F(YContactServiceTest, ConfiguredServicesGetTheirInputsUnchangedAndTheDatabaseIsRegisteredAtThatPath) {
    service.config = fullConfig();
    ASSERT_NE(service.syncHandler(), nullptr);

    {
        std::lock_guard lock(log.mutex);
        EXPECT_EQ(log.databaseURL, folder / "store.sqlite");
        EXPECT_EQ(log.contactImageDirURL, folder / "photos");
        EXPECT_EQ(log.authorization, authenticator);
        EXPECT_EQ(log.givenDatabase, log.madeDatabase);
        EXPECT_EQ(log.givenNetwork, log.madeNetwork);
        EXPECT_EQ(log.givenPreference, log.madePreference);
        EXPECT_EQ(log.givenFile, log.madeFile);
    }

    // The default store registers the configured file itself (not a file inside it) as "DefaultDB".
    const auto store = YContactService::Builders::defaults().database(folder / "store.sqlite");
    ASSERT_TRUE(YSqliteHelper::getShared().execute("CREATE TABLE probe(x INTEGER)", true, "DefaultDB").ok());
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open_v2((folder / "store.sqlite").c_str(), &database, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
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

    EXPECT_EQ(log.database.load(), 0);
    EXPECT_EQ(log.file.load(), 0);
    EXPECT_EQ(log.network.load(), 1);
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
    EXPECT_EQ(log.database.load(), 1);
    EXPECT_EQ(log.file.load(), 1);
    EXPECT_EQ(log.network.load(), 1);
    EXPECT_EQ(log.preference.load(), 1);
    EXPECT_EQ(log.dataManager.load(), 1);
}

TEST(YContactServiceBuildersTest, ABuilderThatThrowsLeavesItsSlotAbsentForGood) {
    std::atomic<int> attempts{0};
    YContactService::Builders builders;
    builders.preference = [&attempts]() -> std::shared_ptr<YContactsPreferenceContract> {
        ++attempts;
        throw std::runtime_error("no preferences today");
    };
    std::shared_ptr<YContactsPreferenceContract> received = std::make_shared<NiceMock<StubPreference>>();
    builders.dataManager = [&received](auto, auto, auto preference, auto) {
        received = preference;
        return std::shared_ptr<YContactsDataManagerContract>(std::make_shared<NiceMock<MockContactsDataManager>>());
    };
    YContactService service(builders);

    ASSERT_NE(service.syncHandler(), nullptr);
    service.syncHandler();

    EXPECT_EQ(attempts.load(), 1);
    EXPECT_EQ(received, nullptr);
}

TEST_F(YContactServiceTest, GetContactsSetsTheRequestFieldsAndLeavesFromAbsent) {
    EXPECT_CALL(*dataManager, getContacts("u1", Optional(std::string("o1")), Optional(std::string("ann")),
                                          Eq(std::nullopt), Optional(25), Optional(false), RequestType::local, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto, auto, auto, auto, YContactsDataManagerContract::ContactsCallback cb) {
            cb(std::vector<YContact>{YContact("1", "Ann", 0)});
        });
    Received<std::optional<std::vector<YContact>>> answers;

    service.getContacts("u1", "o1", "ann", 25, false, RequestType::local,
                        [&](std::optional<std::vector<YContact>> contacts) { answers.add(std::move(contacts)); });

    ASSERT_TRUE(answers.waitFor(1));
    ASSERT_TRUE(answers.values()[0].has_value());
    EXPECT_EQ(answers.values()[0]->front().contactId, "1");
}

TEST_F(YContactServiceTest, GetContactsFromIdsForwardsAllFiveFields) {
    EXPECT_CALL(*dataManager, getContactsFromIds("u1", Eq(std::nullopt), Optional(std::vector<std::string>{"a@x"}),
                                                 Optional(std::vector<std::string>{"y1"}), Optional(true),
                                                 RequestType::both, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto&&, auto, auto, YContactsDataManagerContract::ContactsCallback cb) {
            cb(std::nullopt);
        });
    Received<std::optional<std::vector<YContact>>> answers;

    service.getContactsFromIds("u1", std::nullopt, std::vector<std::string>{"a@x"}, std::vector<std::string>{"y1"},
                               true, RequestType::both,
                               [&](std::optional<std::vector<YContact>> contacts) { answers.add(std::move(contacts)); });

    ASSERT_TRUE(answers.waitFor(1));
    EXPECT_FALSE(answers.values()[0].has_value());
}

TEST_F(YContactServiceTest, SuggestionsFromTheNetworkAreSuggestionsAskedOfTheServer) {
    EXPECT_CALL(*dataManager, getSuggestionContacts("u1", Optional(std::string("o1")), "ann", 20, Eq(std::nullopt),
                                                    RequestType::preferLocal, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto, auto, auto, YContactsDataManagerContract::SuggestionsCallback cb) {
            cb("an", std::nullopt);
        });
    EXPECT_CALL(*dataManager,
                getSuggestionContacts("u1", Optional(std::string("o1")), "bob", 5, Optional(true), RequestType::server, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto, auto, auto, YContactsDataManagerContract::SuggestionsCallback cb) {
            cb("bob", std::vector<YSuggestionContact>{YSuggestionContact("2", "bob@x", "Bob", true)});
        });
    Received<std::pair<std::string, std::optional<std::vector<YSuggestionContact>>>> answers;
    auto collect = [&](std::string searchStr, std::optional<std::vector<YSuggestionContact>> contacts) {
        answers.add({std::move(searchStr), std::move(contacts)});
    };

    service.getSuggestionContacts("u1", "ann", "o1", 20, std::nullopt, RequestType::preferLocal, collect);
    ASSERT_TRUE(answers.waitFor(1));
    service.getSuggestionContactsFromNetwork("u1", "o1", "bob", 5, true, collect);
    ASSERT_TRUE(answers.waitFor(2));

    const auto got = answers.values();
    EXPECT_EQ(got[0].first, "an");
    EXPECT_FALSE(got[0].second.has_value());
    EXPECT_EQ(got[1].first, "bob");
    ASSERT_TRUE(got[1].second.has_value());
    EXPECT_EQ(got[1].second->front().email, "bob@x");
}

TEST_F(YContactServiceTest, GetContactNeverPrefersPersonalInfo) {
    EXPECT_CALL(*dataManager, getContact("u1", Optional(std::string("c1")), Optional(std::string("y1")),
                                         Optional(std::string("e@x")), false, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto&&, auto, YContactsDataManagerContract::ContactCallback cb) {
            cb(YContact("c1", "Cy", 0));
        });
    Received<std::optional<YContact>> answers;

    service.getContact("u1", "e@x", "c1", "y1", [&](std::optional<YContact> contact) { answers.add(contact); });

    ASSERT_TRUE(answers.waitFor(1));
    ASSERT_TRUE(answers.values()[0].has_value());
    EXPECT_EQ(answers.values()[0]->contactId, "c1");
}

TEST_F(YContactServiceTest, GetContactImageAsksTheSameWhateverIsOrgSays) {
    EXPECT_CALL(*dataManager, getContactImage("u1", Optional(std::string("y1")), Optional(std::string("e@x")),
                                              Optional(std::string("c1")), false, Eq(std::nullopt), YContactType::user,
                                              _))
        .Times(3)
        .WillRepeatedly(
            [](auto&&, auto&&, auto&&, auto&&, auto, auto&&, auto, YContactsDataManagerContract::ImageHandler h) {
                h(std::vector<std::uint8_t>{9}, std::string("/p/c1.png"), std::string("c1"));
            });
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
    LoggedWarnings warnings;
    YContactService service{YContactService::Builders{}};
    service.config = YContactService::Config(std::make_shared<StubAuthenticator>(), std::nullopt, std::nullopt);
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

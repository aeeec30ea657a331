#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Support/LogCapture.h"
#include "Support/TemporaryDirectory.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

namespace ycontacts {
namespace {

using namespace std::string_literals;
using testsupport::LogCapture;
using testsupport::TemporaryDirectory;

class YSqliteHelperTransactionTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(helper.registerDB(db, configuration()).ok());
        ASSERT_TRUE(helper.execute("CREATE TABLE Contact (contactId TEXT PRIMARY KEY, name TEXT)", true, db).ok());
    }

    YSqliteConfiguration configuration() {
        return YSqliteConfiguration(YSqliteConnectionMode::readWrite, directory.file("main.db"));
    }

    bool saveContact(const std::string& contactId, const std::string& identifier) {
        return helper.save("Contact", {{{"contactId", contactId}, {"name", "N"s}}}, false, true, identifier).ok();
    }

    std::vector<std::string> ids(const std::string& identifier) {
        std::vector<std::string> found;
        const auto rows = helper.select("SELECT contactId FROM Contact ORDER BY contactId", true, identifier);
        for (const auto& row : rows.value()) found.push_back(std::get<std::string>(row.at("contactId")));
        return found;
    }

    TemporaryDirectory directory;
    LogCapture log{Logger::Level::error};
    YSqliteHelper helper;
    const std::string db = "transactions";
};

TEST_F(YSqliteHelperTransactionTest, WritesInsideCommitTogetherOrNotAtAll) {
    EXPECT_TRUE(helper.transaction([&] { return saveContact("a", db) && saveContact("b", db); }, true, db).ok());
    EXPECT_EQ(ids(db), (std::vector<std::string>{"a", "b"}));

    // "a" again breaks the primary key: "c", saved before it in the same transaction, must go too.
    EXPECT_FALSE(helper.transaction([&] { return saveContact("c", db) && saveContact("a", db); }, true, db).ok());
    EXPECT_EQ(ids(db), (std::vector<std::string>{"a", "b"}));
    EXPECT_TRUE(log.contains("constraint failed"));

    const auto thrown = helper.transaction(
        [&]() -> bool {
            saveContact("d", db);
            throw std::runtime_error("work failed");
        },
        true, db);
    EXPECT_FALSE(thrown.ok());
    EXPECT_EQ(thrown.error().message, "work failed");
    EXPECT_EQ(ids(db), (std::vector<std::string>{"a", "b"}));

    // A transaction inside another is undone alone; the outer one still commits its own writes.
    EXPECT_TRUE(helper
                    .transaction(
                        [&] {
                            saveContact("e", db);
                            EXPECT_FALSE(helper.transaction([&] { return saveContact("f", db) && false; }, false, db).ok());
                            return saveContact("g", db);
                        },
                        true, db)
                    .ok());
    EXPECT_EQ(ids(db), (std::vector<std::string>{"a", "b", "e", "g"}));

    // The connection is usable afterwards: nothing was left open.
    EXPECT_TRUE(saveContact("h", db));
}

TEST_F(YSqliteHelperTransactionTest, OtherThreadsWaitForTheTransactionAndSeeItWhole) {
    std::future<std::vector<std::string>> reader;
    ASSERT_TRUE(helper
                    .transaction(
                        [&] {
                            saveContact("a", db);
                            reader = std::async(std::launch::async, [&] { return ids(db); });
                            // The reader waits on the connection; were it let in, it would answer at once.
                            EXPECT_EQ(reader.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
                            return saveContact("b", db);
                        },
                        true, db)
                    .ok());
    EXPECT_EQ(reader.get(), (std::vector<std::string>{"a", "b"}));
}

TEST_F(YSqliteHelperTransactionTest, SnapshotReadsIgnoreWhatAnotherConnectionCommitsMeanwhile) {
    const std::string other = "transactions-other";
    ASSERT_TRUE(helper.registerDB(other, configuration()).ok());
    ASSERT_TRUE(saveContact("a", db));

    std::vector<std::string> before;
    std::vector<std::string> after;
    ASSERT_TRUE(helper
                    .snapshot(
                        [&] {
                            before = ids(db);
                            EXPECT_TRUE(saveContact("b", other));
                            after = ids(db);
                        },
                        true, db)
                    .ok());
    EXPECT_EQ(before, (std::vector<std::string>{"a"}));
    EXPECT_EQ(after, before);
    EXPECT_EQ(ids(db), (std::vector<std::string>{"a", "b"}));
    helper.unregisterDB(other);
}

}  // namespace
}  // namespace ycontacts

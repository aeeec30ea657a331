#include <gtest/gtest.h>

#include <future>
#include <stdexcept>
#include <string>
#include <vector>

#include "Support/LogCapture.h"
#include "Support/TemporaryDirectory.h"
#include "Support/Waiting.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

namespace ycontacts {
namespace {

using namespace std::string_literals;
using testsupport::becomesReady;
using Ids = std::vector<std::string>;

class YSqliteHelperTransactionTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(helper.registerDB(db, YSqliteConfiguration(YSqliteConnectionMode::readWrite, path())).ok());
        ASSERT_TRUE(helper.execute("CREATE TABLE Contact (contactId TEXT PRIMARY KEY, name TEXT)", true, db).ok());
    }

    virtual std::string path() { return directory.file("main.db"); }

    bool saveContact(const std::string& contactId) {
        return helper.save("Contact", {{{"contactId", contactId}, {"name", "N"s}}}, false, true, db).ok();
    }

    Ids ids() {
        Ids found;
        const auto rows = helper.select("SELECT contactId FROM Contact ORDER BY contactId", true, db);
        for (const auto& row : rows.value()) found.push_back(std::get<std::string>(row.at("contactId")));
        return found;
    }

    testsupport::TemporaryDirectory directory;
    testsupport::LogCapture log{Logger::Level::error};
    YSqliteHelper helper;
    const std::string db = "transactions";
};

// A file, whose reads run on read handles of their own, and a database in memory, whose one handle serves all.
class YSqliteHelperTransactionKindsTest : public YSqliteHelperTransactionTest,
                                          public ::testing::WithParamInterface<bool> {
    std::string path() override { return GetParam() ? ":memory:"s : YSqliteHelperTransactionTest::path(); }
};
INSTANTIATE_TEST_SUITE_P(FileOrMemory, YSqliteHelperTransactionKindsTest, ::testing::Bool());

TEST_P(YSqliteHelperTransactionKindsTest, WritesInsideCommitTogetherOrNotAtAll) {
    EXPECT_TRUE(helper.transaction([&] { return saveContact("a") && saveContact("b"); }, true, db).ok());
    EXPECT_EQ(ids(), (Ids{"a", "b"}));

    // "a" again breaks the primary key: "c", saved before it in the same transaction, must go too.
    EXPECT_FALSE(helper.transaction([&] { return saveContact("c") && saveContact("a"); }, true, db).ok());
    EXPECT_EQ(ids(), (Ids{"a", "b"}));
    EXPECT_TRUE(log.contains("constraint failed"));

    const auto thrown = helper.transaction(
        [&]() -> bool {
            saveContact("d");
            throw std::runtime_error("work failed");
        },
        true, db);
    EXPECT_FALSE(thrown.ok());
    EXPECT_EQ(thrown.error().message, "work failed");
    EXPECT_EQ(ids(), (Ids{"a", "b"}));

    // A transaction inside another is undone alone; the outer one still commits its own writes. A snapshot
    // inside it is part of it.
    Ids inside;
    const auto outer = [&] {
        saveContact("e");
        EXPECT_FALSE(helper.transaction([&] { return saveContact("f") && false; }, false, db).ok());
        EXPECT_TRUE(helper.snapshot([&] { inside = ids(); }, true, db).ok());
        return saveContact("g");
    };
    EXPECT_TRUE(helper.transaction(outer, true, db).ok());
    EXPECT_EQ(inside, (Ids{"a", "b", "e"}));
    EXPECT_EQ(ids(), (Ids{"a", "b", "e", "g"}));

    // The connection is usable afterwards: nothing was left open.
    EXPECT_TRUE(saveContact("h"));
    EXPECT_TRUE(helper.snapshot([&] { inside = ids(); }, true, db).ok());
    EXPECT_EQ(inside, (Ids{"a", "b", "e", "g", "h"}));
}

// The futures outlive the transaction and the snapshot: were the other thread held back until they end, the
// bounded wait would fail rather than hang.
TEST_F(YSqliteHelperTransactionTest, AnotherThreadReadsTheLastCommitWhileATransactionIsOpen) {
    ASSERT_TRUE(saveContact("a"));
    std::future<Ids> during;
    const auto write = [&] {
        saveContact("b");
        EXPECT_EQ(ids(), (Ids{"a", "b"})) << "the transaction's own thread sees its writes";
        during = std::async(std::launch::async, [&] { return ids(); });
        EXPECT_TRUE(becomesReady(during));
        return true;
    };
    ASSERT_TRUE(helper.transaction(write, true, db).ok());
    EXPECT_EQ(during.get(), (Ids{"a"}));
    EXPECT_EQ(ids(), (Ids{"a", "b"}));
}

TEST_F(YSqliteHelperTransactionTest, ASnapshotIgnoresWhatIsCommittedMeanwhileAndHoldsNoWriterBack) {
    ASSERT_TRUE(saveContact("a"));
    Ids before, after;
    std::future<bool> write;
    const auto read = [&] {
        before = ids();
        write = std::async(std::launch::async, [&] { return saveContact("b"); });
        EXPECT_TRUE(becomesReady(write));
        after = ids();
    };
    ASSERT_TRUE(helper.snapshot(read, true, db).ok());
    EXPECT_TRUE(write.get());
    EXPECT_EQ(before, (Ids{"a"}));
    EXPECT_EQ(after, before);
    EXPECT_EQ(ids(), (Ids{"a", "b"}));
}

}  // namespace
}  // namespace ycontacts

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdint>
#include <future>
#include <limits>
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

class YSqliteHelperTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(registerAt(db, path()).ok());
        ASSERT_TRUE(helper.execute("CREATE TABLE Contact (yuid TEXT, contactId TEXT, name TEXT, weightage INTEGER, "
                                   "isOrg INTEGER, score REAL, photo BLOB, PRIMARY KEY (yuid, contactId));",
                                   true, db)
                        .ok());
    }
    virtual std::string path() { return directory.file("main.db"); }

    YSqliteResult<void> registerAt(const std::string& identifier, const std::string& file) {
        return helper.registerDB(identifier, YSqliteConfiguration(YSqliteConnectionMode::readWrite, file));
    }
    YSqliteResult<void> save(const std::vector<YSqliteRow>& rows, bool replace = false, const std::string& to = db) {
        return helper.save("Contact", rows, replace, true, to);
    }
    bool saveContact(const std::string& contactId) { return save({contact(contactId)}).ok(); }
    static YSqliteRow contact(const std::string& contactId, const std::string& name = "N") {
        return {{"yuid", "u1"s}, {"contactId", contactId}, {"name", name}};
    }
    // Every row of Contact by contact id, as a select on this thread sees them.
    std::vector<YSqliteRow> all(const std::string& identifier = db) {
        auto rows = helper.select("SELECT * FROM Contact ORDER BY contactId", true, identifier);
        EXPECT_TRUE(rows.ok()) << rows.error().message;
        return rows.value();
    }
    static Ids idsOf(const std::vector<YSqliteRow>& rows) {
        Ids ids;
        for (const auto& row : rows) ids.push_back(std::get<std::string>(row.at("contactId")));
        return ids;
    }
    Ids ids(const std::string& identifier = db) { return idsOf(all(identifier)); }

    testsupport::TemporaryDirectory directory;
    testsupport::LogCapture log{Logger::Level::error};
    YSqliteHelper helper;
    static inline const std::string db = "test";
};

TEST_F(YSqliteHelperTest, SaveThenSelectRoundTripsEveryValueKindAndLeavesNullColumnsOut) {
    const std::string awkward = "O'Brien \"quoted\" \xC3\xA9t\xC3\xA9 with a\0nul"s;
    constexpr auto max = std::numeric_limits<std::int64_t>::max(), min = std::numeric_limits<std::int64_t>::min();
    YSqliteRow a = contact("a", awkward), b{{"yuid", "u1"s}, {"contactId", "b"s}};
    a.insert({{"weightage", max}, {"isOrg", true}, {"score", 2.5}});
    b.insert({{"weightage", min}, {"isOrg", false}});  // no name nor score: they are stored as NULL
    ASSERT_TRUE(save({a, b}).ok());
    ASSERT_TRUE(helper.execute("UPDATE Contact SET photo = X'00FF41' WHERE contactId = 'b'", true, db).ok());

    // A boolean reads back as an integer, a BLOB as a string holding its bytes.
    a["isOrg"] = std::int64_t{1};
    b["isOrg"] = std::int64_t{0};
    b["photo"] = "\0\xFF\x41"s;
    EXPECT_EQ(all(), (std::vector<YSqliteRow>{a, b}));
}

TEST_F(YSqliteHelperTest, ReplaceOverwritesByKeyWhileADuplicatePlainInsertWritesNothingOfItsCall) {
    ASSERT_TRUE(save({contact("a", "Ann"), contact("b", "Bob")}).ok());
    ASSERT_TRUE(save({contact("a", "Anna")}, true).ok());

    // c and d come before the duplicate in the same call, and still must not stay behind.
    const auto duplicate = save({contact("c"), contact("d"), contact("a", "Again")});
    ASSERT_FALSE(duplicate.ok());
    EXPECT_EQ(duplicate.error().code, SQLITE_CONSTRAINT);
    auto stored = all();
    EXPECT_EQ(idsOf(stored), (Ids{"a", "b"}));
    EXPECT_EQ(stored[0].at("name"), YSqliteValue("Anna"s));

    // The failed call left no transaction open: the next save commits on its own.
    ASSERT_TRUE(saveContact("c"));
    EXPECT_EQ(ids(), (Ids{"a", "b", "c"}));
    EXPECT_TRUE(helper.save("NoSuchTable", {}, true, true, db).ok()) << "an empty save does nothing at all";
}

TEST_F(YSqliteHelperTest, DeleteAndUpdateTouchWhatTheirConditionMatches) {
    std::vector<YSqliteRow> rows;
    for (const auto* id : {"a", "b", "c", "d", "e"}) rows.push_back(contact(id, "N"s + id));
    ASSERT_TRUE(save(rows).ok());
    ASSERT_TRUE(helper.deleteFrom("Contact", "yuid = ? and contactId in (?, ?)"s, {"u1"s, "d"s, "e"s}, true, db).ok());
    // A double-quoted word is a name, never a string: one that names no column is an error.
    EXPECT_FALSE(helper.deleteFrom("Contact", "contactId = \"c\""s, {}, false, db).ok());
    EXPECT_EQ(ids(), (Ids{"a", "b", "c"}));

    // Text stored in an INTEGER column becomes an integer, which the usage-count update relies on.
    ASSERT_TRUE(helper
                    .update("Contact", "contactId = ? AND yuid = ?", {"b"s, "u1"s},
                            {{"weightage", "7"s}, {"name", "Bo"s}}, std::nullopt, true, db)
                    .ok());
    auto stored = all();
    EXPECT_EQ(stored[1].at("weightage"), YSqliteValue(std::int64_t{7}));
    EXPECT_EQ(stored[1].at("name"), YSqliteValue("Bo"s));
    EXPECT_EQ(stored[0].count("weightage"), 0u) << "rows outside the condition keep their values";
    ASSERT_TRUE(helper.deleteFrom("Contact", std::nullopt, {}, true, db).ok());
    EXPECT_TRUE(all().empty());
}

TEST_F(YSqliteHelperTest, BoundValuesAreDataAndFailuresAreErrorsLoggedOnlyWhenAlerting) {
    const std::string injection = "x' OR '1'='1";
    ASSERT_TRUE(save({contact("a", "O'Brien"), contact("b", injection), contact("c", "Cy")}).ok());
    const auto found = [&](const std::string& sql, const std::vector<YSqliteValue>& bindings) {
        const auto rows = helper.select(sql, bindings, true, db);
        EXPECT_TRUE(rows.ok()) << rows.error().message;
        return idsOf(rows.value());
    };
    const std::string query = "SELECT contactId FROM Contact WHERE yuid = ? AND name = ? ORDER BY contactId";
    EXPECT_EQ(found(query, {"u1"s, injection}), (Ids{"b"}));
    EXPECT_EQ(found(query, {"u1"s, "O'Brien"s}), (Ids{"a"}));
    EXPECT_EQ(found("SELECT contactId FROM Contact WHERE name LIKE ? || '%'", {"O'"s}), (Ids{"a"}));
    EXPECT_EQ(helper.select(query, {"u1"s}, false, db).error().code, SQLITE_RANGE) << "a value is missing";

    const auto missing = helper.select("SELECT * FROM NoSuchTable", false, db);
    EXPECT_EQ(missing.error().code, SQLITE_ERROR);
    EXPECT_NE(missing.error().message.find("no such table"), std::string::npos) << missing.error().message;
    EXPECT_TRUE(missing.value().empty());
    // Text with a second statement is refused by the single-statement operations.
    EXPECT_EQ(helper.deleteFrom("Contact", "contactId = 'zz'; DELETE FROM Contact"s, {}, false, db).error().code,
              SQLITE_MISUSE);
    EXPECT_EQ(all().size(), 3u);
    EXPECT_TRUE(log.messages().empty());

    const auto badSyntax = helper.execute("DELETE FROM WHERE", true, db);
    ASSERT_FALSE(badSyntax.ok());
    EXPECT_FALSE(save({{{"nope", "x"s}}}, true).ok());
    const auto lines = log.messages();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_NE(lines[0].find(badSyntax.error().message), std::string::npos) << lines[0];
    EXPECT_NE(lines[0].find("test"), std::string::npos) << "names the database";
    EXPECT_NE(lines[1].find("has no column named nope"), std::string::npos) << lines[1];
}

TEST_F(YSqliteHelperTest, ExecuteRollsBackWhatItLeftOpenWhileSavesJoinATransactionItOpened) {
    ASSERT_TRUE(helper
                    .execute("INSERT INTO Contact (yuid, contactId) VALUES ('u1', 'a');"
                             "INSERT INTO Contact (yuid, contactId) VALUES ('u1', 'b');",
                             true, db)
                    .ok());
    EXPECT_FALSE(helper
                     .execute("BEGIN; INSERT INTO Contact (yuid, contactId) VALUES ('u1', 'c'); "
                              "INSERT INTO Missing VALUES (1); COMMIT;",
                              false, db)
                     .ok());
    EXPECT_EQ(ids(), (Ids{"a", "b"}));

    ASSERT_TRUE(helper.execute("BEGIN", true, db).ok());
    ASSERT_TRUE(saveContact("d"));
    EXPECT_EQ(ids(), (Ids{"a", "b", "d"})) << "reads on the thread that began it see its writes";
    // A failing save undoes only its own rows.
    ASSERT_FALSE(helper.save("Contact", {contact("e"), contact("a")}, false, false, db).ok());
    ASSERT_TRUE(saveContact("f"));
    ASSERT_TRUE(helper.execute("ROLLBACK", true, db).ok());
    EXPECT_EQ(ids(), (Ids{"a", "b"}));
    ASSERT_TRUE(helper.execute("BEGIN; INSERT INTO Contact (yuid, contactId) VALUES ('u1', 'g')", true, db).ok());
    ASSERT_FALSE(helper.save("Contact", {contact("h"), contact("h")}, false, false, db).ok());
    ASSERT_TRUE(helper.execute("COMMIT", true, db).ok());
    EXPECT_EQ(ids(), (Ids{"a", "b", "g"}));

    // A transaction begun by a select is not left open to hold an old snapshot for the reads after it.
    ASSERT_TRUE(helper.select("BEGIN", true, db).ok());
    ASSERT_TRUE(saveContact("i"));
    EXPECT_EQ(ids(), (Ids{"a", "b", "g", "i"}));
}

// A file, whose reads run on read handles of their own, and a database in memory, whose one handle serves all.
class YSqliteHelperTransactionTest : public YSqliteHelperTest, public ::testing::WithParamInterface<bool> {
    std::string path() override { return GetParam() ? ":memory:"s : YSqliteHelperTest::path(); }
};
INSTANTIATE_TEST_SUITE_P(FileOrMemory, YSqliteHelperTransactionTest, ::testing::Bool());

TEST_P(YSqliteHelperTransactionTest, WritesInsideCommitTogetherOrNotAtAll) {
    EXPECT_TRUE(helper.transaction([&] { return saveContact("a") && saveContact("b"); }, true, db).ok());
    // "a" again breaks the primary key: "c", saved before it in the same transaction, must go too.
    EXPECT_FALSE(helper.transaction([&] { return saveContact("c") && saveContact("a"); }, true, db).ok());
    EXPECT_TRUE(log.contains("constraint failed"));
    const auto thrown = helper.transaction(
        [&]() -> bool {
            saveContact("d");
            throw std::runtime_error("work failed");
        },
        true, db);
    EXPECT_EQ(thrown.error().message, "work failed");
    EXPECT_EQ(ids(), (Ids{"a", "b"}));

    // A transaction inside another is undone alone; the outer one still commits its own writes. A snapshot
    // inside it is part of it.
    Ids inside;
    EXPECT_TRUE(helper
                    .transaction(
                        [&] {
                            saveContact("e");
                            EXPECT_FALSE(helper.transaction([&] { return saveContact("f") && false; }, false, db).ok());
                            EXPECT_TRUE(helper.snapshot([&] { inside = ids(); }, true, db).ok());
                            return saveContact("g");
                        },
                        true, db)
                    .ok());
    EXPECT_EQ(inside, (Ids{"a", "b", "e"}));
    // Nothing was left open: a save and a snapshot afterwards work alone.
    EXPECT_TRUE(saveContact("h"));
    EXPECT_TRUE(helper.snapshot([&] { inside = ids(); }, true, db).ok());
    EXPECT_EQ(inside, (Ids{"a", "b", "e", "g", "h"}));
}

// The futures outlive the transaction and the snapshot: were the other thread held back until they end, the
// bounded wait would fail rather than hang.
TEST_F(YSqliteHelperTest, OtherThreadsReadTheLastCommitBesideATransactionAndWriteBesideASnapshot) {
    ASSERT_TRUE(saveContact("a"));
    std::future<Ids> during;
    ASSERT_TRUE(helper
                    .transaction(
                        [&] {
                            saveContact("b");
                            during = std::async(std::launch::async, [&] { return ids(); });
                            return becomesReady(during);
                        },
                        true, db)
                    .ok());
    EXPECT_EQ(during.get(), (Ids{"a"}));

    Ids before, after;
    std::future<bool> write;
    ASSERT_TRUE(helper
                    .snapshot(
                        [&] {
                            before = ids();
                            write = std::async(std::launch::async, [&] { return saveContact("c"); });
                            EXPECT_TRUE(becomesReady(write));
                            after = ids();
                        },
                        true, db)
                    .ok());
    EXPECT_TRUE(write.get());
    EXPECT_EQ(before, (Ids{"a", "b"}));
    EXPECT_EQ(after, before);
    EXPECT_EQ(ids(), (Ids{"a", "b", "c"}));
}

}  // namespace
}  // namespace ycontacts

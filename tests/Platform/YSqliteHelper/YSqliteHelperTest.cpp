#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstdint>
#include <limits>
#include <optional>
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
using Ids = std::vector<std::string>;

class YSqliteHelperTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(registerAt(db, "main.db").ok());
        ASSERT_TRUE(helper.execute("CREATE TABLE Contact (yuid TEXT, contactId TEXT, name TEXT, weightage INTEGER, "
                                   "isOrg INTEGER, score REAL, photo BLOB, PRIMARY KEY (yuid, contactId));",
                                   true, db)
                        .ok());
    }

    // Every row of Contact on the database registered as `identifier` (the test's own by default), by contact id.
    std::vector<YSqliteRow> all(const std::string& identifier = db) {
        auto rows = helper.select("Contact", YSqliteSortDescriptor{"contactId", true}, std::nullopt, std::nullopt,
                                  std::nullopt, true, identifier);
        EXPECT_TRUE(rows.ok()) << rows.error().message;
        return rows.value();
    }

    YSqliteResult<void> registerAt(const std::string& identifier, const std::string& file,
                                   YSqliteConnectionMode mode = YSqliteConnectionMode::readWrite) {
        return helper.registerDB(identifier, YSqliteConfiguration(mode, directory.file(file)));
    }
    // Saves rows into Contact on the test database, alerting on failure.
    YSqliteResult<void> save(const std::vector<YSqliteRow>& rows, bool replace = false) {
        return helper.save("Contact", rows, replace, true, db);
    }

    static YSqliteRow contact(const std::string& contactId, const std::string& name) {
        return {{"yuid", "u1"s}, {"contactId", contactId}, {"name", name}};
    }

    static Ids idsOf(const std::vector<YSqliteRow>& rows) {
        Ids ids;
        for (const auto& row : rows) ids.push_back(std::get<std::string>(row.at("contactId")));
        return ids;
    }

    TemporaryDirectory directory;
    LogCapture log{Logger::Level::error};
    YSqliteHelper helper;
    static inline const std::string db = "test";
};

TEST_F(YSqliteHelperTest, SaveThenSelectRoundTripsEveryValueKindAndLeavesNullColumnsOut) {
    const std::string awkwardText = "O'Brien \"quoted\" \xC3\xA9t\xC3\xA9 with a\0nul"s;
    const std::vector<YSqliteRow> rows = {
        {{"yuid", "u1"s}, {"contactId", "a"s}, {"name", awkwardText},
         {"weightage", std::numeric_limits<std::int64_t>::max()}, {"isOrg", true}, {"score", 2.5}},
        // name and score are missing here while present in the other row: they are stored as NULL.
        {{"yuid", "u1"s}, {"contactId", "b"s}, {"weightage", std::numeric_limits<std::int64_t>::min()},
         {"isOrg", false}},
    };
    ASSERT_TRUE(save(rows).ok());

    const auto stored = all();
    ASSERT_EQ(stored.size(), 2u);
    const YSqliteRow expectedA = {{"yuid", "u1"s}, {"contactId", "a"s}, {"name", awkwardText},
                                  {"weightage", std::numeric_limits<std::int64_t>::max()},
                                  {"isOrg", std::int64_t{1}}, {"score", 2.5}};
    const YSqliteRow expectedB = {{"yuid", "u1"s}, {"contactId", "b"s},
                                  {"weightage", std::numeric_limits<std::int64_t>::min()},
                                  {"isOrg", std::int64_t{0}}};
    EXPECT_EQ(stored[0], expectedA);
    EXPECT_EQ(stored[1], expectedB);

    // A BLOB comes back as a string holding its bytes.
    ASSERT_TRUE(helper.execute("UPDATE Contact SET photo = X'00FF41' WHERE contactId = 'b'", true, db).ok());
    const auto blob = helper.select("SELECT photo FROM Contact WHERE contactId = 'b'", true, db);
    ASSERT_TRUE(blob.ok());
    ASSERT_EQ(blob.value().size(), 1u);
    EXPECT_EQ(blob.value()[0].at("photo"), YSqliteValue("\0\xFF"s "A"));
}

TEST_F(YSqliteHelperTest, ReplaceOverwritesByKeyWhileADuplicatePlainInsertWritesNothingOfItsCall) {
    ASSERT_TRUE(save({contact("a", "Ann"), contact("b", "Bob")}).ok());

    ASSERT_TRUE(save({contact("a", "Anna")}, true).ok());
    auto stored = all();
    ASSERT_EQ(idsOf(stored), (Ids{"a", "b"}));
    EXPECT_EQ(stored[0].at("name"), YSqliteValue("Anna"s));

    // c and d come before the duplicate in the same call, and still must not stay behind.
    const auto duplicate =
        save({contact("c", "Cy"), contact("d", "Di"), contact("a", "Again")});
    ASSERT_FALSE(duplicate.ok());
    EXPECT_EQ(duplicate.error().code, SQLITE_CONSTRAINT);
    stored = all();
    EXPECT_EQ(idsOf(stored), (Ids{"a", "b"}));
    EXPECT_EQ(stored[0].at("name"), YSqliteValue("Anna"s));

    // The failed call left no transaction open: the next save commits on its own.
    ASSERT_TRUE(save({contact("c", "Cy")}).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a", "b", "c"}));

    EXPECT_TRUE(helper.save("NoSuchTable", {}, true, true, db).ok()) << "an empty save does nothing at all";
}

TEST_F(YSqliteHelperTest, DeleteRemovesWhatTheConditionMatchesOrEverything) {
    ASSERT_TRUE(save({contact("a", "Ann"), contact("b", "Bob"), contact("c", "Cy")}, true).ok());

    ASSERT_TRUE(helper.deleteFrom("Contact", "yuid = ? and contactId in (?, ?)"s, {"u1"s, "a"s, "c"s}, true, db).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"b"}));

    // A double-quoted word is a name, never a string: one that names no column is an error.
    ASSERT_FALSE(helper.deleteFrom("Contact", "contactId = \"b\""s, {}, false, db).ok());
    EXPECT_EQ(all().size(), 1u);

    ASSERT_TRUE(helper.deleteFrom("Contact", std::nullopt, {}, true, db).ok());
    EXPECT_TRUE(all().empty());
}

TEST_F(YSqliteHelperTest, SelectAppliesConditionSortLimitAndOffset) {
    std::vector<YSqliteRow> rows;
    for (int index = 1; index <= 5; ++index) {
        rows.push_back({{"yuid", index == 3 ? "u2"s : "u1"s},
                        {"contactId", "c" + std::to_string(index)},
                        {"weightage", std::int64_t{index * 10}}});
    }
    ASSERT_TRUE(save(rows).ok());

    const auto page = [&](std::optional<int> limit, std::optional<int> offset,
                          std::optional<std::string> where = "yuid = 'u1'"s) {
        auto selected =
            helper.select("Contact", YSqliteSortDescriptor{"weightage", false}, where, limit, offset, true, db);
        EXPECT_TRUE(selected.ok()) << selected.error().message;
        return idsOf(selected.value());
    };
    EXPECT_EQ(page(std::nullopt, std::nullopt), (Ids{"c5", "c4", "c2", "c1"}));
    EXPECT_EQ(page(2, 1), (Ids{"c4", "c2"}));
    EXPECT_EQ(page(std::nullopt, 3), (Ids{"c1"}));
    EXPECT_EQ(page(1, std::nullopt), (Ids{"c5"}));
    EXPECT_EQ(page(3, std::nullopt, std::nullopt), (Ids{"c5", "c4", "c3"}));
}

TEST_F(YSqliteHelperTest, UpdateUsesSqliteDefaultWithoutResolutionAndTheChosenOneOtherwise) {
    ASSERT_TRUE(save({contact("a", "Ann"), contact("b", "Bob"), contact("c", "Cy")}).ok());

    // Text stored in an INTEGER column becomes an integer, which the usage-count update relies on.
    ASSERT_TRUE(helper
                    .update("Contact", "contactId = ? AND yuid = ?", {"b"s, "u1"s},
                            {{"weightage", "7"s}, {"name", "Bo"s}}, std::nullopt, true, db)
                    .ok());
    auto stored = all();
    EXPECT_EQ(stored[1].at("weightage"), YSqliteValue(std::int64_t{7}));
    EXPECT_EQ(stored[1].at("name"), YSqliteValue("Bo"s));
    EXPECT_EQ(stored[0].count("weightage"), 0u) << "rows outside the condition keep their values";

    // Renaming a onto b's key collides with b.
    const auto plain = helper.update("Contact", "contactId = 'a'", {}, {{"contactId", "b"s}}, std::nullopt, true, db);
    ASSERT_FALSE(plain.ok());
    EXPECT_EQ(plain.error().code, SQLITE_CONSTRAINT);
    EXPECT_EQ(idsOf(all()), (Ids{"a", "b", "c"}));

    ASSERT_TRUE(
        helper.update("Contact", "contactId = 'a'", {}, {{"contactId", "b"s}}, YSqliteConflictResolution::ignore, true,
                      db)
            .ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a", "b", "c"}));

    ASSERT_TRUE(helper
                    .update("Contact", "contactId = 'a'", {}, {{"contactId", "b"s}},
                            YSqliteConflictResolution::replace, true, db)
                    .ok());
    stored = all();
    ASSERT_EQ(idsOf(stored), (Ids{"b", "c"}));
    EXPECT_EQ(stored[0].at("name"), YSqliteValue("Ann"s)) << "the renamed row replaced the one it collided with";
}

TEST_F(YSqliteHelperTest, BoundSelectReadsQuotesInValuesAsData) {
    const std::string injection = "x' OR '1'='1";
    ASSERT_TRUE(save({contact("a", "O'Brien"), contact("b", injection), contact("c", "Cy")}).ok());

    const std::string query = "SELECT contactId FROM Contact WHERE yuid = ? AND name = ? ORDER BY contactId";
    const auto found = [&](const std::string& sql, const std::vector<YSqliteValue>& bindings) {
        const auto rows = helper.select(sql, bindings, true, db);
        EXPECT_TRUE(rows.ok()) << rows.error().message;
        return idsOf(rows.value());
    };
    EXPECT_EQ(found(query, {"u1"s, injection}), (Ids{"b"}));
    EXPECT_EQ(found(query, {"u1"s, "O'Brien"s}), (Ids{"a"}));
    EXPECT_EQ(found("SELECT contactId FROM Contact WHERE name LIKE ? || '%'", {"O'"s}), (Ids{"a"}));

    EXPECT_EQ(helper.select(query, {"u1"s}, true, db).error().code, SQLITE_RANGE) << "a value is missing";
}

TEST_F(YSqliteHelperTest, FailuresComeBackAsErrorsAndAreLoggedOnlyWhenAlerting) {
    const auto missing = helper.select("SELECT * FROM NoSuchTable", false, db);
    ASSERT_FALSE(missing.ok());
    EXPECT_EQ(missing.error().code, SQLITE_ERROR);
    EXPECT_NE(missing.error().message.find("no such table"), std::string::npos) << missing.error().message;
    EXPECT_TRUE(missing.value().empty());
    EXPECT_TRUE(log.messages().empty());

    const auto badSyntax = helper.execute("DELETE FROM WHERE", true, db);
    ASSERT_FALSE(badSyntax.ok());
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_NE(log.messages()[0].find(badSyntax.error().message), std::string::npos) << log.messages()[0];
    EXPECT_NE(log.messages()[0].find("test"), std::string::npos) << "names the database";

    log.clear();
    const auto badColumn = save({{{"nope", "x"s}}}, true);
    ASSERT_FALSE(badColumn.ok());
    ASSERT_EQ(log.messages().size(), 1u);
    EXPECT_NE(log.messages()[0].find("has no column named nope"), std::string::npos) << log.messages()[0];

    // Text with a second statement is refused by the single-statement operations.
    ASSERT_TRUE(save({contact("a", "Ann")}).ok());
    EXPECT_EQ(helper.deleteFrom("Contact", "contactId = 'zz'; DELETE FROM Contact"s, {}, false, db).error().code,
              SQLITE_MISUSE);
    EXPECT_EQ(all().size(), 1u);
}

TEST_F(YSqliteHelperTest, ExecuteRunsSeveralStatementsAndRollsBackATransactionItLeftOpenByFailing) {
    ASSERT_TRUE(helper
                    .execute("INSERT INTO Contact (yuid, contactId) VALUES ('u1', 'a');"
                             "INSERT INTO Contact (yuid, contactId) VALUES ('u1', 'b');",
                             true, db).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a", "b"}));

    const auto failed = helper.execute(
        "BEGIN; INSERT INTO Contact (yuid, contactId) VALUES ('u1', 'c'); INSERT INTO Missing VALUES (1); COMMIT;",
        false, db);
    ASSERT_FALSE(failed.ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a", "b"}));
    ASSERT_TRUE(save({contact("d", "Di")}).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a", "b", "d"}));
}

TEST_F(YSqliteHelperTest, SaveInsideATransactionOpenedByExecuteJoinsIt) {
    ASSERT_TRUE(helper.execute("BEGIN", true, db).ok());
    ASSERT_TRUE(save({contact("a", "Ann")}).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a"})) << "reads on the thread that began it see its writes";
    // The failing save undoes only its own rows.
    ASSERT_FALSE(helper.save("Contact", {contact("b", "Bob"), contact("a", "Ann")}, false, false, db).ok());
    ASSERT_TRUE(helper.execute("ROLLBACK", true, db).ok());
    EXPECT_TRUE(all().empty());

    ASSERT_TRUE(helper.execute("BEGIN", true, db).ok());
    ASSERT_FALSE(helper.save("Contact", {contact("b", "Bob"), contact("b", "Bob")}, false, false, db).ok());
    ASSERT_TRUE(save({contact("a", "Ann")}).ok());
    ASSERT_TRUE(helper.execute("COMMIT", true, db).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a"}));

    // A transaction begun by a select is not left open to hold an old snapshot for the reads after it.
    ASSERT_TRUE(helper.select("BEGIN", true, db).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a"}));
    ASSERT_TRUE(save({contact("b", "Bob")}).ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a", "b"}));
}

TEST_F(YSqliteHelperTest, ConnectionIsInWalModeWithNormalSyncABusyTimeoutAndNoForeignKeys) {
    const auto pragma = [&](const std::string& name) {
        const auto rows = helper.select("PRAGMA " + name, true, db);
        EXPECT_TRUE(rows.ok() && rows.value().size() == 1u) << name;
        return rows.value().empty() ? YSqliteValue() : rows.value()[0].begin()->second;
    };
    EXPECT_EQ(pragma("journal_mode"), YSqliteValue("wal"s));
    EXPECT_EQ(pragma("synchronous"), YSqliteValue(std::int64_t{1}));
    EXPECT_EQ(pragma("busy_timeout"), YSqliteValue(std::int64_t{5000}));
    EXPECT_EQ(pragma("foreign_keys"), YSqliteValue(std::int64_t{0}));
}

TEST_F(YSqliteHelperTest, UnknownIdentifierIsAMisuseForEveryOperation) {
    const std::string unknown = "never-registered";
    std::vector<YSqliteError> errors;
    const auto collect = [&](const auto& result) {
        EXPECT_FALSE(result.ok());
        errors.push_back(result.error());
    };
    collect(helper.save("Contact", {contact("a", "Ann")}, true, true, unknown));
    collect(helper.deleteFrom("Contact", std::nullopt, {}, true, unknown));
    collect(helper.select("Contact", std::nullopt, std::nullopt, std::nullopt, std::nullopt, true, unknown));
    collect(helper.select("SELECT 1", true, unknown));
    collect(helper.select("SELECT ?", {"x"s}, true, unknown));
    collect(helper.update("Contact", "1", {}, {{"name", "x"s}}, std::nullopt, true, unknown));
    collect(helper.execute("SELECT 1", true, unknown));
    for (const auto& error : errors) EXPECT_EQ(error.code, SQLITE_MISUSE);
    EXPECT_EQ(log.messages().size(), errors.size());
    for (const auto& message : log.messages()) EXPECT_NE(message.find(unknown), std::string::npos) << message;

    helper.unregisterDB(db);
    EXPECT_EQ(helper.select("SELECT 1", false, db).error().code, SQLITE_MISUSE);
}

TEST_F(YSqliteHelperTest, IdentifiersAreIndependentAndRegisteringAgainSwitchesTheFile) {
    ASSERT_TRUE(registerAt("other", "other.db").ok());
    ASSERT_TRUE(helper.execute("CREATE TABLE Contact (yuid TEXT, contactId TEXT, name TEXT)", true, "other").ok());
    ASSERT_TRUE(save({contact("a", "Ann")}).ok());
    ASSERT_TRUE(helper.save("Contact", {contact("z", "Zed")}, false, true, "other").ok());
    EXPECT_EQ(idsOf(all()), (Ids{"a"}));
    EXPECT_EQ(idsOf(all("other")), (Ids{"z"}));

    ASSERT_TRUE(registerAt(db, "other.db").ok());
    EXPECT_EQ(idsOf(all()), (Ids{"z"}));

    // A registration that fails keeps the connection already there.
    const auto failed = registerAt(db, "missing-dir/x.db");
    ASSERT_FALSE(failed.ok());
    EXPECT_EQ(failed.error().code, SQLITE_CANTOPEN);
    EXPECT_EQ(log.messages().size(), 1u);
    EXPECT_EQ(idsOf(all()), (Ids{"z"}));
}

TEST_F(YSqliteHelperTest, ReadOnlyConnectionReadsTheFileButRefusesWrites) {
    ASSERT_TRUE(save({contact("a", "Ann")}).ok());
    ASSERT_TRUE(registerAt("reader", "main.db", YSqliteConnectionMode::readOnly).ok());

    EXPECT_EQ(idsOf(all("reader")), (Ids{"a"}));

    const auto write = helper.save("Contact", {contact("b", "Bob")}, false, false, "reader");
    ASSERT_FALSE(write.ok());
    EXPECT_EQ(write.error().code, SQLITE_READONLY);
    EXPECT_EQ(idsOf(all()), (Ids{"a"}));

    EXPECT_FALSE(registerAt("ghost", "absent.db", YSqliteConnectionMode::readOnly).ok());
    EXPECT_FALSE(std::filesystem::exists(directory.file("absent.db"))) << "read-only never creates the file";
}

}  // namespace
}  // namespace ycontacts

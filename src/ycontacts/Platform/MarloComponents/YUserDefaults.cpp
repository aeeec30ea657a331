#include "ycontacts/Platform/MarloComponents/YUserDefaults.h"

#include <sqlite3.h>

#include <source_location>
#include <system_error>
#include <vector>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts {

namespace {

constexpr const char* inMemory = ":memory:";

constexpr const char* schemaSql =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = NORMAL;"
    "CREATE TABLE IF NOT EXISTS user_defaults ("
    " group_name TEXT NOT NULL, key_name TEXT NOT NULL, value,"
    " PRIMARY KEY (group_name, key_name)) WITHOUT ROWID;";

constexpr const char* upsertSql =
    "INSERT INTO user_defaults (group_name, key_name, value) VALUES (?1, ?2, ?3)"
    " ON CONFLICT (group_name, key_name) DO UPDATE SET value = excluded.value";
constexpr const char* selectSql = "SELECT value FROM user_defaults WHERE group_name = ?1 AND key_name = ?2";
constexpr const char* deleteSql = "DELETE FROM user_defaults WHERE group_name = ?1 AND key_name = ?2";

// Problems found under the store's lock are logged after it is released, since a log sink is host code.
using Problems = std::vector<std::string>;

void report(const Problems& problems, std::source_location location = std::source_location::current()) {
    for (const auto& problem : problems) Logger::shared().error(problem, location);
}

void bindText(sqlite3_stmt* statement, int index, const std::string& text) {
    sqlite3_bind_text(statement, index, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
}

}  // namespace

struct YUserDefaults::Statements {
    sqlite3_stmt* upsert = nullptr;
    sqlite3_stmt* select = nullptr;
    sqlite3_stmt* erase = nullptr;
};

YUserDefaults::YUserDefaults(std::optional<std::filesystem::path> path) { open(path); }

YUserDefaults::~YUserDefaults() {
    std::lock_guard lock(mutex_);
    closeLocked();
}

YUserDefaults& YUserDefaults::standard() {
    static YUserDefaults store(std::nullopt);
    return store;
}

void YUserDefaults::open(const std::optional<std::filesystem::path>& path) {
    Problems problems;
    {
        std::lock_guard lock(mutex_);
        closeLocked();
        std::string location = inMemory;
        if (path) {
            location = path->string();
            std::error_code error;
            if (path->has_parent_path()) std::filesystem::create_directories(path->parent_path(), error);
            if (error) {
                problems.push_back("YUserDefaults could not create the folder of " +
                                   Logger::logDescription(location) + ": " + error.message());
            }
        }
        if (!openLocked(location, problems) && path) {
            problems.push_back("YUserDefaults keeps its values in memory instead of " +
                               Logger::logDescription(location));
            closeLocked();
            openLocked(inMemory, problems);
        }
    }
    report(problems);
}

bool YUserDefaults::openLocked(const std::string& location, std::vector<std::string>& problems) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(location.c_str(), &database_, flags, nullptr) != SQLITE_OK) {
        problems.push_back("YUserDefaults could not open " + Logger::logDescription(location) + ": " +
                           (database_ ? sqlite3_errmsg(database_) : "out of memory"));
        closeLocked();
        return false;
    }
    sqlite3_busy_timeout(database_, 5000);
    char* message = nullptr;
    if (sqlite3_exec(database_, schemaSql, nullptr, nullptr, &message) != SQLITE_OK) {
        problems.push_back("YUserDefaults could not prepare its table in " + Logger::logDescription(location) +
                           ": " + (message ? message : "unknown error"));
        sqlite3_free(message);
        closeLocked();
        return false;
    }
    auto statements = std::make_unique<Statements>();
    for (auto [sql, slot] : {std::pair{upsertSql, &statements->upsert}, std::pair{selectSql, &statements->select},
                             std::pair{deleteSql, &statements->erase}}) {
        if (sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, slot, nullptr) != SQLITE_OK) {
            problems.push_back(std::string("YUserDefaults could not prepare a statement: ") +
                               sqlite3_errmsg(database_));
            statements_ = std::move(statements);
            closeLocked();
            return false;
        }
    }
    statements_ = std::move(statements);
    return true;
}

void YUserDefaults::closeLocked() {
    if (statements_) {
        sqlite3_finalize(statements_->upsert);
        sqlite3_finalize(statements_->select);
        sqlite3_finalize(statements_->erase);
        statements_.reset();
    }
    sqlite3_close_v2(database_);
    database_ = nullptr;
}

template <class Bind>
void YUserDefaults::write(sqlite3_stmt* Statements::*statement, const std::string& key, const std::string& group,
                          Bind&& bind) {
    Problems problems;
    {
        std::lock_guard lock(mutex_);
        if (!statements_) return;  // the store could not be opened at all; that was logged
        sqlite3_stmt* prepared = (*statements_).*statement;
        bindText(prepared, 1, group);
        bindText(prepared, 2, key);
        bind(prepared);
        if (sqlite3_step(prepared) != SQLITE_DONE) {
            problems.push_back("YUserDefaults could not write " + key + " of " + group + ": " +
                               sqlite3_errmsg(database_));
        }
        sqlite3_reset(prepared);
        sqlite3_clear_bindings(prepared);
    }
    report(problems);
}

template <class Read, class Value>
Value YUserDefaults::read(const std::string& key, const std::string& group, Read&& read, Value fallback) const {
    Problems problems;
    Value value = fallback;
    {
        std::lock_guard lock(mutex_);
        if (!statements_) return fallback;
        sqlite3_stmt* prepared = statements_->select;
        bindText(prepared, 1, group);
        bindText(prepared, 2, key);
        const int result = sqlite3_step(prepared);
        if (result == SQLITE_ROW) {
            if (sqlite3_column_type(prepared, 0) != SQLITE_NULL) value = read(prepared);
        } else if (result != SQLITE_DONE) {
            problems.push_back("YUserDefaults could not read " + key + " of " + group + ": " +
                               sqlite3_errmsg(database_));
        }
        sqlite3_reset(prepared);
        sqlite3_clear_bindings(prepared);
    }
    report(problems);
    return value;
}

void YUserDefaults::setInteger(const std::string& key, std::int64_t value, const std::string& group) {
    write(&Statements::upsert, key, group,
          [value](sqlite3_stmt* statement) { sqlite3_bind_int64(statement, 3, value); });
}

std::int64_t YUserDefaults::integer(const std::string& key, const std::string& group) const {
    return read(
        key, group, [](sqlite3_stmt* statement) { return std::int64_t{sqlite3_column_int64(statement, 0)}; },
        std::int64_t{0});
}

void YUserDefaults::setBool(const std::string& key, bool value, const std::string& group) {
    write(&Statements::upsert, key, group,
          [value](sqlite3_stmt* statement) { sqlite3_bind_int64(statement, 3, value ? 1 : 0); });
}

bool YUserDefaults::boolean(const std::string& key, const std::string& group) const {
    return read(
        key, group, [](sqlite3_stmt* statement) { return sqlite3_column_double(statement, 0) != 0.0; }, false);
}

void YUserDefaults::setDouble(const std::string& key, double value, const std::string& group) {
    write(&Statements::upsert, key, group,
          [value](sqlite3_stmt* statement) { sqlite3_bind_double(statement, 3, value); });
}

double YUserDefaults::doubleValue(const std::string& key, const std::string& group) const {
    return read(
        key, group, [](sqlite3_stmt* statement) { return sqlite3_column_double(statement, 0); }, 0.0);
}

void YUserDefaults::remove(const std::string& key, const std::string& group) {
    write(&Statements::erase, key, group, [](sqlite3_stmt*) {});
}

}  // namespace ycontacts

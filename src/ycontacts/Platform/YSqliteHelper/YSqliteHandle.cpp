#include "ycontacts/Platform/YSqliteHelper/YSqliteHandle.h"

#include <sqlite3.h>

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

namespace ycontacts {

namespace {

constexpr int busyTimeoutMilliseconds = 5000;

// Resets a cached statement when a call is done with it, so that it holds no read snapshot, no lock and
// no pointer into the caller's bound values.
class StatementUse {
public:
    explicit StatementUse(sqlite3_stmt* statement) : statement_(statement) {}
    ~StatementUse() {
        sqlite3_reset(statement_);
        sqlite3_clear_bindings(statement_);
    }
    StatementUse(const StatementUse&) = delete;
    StatementUse& operator=(const StatementUse&) = delete;

private:
    sqlite3_stmt* statement_;
};

bool onlyBlankOrComments(sqlite3* database, const char* tail) {
    // Whitespace and comments prepare to no statement at all.
    while (tail && *tail) {
        sqlite3_stmt* next = nullptr;
        const char* rest = nullptr;
        if (sqlite3_prepare_v2(database, tail, -1, &next, &rest) != SQLITE_OK) {
            sqlite3_finalize(next);
            return false;
        }
        if (next) {
            sqlite3_finalize(next);
            return false;
        }
        if (rest == tail) break;
        tail = rest;
    }
    return true;
}

YSqliteValue columnValue(sqlite3_stmt* statement, int index, int type) {
    switch (type) {
        case SQLITE_INTEGER:
            return static_cast<std::int64_t>(sqlite3_column_int64(statement, index));
        case SQLITE_FLOAT:
            return sqlite3_column_double(statement, index);
        case SQLITE_BLOB: {
            const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, index));
            const int size = sqlite3_column_bytes(statement, index);
            return bytes ? std::string(bytes, static_cast<std::size_t>(size)) : std::string();
        }
        default: {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, index));
            const int size = sqlite3_column_bytes(statement, index);
            return text ? std::string(text, static_cast<std::size_t>(size)) : std::string();
        }
    }
}

}  // namespace

YSqliteResult<std::unique_ptr<YSqliteHandle>> YSqliteHandle::open(const std::string& path, bool reader) {
    sqlite3* database = nullptr;
    // NOMUTEX: the connection lets one thread at a time use a handle.
    const int flags =
        (reader ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) | SQLITE_OPEN_NOMUTEX;
    const int openCode = sqlite3_open_v2(path.c_str(), &database, flags, nullptr);
    if (openCode != SQLITE_OK) {
        YSqliteError error{openCode, database ? sqlite3_errmsg(database) : sqlite3_errstr(openCode)};
        sqlite3_close_v2(database);
        return error;
    }
    sqlite3_busy_timeout(database, busyTimeoutMilliseconds);
    // Values are always bound, so a double-quoted word can only be a name: one that names no column
    // is an error, never a string that silently matches nothing or, worse, a column.
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
    sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    // A read-only handle cannot switch the file's journal mode; it follows whatever the writer chose.
    const char* setup = reader ? "PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=OFF; PRAGMA mmap_size=268435456;"
                               : "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=OFF;";
    char* message = nullptr;
    const int setupCode = sqlite3_exec(database, setup, nullptr, nullptr, &message);
    if (setupCode != SQLITE_OK) {
        YSqliteError error{setupCode, message ? message : sqlite3_errstr(setupCode)};
        sqlite3_free(message);
        sqlite3_close_v2(database);
        return error;
    }
    return std::unique_ptr<YSqliteHandle>(new YSqliteHandle(database));
}

YSqliteHandle::~YSqliteHandle() {
    for (auto& entry : statements_) sqlite3_finalize(entry.second);
    sqlite3_close_v2(database_);
}

bool YSqliteHandle::inTransaction() const { return sqlite3_get_autocommit(database_) == 0; }

YSqliteError YSqliteHandle::lastError(int code) const { return YSqliteError{code & 0xff, sqlite3_errmsg(database_)}; }

sqlite3_stmt* YSqliteHandle::statement(const std::string& sql, YSqliteError& error) {
    if (const auto found = index_.find(sql); found != index_.end()) {
        statements_.splice(statements_.begin(), statements_, found->second);
        return found->second->second;
    }
    sqlite3_stmt* prepared = nullptr;
    const char* tail = nullptr;
    const int code = sqlite3_prepare_v3(database_, sql.c_str(), static_cast<int>(sql.size()) + 1,
                                        SQLITE_PREPARE_PERSISTENT, &prepared, &tail);
    if (code != SQLITE_OK) {
        error = lastError(code);
        sqlite3_finalize(prepared);
        return nullptr;
    }
    if (!prepared) {
        error = YSqliteError{SQLITE_MISUSE, "the text holds no SQL statement"};
        return nullptr;
    }
    if (!onlyBlankOrComments(database_, tail)) {
        sqlite3_finalize(prepared);
        error = YSqliteError{SQLITE_MISUSE, "the text holds more than one SQL statement"};
        return nullptr;
    }
    if (statements_.size() >= statementCacheCapacity) {
        sqlite3_finalize(statements_.back().second);
        index_.erase(statements_.back().first);
        statements_.pop_back();
    }
    statements_.emplace_front(sql, prepared);
    index_.emplace(sql, statements_.begin());
    return prepared;
}

YSqliteResult<bool> YSqliteHandle::readsOnly(const std::string& sql) {
    YSqliteError error{SQLITE_OK, {}};
    sqlite3_stmt* prepared = statement(sql, error);
    if (!prepared) return error;
    return sqlite3_stmt_readonly(prepared) != 0;
}

YSqliteResult<void> YSqliteHandle::bindAll(sqlite3_stmt* statement, const std::vector<Binding>& bindings) {
    const int expected = sqlite3_bind_parameter_count(statement);
    if (static_cast<std::size_t>(expected) != bindings.size()) {
        return YSqliteError{SQLITE_RANGE, "the statement takes " + std::to_string(expected) +
                                              " bound values but " + std::to_string(bindings.size()) +
                                              " were given"};
    }
    for (int index = 1; index <= expected; ++index) {
        const YSqliteValue* value = bindings[static_cast<std::size_t>(index - 1)];
        int code = SQLITE_OK;
        if (!value) {
            code = sqlite3_bind_null(statement, index);
        } else if (const auto* text = std::get_if<std::string>(value)) {
            // The values outlive the statement's use: StatementUse clears the bindings before returning.
            code = sqlite3_bind_text64(statement, index, text->data(), text->size(), SQLITE_STATIC, SQLITE_UTF8);
        } else if (const auto* integer = std::get_if<std::int64_t>(value)) {
            code = sqlite3_bind_int64(statement, index, *integer);
        } else if (const auto* flag = std::get_if<bool>(value)) {
            code = sqlite3_bind_int(statement, index, *flag ? 1 : 0);
        } else {
            code = sqlite3_bind_double(statement, index, std::get<double>(*value));
        }
        if (code != SQLITE_OK) return lastError(code);
    }
    return {};
}

YSqliteResult<std::vector<YSqliteRow>> YSqliteHandle::run(const std::string& sql,
                                                          const std::vector<Binding>& bindings) {
    YSqliteError error{SQLITE_OK, {}};
    sqlite3_stmt* prepared = statement(sql, error);
    if (!prepared) return error;
    StatementUse use(prepared);
    if (auto bound = bindAll(prepared, bindings); !bound.ok()) return bound.error();

    std::vector<YSqliteRow> rows;
    const int columnCount = sqlite3_column_count(prepared);
    // Named once per call rather than once per row and column.
    std::vector<std::string> names;
    names.reserve(static_cast<std::size_t>(columnCount));
    for (int column = 0; column < columnCount; ++column) names.emplace_back(sqlite3_column_name(prepared, column));
    for (;;) {
        const int code = sqlite3_step(prepared);
        if (code == SQLITE_DONE) break;
        if (code != SQLITE_ROW) return lastError(code);
        YSqliteRow row;
        row.reserve(static_cast<std::size_t>(columnCount));
        for (int column = 0; column < columnCount; ++column) {
            const int type = sqlite3_column_type(prepared, column);
            if (type == SQLITE_NULL) continue;
            // With two result columns of one name, the first one wins.
            row.emplace(names[static_cast<std::size_t>(column)], columnValue(prepared, column, type));
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

YSqliteResult<void> YSqliteHandle::runEach(const std::string& sql,
                                           const std::vector<std::vector<Binding>>& bindingRows) {
    return inTransaction(
        [&]() -> std::optional<YSqliteError> {
            YSqliteError error{SQLITE_OK, {}};
            sqlite3_stmt* prepared = statement(sql, error);
            if (!prepared) return error;
            // Reset once the rows are in, so the commit or rollback finds nothing of this call still running.
            StatementUse use(prepared);
            for (const auto& bindings : bindingRows) {
                if (auto bound = bindAll(prepared, bindings); !bound.ok()) return bound.error();
                const int code = sqlite3_step(prepared);
                if (code != SQLITE_DONE && code != SQLITE_ROW) return lastError(code);
                sqlite3_reset(prepared);
            }
            return std::nullopt;
        },
        true);
}

YSqliteResult<void> YSqliteHandle::inTransaction(const std::function<std::optional<YSqliteError>()>& work,
                                                 bool writing) {
    const bool outermost = !inTransaction();
    // IMMEDIATE takes the write lock up front, so another connection to the file waits in the busy
    // handler instead of failing halfway through. Nested calls name their savepoint by depth.
    const std::string savepoint = "ysqlite_" + std::to_string(savepointDepth_);
    const std::string begin = writing ? "BEGIN IMMEDIATE" : "BEGIN";
    if (auto begun = runScript(outermost ? begin : "SAVEPOINT " + savepoint); !begun.ok()) return begun;
    ++savepointDepth_;
    std::optional<YSqliteError> error;
    try {
        error = work();
    } catch (const std::exception& exception) {
        error = YSqliteError{SQLITE_ERROR, exception.what()};
    }
    --savepointDepth_;
    const std::string finish = outermost ? "COMMIT" : "RELEASE " + savepoint;
    if (!error && sqlite3_exec(database_, finish.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        error = lastError(sqlite3_errcode(database_));
    }
    if (!error) return {};
    const std::string undo = outermost ? "ROLLBACK" : "ROLLBACK TO " + savepoint + "; RELEASE " + savepoint;
    sqlite3_exec(database_, undo.c_str(), nullptr, nullptr, nullptr);
    return *error;
}

YSqliteResult<void> YSqliteHandle::runScript(const std::string& sql) {
    const bool wasInTransaction = inTransaction();
    char* message = nullptr;
    const int code = sqlite3_exec(database_, sql.c_str(), nullptr, nullptr, &message);
    if (code == SQLITE_OK) return {};
    YSqliteError error{code & 0xff, message ? message : sqlite3_errstr(code)};
    sqlite3_free(message);
    if (!wasInTransaction && inTransaction()) sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
    return error;
}

}  // namespace ycontacts

#include "ycontacts/Platform/YSqliteHelper/YSqliteConnection.h"

#include <sqlite3.h>

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

YSqliteResult<std::shared_ptr<YSqliteConnection>> YSqliteConnection::open(const YSqliteConfiguration& configuration) {
    const bool readOnly = configuration.connectionMode == YSqliteConnectionMode::readOnly;
    const auto openHandle = [&](bool asReader, sqlite3*& database) -> std::optional<YSqliteError> {
        // NOMUTEX: every use of the handle is already serialised by mutex().
        const int flags = (asReader ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) |
                          SQLITE_OPEN_NOMUTEX;
        const int openCode = sqlite3_open_v2(configuration.dbPath.c_str(), &database, flags, nullptr);
        if (openCode != SQLITE_OK) {
            YSqliteError error{openCode, database ? sqlite3_errmsg(database) : sqlite3_errstr(openCode)};
            sqlite3_close_v2(database);
            database = nullptr;
            return error;
        }
        sqlite3_busy_timeout(database, busyTimeoutMilliseconds);
        // Values are always bound, so a double-quoted word can only be a name: one that names no column
        // is an error, never a string that silently matches nothing or, worse, a column.
        sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
        sqlite3_db_config(database, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
        // A read-only handle cannot switch the file's journal mode; it follows whatever the writer chose.
        const char* setup = asReader ? "PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=OFF; PRAGMA mmap_size=268435456;"
                                     : "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL; PRAGMA foreign_keys=OFF;";
        char* message = nullptr;
        const int setupCode = sqlite3_exec(database, setup, nullptr, nullptr, &message);
        if (setupCode == SQLITE_OK) return std::nullopt;
        YSqliteError error{setupCode, message ? message : sqlite3_errstr(setupCode)};
        sqlite3_free(message);
        sqlite3_close_v2(database);
        database = nullptr;
        return error;
    };

    sqlite3* writer = nullptr;
    if (auto error = openHandle(readOnly, writer)) return *error;
    // A second handle on ":memory:" or a temporary file would be another database.
    const bool ownFile = !configuration.dbPath.empty() && configuration.dbPath != ":memory:" &&
                         configuration.dbPath.rfind("file:", 0) != 0;
    sqlite3* reader = nullptr;
    // Without its reader the connection reads through the writer: slower searches, nothing lost.
    if (!readOnly && ownFile) openHandle(true, reader);
    return std::shared_ptr<YSqliteConnection>(new YSqliteConnection(writer, reader));
}

YSqliteConnection::YSqliteConnection(sqlite3* writer, sqlite3* reader) {
    writer_.database = writer;
    reader_.database = reader;
}

YSqliteConnection::~YSqliteConnection() {
    reader_.close();
    writer_.close();
}

void YSqliteConnection::Handle::close() {
    for (auto& entry : statements) sqlite3_finalize(entry.second);
    statements.clear();
    index.clear();
    if (database) sqlite3_close_v2(database);
    database = nullptr;
}

YSqliteError YSqliteConnection::lastError(sqlite3* database, int code) {
    return YSqliteError{code & 0xff, sqlite3_errmsg(database)};
}

sqlite3_stmt* YSqliteConnection::Handle::cached(const std::string& sql) {
    const auto found = index.find(sql);
    if (found == index.end()) return nullptr;
    statements.splice(statements.begin(), statements, found->second);
    return found->second->second;
}

sqlite3_stmt* YSqliteConnection::Handle::statement(const std::string& sql, YSqliteError& error) {
    if (sqlite3_stmt* known = cached(sql)) return known;
    sqlite3_stmt* prepared = nullptr;
    const char* tail = nullptr;
    const int code = sqlite3_prepare_v3(database, sql.c_str(), static_cast<int>(sql.size()) + 1,
                                        SQLITE_PREPARE_PERSISTENT, &prepared, &tail);
    if (code != SQLITE_OK) {
        error = lastError(database, code);
        sqlite3_finalize(prepared);
        return nullptr;
    }
    if (!prepared) {
        error = YSqliteError{SQLITE_MISUSE, "the text holds no SQL statement"};
        return nullptr;
    }
    if (!onlyBlankOrComments(database, tail)) {
        sqlite3_finalize(prepared);
        error = YSqliteError{SQLITE_MISUSE, "the text holds more than one SQL statement"};
        return nullptr;
    }
    if (statements.size() >= statementCacheCapacity) {
        sqlite3_finalize(statements.back().second);
        index.erase(statements.back().first);
        statements.pop_back();
    }
    statements.emplace_front(sql, prepared);
    index.emplace(sql, statements.begin());
    return prepared;
}

YSqliteConnection::Handle& YSqliteConnection::handleFor(const std::string& sql) {
    if (!reader_.database || sqlite3_get_autocommit(writer_.database) == 0) return writer_;
    if (reader_.cached(sql)) return reader_;
    if (writer_.cached(sql)) return writer_;
    sqlite3_stmt* probe = nullptr;
    const bool readsOnly = sqlite3_prepare_v2(reader_.database, sql.c_str(), static_cast<int>(sql.size()) + 1,
                                              &probe, nullptr) == SQLITE_OK &&
                           probe && sqlite3_stmt_readonly(probe) != 0;
    sqlite3_finalize(probe);
    return readsOnly ? reader_ : writer_;
}

YSqliteResult<void> YSqliteConnection::bindAll(sqlite3_stmt* statement, const std::vector<Binding>& bindings) {
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
        if (code != SQLITE_OK) return lastError(sqlite3_db_handle(statement), code);
    }
    return {};
}

YSqliteResult<std::vector<YSqliteRow>> YSqliteConnection::run(const std::string& sql,
                                                              const std::vector<Binding>& bindings) {
    YSqliteError error{SQLITE_OK, {}};
    Handle& handle = handleFor(sql);
    sqlite3_stmt* prepared = handle.statement(sql, error);
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
        if (code != SQLITE_ROW) return lastError(handle.database, code);
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

YSqliteResult<void> YSqliteConnection::runEach(const std::string& sql,
                                               const std::vector<std::vector<Binding>>& bindingRows) {
    return inTransaction([&]() -> std::optional<YSqliteError> {
        YSqliteError error{SQLITE_OK, {}};
        sqlite3_stmt* prepared = writer_.statement(sql, error);
        if (!prepared) return error;
        // Reset once the rows are in, so the commit or rollback finds nothing of this call still running.
        StatementUse use(prepared);
        for (const auto& bindings : bindingRows) {
            if (auto bound = bindAll(prepared, bindings); !bound.ok()) return bound.error();
            const int code = sqlite3_step(prepared);
            if (code != SQLITE_DONE && code != SQLITE_ROW) return lastError(writer_.database, code);
            sqlite3_reset(prepared);
        }
        return std::nullopt;
    });
}

YSqliteResult<void> YSqliteConnection::inTransaction(const std::function<std::optional<YSqliteError>()>& work,
                                                     bool writing) {
    // A read snapshot is taken on the reader, unless a write transaction is open: then it is part of that.
    sqlite3* database = !writing && reader_.database && sqlite3_get_autocommit(writer_.database) != 0
                            ? reader_.database
                            : writer_.database;
    const bool outermost = sqlite3_get_autocommit(database) != 0;
    // IMMEDIATE takes the write lock up front, so another connection to the file waits in the busy
    // handler instead of failing halfway through. Nested calls name their savepoint by depth.
    const std::string savepoint = "ysqlite_" + std::to_string(savepointDepth_);
    const std::string begin = writing ? "BEGIN IMMEDIATE" : "BEGIN";
    if (auto begun = runScript(database, outermost ? begin : "SAVEPOINT " + savepoint); !begun.ok()) return begun;
    ++savepointDepth_;
    std::optional<YSqliteError> error;
    try {
        error = work();
    } catch (const std::exception& exception) {
        error = YSqliteError{SQLITE_ERROR, exception.what()};
    }
    --savepointDepth_;
    const std::string finish = outermost ? "COMMIT" : "RELEASE " + savepoint;
    if (!error && sqlite3_exec(database, finish.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        error = lastError(database, sqlite3_errcode(database));
    }
    if (!error) return {};
    const std::string undo = outermost ? "ROLLBACK" : "ROLLBACK TO " + savepoint + "; RELEASE " + savepoint;
    sqlite3_exec(database, undo.c_str(), nullptr, nullptr, nullptr);
    return *error;
}

YSqliteResult<void> YSqliteConnection::runScript(const std::string& sql) { return runScript(writer_.database, sql); }

YSqliteResult<void> YSqliteConnection::runScript(sqlite3* database, const std::string& sql) {
    const bool wasInTransaction = sqlite3_get_autocommit(database) == 0;
    char* message = nullptr;
    const int code = sqlite3_exec(database, sql.c_str(), nullptr, nullptr, &message);
    if (code == SQLITE_OK) return {};
    YSqliteError error{code & 0xff, message ? message : sqlite3_errstr(code)};
    sqlite3_free(message);
    if (!wasInTransaction && sqlite3_get_autocommit(database) == 0) {
        sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    return error;
}

}  // namespace ycontacts

#include "ycontacts/Platform/YSqliteHelper/YSqliteHelper.h"

#include <sqlite3.h>

#include <algorithm>
#include <exception>
#include <utility>

#include "ycontacts/Platform/MarloComponents/Logger.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteConnection.h"

namespace ycontacts {

namespace {

std::string quotedIdentifier(const std::string& name) {
    std::string quoted = "\"";
    for (const char character : name) {
        if (character == '"') quoted += '"';
        quoted += character;
    }
    quoted += '"';
    return quoted;
}

const char* conflictClause(YSqliteConflictResolution resolution) {
    switch (resolution) {
        case YSqliteConflictResolution::rollback: return " OR ROLLBACK";
        case YSqliteConflictResolution::abort: return " OR ABORT";
        case YSqliteConflictResolution::fail: return " OR FAIL";
        case YSqliteConflictResolution::ignore: return " OR IGNORE";
        case YSqliteConflictResolution::replace: return " OR REPLACE";
    }
    return "";
}

// Sorted, so that the same columns always give the same text and so the same cached statement.
std::vector<std::string> columnNames(const std::vector<YSqliteRow>& rows) {
    std::vector<std::string> names;
    for (const auto& row : rows) {
        for (const auto& entry : row) names.push_back(entry.first);
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

std::vector<YSqliteConnection::Binding> pointersTo(const std::vector<YSqliteValue>& values) {
    std::vector<YSqliteConnection::Binding> pointers;
    pointers.reserve(values.size());
    for (const auto& value : values) pointers.push_back(&value);
    return pointers;
}

YSqliteResult<void> withoutRows(const YSqliteResult<std::vector<YSqliteRow>>& ran) {
    return ran.ok() ? YSqliteResult<void>() : YSqliteResult<void>(ran.error());
}

}  // namespace

YSqliteHelper& YSqliteHelper::getShared() {
    static YSqliteHelper shared;
    return shared;
}

YSqliteHelper::YSqliteHelper() = default;
YSqliteHelper::~YSqliteHelper() = default;

std::shared_ptr<YSqliteConnection> YSqliteHelper::connection(const std::string& identifier) const {
    std::lock_guard lock(registryMutex_);
    const auto found = connections_.find(identifier);
    return found == connections_.end() ? nullptr : found->second;
}

template <typename T, typename Work>
YSqliteResult<T> YSqliteHelper::perform(const char* operation, const std::string& target, bool alert,
                                        const std::string& identifier, Work&& work) noexcept {
    YSqliteResult<T> result = YSqliteError{SQLITE_MISUSE, "no database is registered as " + identifier};
    try {
        // The connection takes the locks a call needs; see YSqliteConnection.h.
        if (const auto database = connection(identifier)) result = work(*database);
    } catch (const std::exception& exception) {
        result = YSqliteError{SQLITE_ERROR, exception.what()};
    }
    // Logged after the connection's locks are released: the log sink is someone else's code.
    if (alert && !result.ok()) {
        try {
            Logger::shared().error("SQLite " + std::string(operation) + " failed on " + target + " in database " +
                                   identifier + ", code " + std::to_string(result.error().code) + ": " +
                                   result.error().message);
        } catch (const std::exception&) {
            // Nothing is left to report through when the log line itself cannot be built.
        }
    }
    return result;
}

YSqliteResult<void> YSqliteHelper::registerDB(const std::string& identifier,
                                              const YSqliteConfiguration& configuration) {
    try {
        auto opened = YSqliteConnection::open(configuration);
        if (!opened.ok()) {
            Logger::shared().error("SQLite registration failed for database " + identifier + " at " +
                                   Logger::logDescription(configuration.dbPath) + ", code " +
                                   std::to_string(opened.error().code) + ": " + opened.error().message);
            return opened.error();
        }
        std::shared_ptr<YSqliteConnection> previous;
        {
            std::lock_guard lock(registryMutex_);
            auto& slot = connections_[identifier];
            previous = std::exchange(slot, opened.value());
        }
        // `previous` closes here, outside the registry lock, unless a running call still holds it.
        return {};
    } catch (const std::exception& exception) {
        return YSqliteError{SQLITE_ERROR, exception.what()};
    }
}

void YSqliteHelper::unregisterDB(const std::string& identifier) {
    std::shared_ptr<YSqliteConnection> removed;
    std::lock_guard lock(registryMutex_);
    if (const auto found = connections_.find(identifier); found != connections_.end()) {
        removed = std::move(found->second);
        connections_.erase(found);
    }
}

YSqliteResult<void> YSqliteHelper::save(const std::string& tableName, const std::vector<YSqliteRow>& columns,
                                        bool replace, bool alert, const std::string& identifier) {
    return perform<void>("save", tableName, alert, identifier, [&](YSqliteConnection& database) {
        if (columns.empty()) return YSqliteResult<void>();
        const auto names = columnNames(columns);
        std::string sql = std::string(replace ? "INSERT OR REPLACE INTO " : "INSERT INTO ") + quotedIdentifier(tableName);
        if (names.empty()) {
            sql += " DEFAULT VALUES";
        } else {
            std::string placeholders;
            sql += " (";
            for (std::size_t index = 0; index < names.size(); ++index) {
                if (index > 0) {
                    sql += ", ";
                    placeholders += ", ";
                }
                sql += quotedIdentifier(names[index]);
                placeholders += '?';
            }
            sql += ") VALUES (" + placeholders + ")";
        }
        std::vector<std::vector<YSqliteConnection::Binding>> bindingRows;
        bindingRows.reserve(columns.size());
        for (const auto& row : columns) {
            std::vector<YSqliteConnection::Binding> bindings;
            bindings.reserve(names.size());
            for (const auto& name : names) {
                const auto found = row.find(name);
                bindings.push_back(found == row.end() ? nullptr : &found->second);
            }
            bindingRows.push_back(std::move(bindings));
        }
        return database.runEach(sql, bindingRows);
    });
}

YSqliteResult<void> YSqliteHelper::deleteFrom(const std::string& from, const std::optional<std::string>& where,
                                              const std::vector<YSqliteValue>& bindings, bool alert,
                                              const std::string& identifier) {
    return perform<void>("delete", from, alert, identifier, [&](YSqliteConnection& database) {
        std::string sql = "DELETE FROM " + quotedIdentifier(from);
        if (where) sql += " WHERE " + *where;
        return withoutRows(database.run(sql, pointersTo(bindings)));
    });
}

YSqliteResult<std::vector<YSqliteRow>> YSqliteHelper::select(const std::string& rawQuery, bool alert,
                                                             const std::string& identifier) {
    return select(rawQuery, std::vector<YSqliteValue>{}, alert, identifier);
}

YSqliteResult<std::vector<YSqliteRow>> YSqliteHelper::select(const std::string& rawQuery,
                                                             const std::vector<YSqliteValue>& bindings, bool alert,
                                                             const std::string& identifier) {
    using Rows = std::vector<YSqliteRow>;
    return perform<Rows>("select", "query " + rawQuery, alert, identifier, [&](YSqliteConnection& database) {
        return database.read(rawQuery, pointersTo(bindings));
    });
}

YSqliteResult<void> YSqliteHelper::update(const std::string& tableName, const std::string& where,
                                          const std::vector<YSqliteValue>& whereBindings,
                                          const YSqliteRow& columnData,
                                          std::optional<YSqliteConflictResolution> onConflict, bool alert,
                                          const std::string& identifier) {
    return perform<void>("update", tableName, alert, identifier, [&](YSqliteConnection& database) {
        if (columnData.empty()) return YSqliteResult<void>();
        std::string sql = "UPDATE";
        if (onConflict) sql += conflictClause(*onConflict);
        // Appended piece by piece: GCC 12 misreads `" " + std::string` here as an overlapping copy.
        sql += ' ';
        sql += quotedIdentifier(tableName);
        sql += " SET ";
        std::vector<YSqliteConnection::Binding> bindings;
        bool first = true;
        std::vector<std::string> names;
        for (const auto& entry : columnData) names.push_back(entry.first);
        std::sort(names.begin(), names.end());
        for (const auto& name : names) {
            if (!first) sql += ", ";
            first = false;
            sql += quotedIdentifier(name) + " = ?";
            bindings.push_back(&columnData.at(name));
        }
        sql += " WHERE " + where;
        for (const auto& value : whereBindings) bindings.push_back(&value);
        return withoutRows(database.run(sql, bindings));
    });
}

YSqliteResult<void> YSqliteHelper::execute(const std::string& rawQuery, bool alert, const std::string& identifier) {
    return perform<void>("execute", "query " + rawQuery, alert, identifier,
                         [&](YSqliteConnection& database) { return database.runScript(rawQuery); });
}

YSqliteResult<void> YSqliteHelper::execute(const std::string& rawQuery, const std::vector<YSqliteValue>& bindings,
                                           bool alert, const std::string& identifier) {
    return perform<void>("execute", "query " + rawQuery, alert, identifier, [&](YSqliteConnection& database) {
        return withoutRows(database.run(rawQuery, pointersTo(bindings)));
    });
}

YSqliteResult<void> YSqliteHelper::transaction(const std::function<bool()>& work, bool alert,
                                               const std::string& identifier) {
    return perform<void>("transaction", "a transaction", alert, identifier, [&](YSqliteConnection& database) {
        return database.inTransaction([&]() -> std::optional<YSqliteError> {
            if (work()) return std::nullopt;
            return YSqliteError{SQLITE_ABORT, "the work asked for a rollback"};
        });
    });
}

YSqliteResult<void> YSqliteHelper::snapshot(const std::function<void()>& work, bool alert,
                                            const std::string& identifier) {
    return perform<void>("snapshot", "a read snapshot", alert, identifier, [&](YSqliteConnection& database) {
        return database.inSnapshot([&]() -> std::optional<YSqliteError> {
            work();
            return std::nullopt;
        });
    });
}

}  // namespace ycontacts

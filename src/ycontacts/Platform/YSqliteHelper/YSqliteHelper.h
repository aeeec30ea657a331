#pragma once
// YSqliteHelper: the library's database adapter; named SQLite connections and the statements run on them.

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "ycontacts/Platform/YSqliteHelper/YSqliteConfiguration.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteQueryOptions.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteResult.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"

namespace ycontacts {

class YSqliteConnection;

// Every operation names the connection by the identifier it was registered under. Any thread may call
// any operation. Writes run one at a time; a select or a snapshot made on another thread meanwhile answers
// from the last committed state without waiting for them (on a database in memory or one registered
// readOnly, which have a single handle, it waits). Nothing throws; failures come back as error results (an
// unknown identifier is SQLITE_MISUSE) and, when `alert` is true, as an error log line.
//
// Table and column names are quoted as identifiers. `where` texts are SQL written by the caller with a "?"
// for every value; the values travel in `bindings`, in order, and are never placed into the text, so any
// text (quotes, NUL, a column's name, SQL) is compared exactly and reaches only its own rows.
class YSqliteHelper {
public:
    // The instance the library uses.
    static YSqliteHelper& getShared();

    YSqliteHelper();
    ~YSqliteHelper();
    YSqliteHelper(const YSqliteHelper&) = delete;
    YSqliteHelper& operator=(const YSqliteHelper&) = delete;

    // Opens the database and binds it to `identifier`, replacing an earlier connection of that identifier.
    // A failed registration is logged and leaves any earlier connection in place.
    YSqliteResult<void> registerDB(const std::string& identifier, const YSqliteConfiguration& configuration);
    // Closes the connection once calls already running on it are done.
    void unregisterDB(const std::string& identifier);

    // Inserts the rows (INSERT OR REPLACE when `replace`), binding every value, in one transaction: either
    // every row is written or none. A column missing from some rows is NULL in them.
    YSqliteResult<void> save(const std::string& tableName, const std::vector<YSqliteRow>& columns, bool replace,
                             bool alert, const std::string& identifier);

    // DELETE FROM `from` [WHERE where], the where's "?" parameters taking `bindings` in order.
    YSqliteResult<void> deleteFrom(const std::string& from, const std::optional<std::string>& where,
                                   const std::vector<YSqliteValue>& bindings, bool alert,
                                   const std::string& identifier);

    // One SELECT statement written by the caller.
    YSqliteResult<std::vector<YSqliteRow>> select(const std::string& rawQuery, bool alert,
                                                  const std::string& identifier);

    // One SELECT statement whose "?" parameters take `bindings` in order.
    YSqliteResult<std::vector<YSqliteRow>> select(const std::string& rawQuery,
                                                  const std::vector<YSqliteValue>& bindings, bool alert,
                                                  const std::string& identifier);

    // UPDATE [OR onConflict] tableName SET column = value, ... WHERE where; the column values are bound, then
    // `whereBindings` for the where's "?" parameters. Without a conflict resolution SQLite's default (abort)
    // applies. Empty column data updates nothing.
    YSqliteResult<void> update(const std::string& tableName, const std::string& where,
                               const std::vector<YSqliteValue>& whereBindings, const YSqliteRow& columnData,
                               std::optional<YSqliteConflictResolution> onConflict, bool alert,
                               const std::string& identifier);

    // Statements that return no rows and take no values, several allowed, run in order until one fails.
    YSqliteResult<void> execute(const std::string& rawQuery, bool alert, const std::string& identifier);

    // One statement that returns no rows, its "?" parameters taking `bindings` in order.
    YSqliteResult<void> execute(const std::string& rawQuery, const std::vector<YSqliteValue>& bindings,
                                bool alert, const std::string& identifier);

    // Runs `work` in one transaction on the connection. The calls `work` makes on this thread join it (each
    // still all-or-nothing on its own) and its selects see its writes; other threads' writes wait until it
    // ends, their selects see the state before it. It is committed when `work` returns true and rolled back
    // when it returns false or throws. Several writes done as one cost one commit and write each changed
    // page once.
    YSqliteResult<void> transaction(const std::function<bool()>& work, bool alert, const std::string& identifier);

    // Runs `work` on one snapshot of the file: the selects it makes on this thread all see the database as
    // it was at the first of them, whatever is committed meanwhile, and take the read lock once. Writers on
    // a file, this connection's included, do not wait for it.
    YSqliteResult<void> snapshot(const std::function<void()>& work, bool alert, const std::string& identifier);

private:
    std::shared_ptr<YSqliteConnection> connection(const std::string& identifier) const;

    // Finds the connection, runs `work` on it, then logs a failure when `alert` is set.
    template <typename T, typename Work>
    YSqliteResult<T> perform(const char* operation, const std::string& target, bool alert,
                             const std::string& identifier, Work&& work) noexcept;

    mutable std::mutex registryMutex_;
    std::unordered_map<std::string, std::shared_ptr<YSqliteConnection>> connections_;
};

}  // namespace ycontacts

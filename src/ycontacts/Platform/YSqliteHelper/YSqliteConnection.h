#pragma once
// YSqliteConnection: the sqlite3 handles of one registered database (a writer and, for a file, a mapped reader).

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ycontacts/Platform/YSqliteHelper/YSqliteConfiguration.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteResult.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"

struct sqlite3;
struct sqlite3_stmt;

namespace ycontacts {

// Not thread-safe by itself: whoever calls the statement functions holds mutex() for the whole call. The
// mutex is recursive so that the helper's calls made inside a transaction, on its thread, can take it again.
class YSqliteConnection {
public:
    // One bound parameter; a null pointer binds NULL.
    using Binding = const YSqliteValue*;

    // Opens (for readWrite, creating) the file in WAL mode with synchronous=NORMAL, a 5 s busy timeout
    // and foreign keys off. A readWrite file gets two handles: the writer reads its pages with system calls,
    // so that a long download does not map the whole file into the process; the reader maps up to 256 MiB of
    // it, so that a search touching scattered pages already in the OS cache makes no system call per page.
    static YSqliteResult<std::shared_ptr<YSqliteConnection>> open(const YSqliteConfiguration& configuration);

    ~YSqliteConnection();
    YSqliteConnection(const YSqliteConnection&) = delete;
    YSqliteConnection& operator=(const YSqliteConnection&) = delete;

    std::recursive_mutex& mutex() { return mutex_; }

    // Runs one statement with its parameters bound in order and returns the rows it yields (none for a
    // write). Text holding a second statement is refused.
    YSqliteResult<std::vector<YSqliteRow>> run(const std::string& sql, const std::vector<Binding>& bindings);

    // Runs one statement once per list of bindings, all in one transaction (a savepoint when a transaction
    // is already open); the first failure rolls the whole call back.
    YSqliteResult<void> runEach(const std::string& sql, const std::vector<std::vector<Binding>>& bindingRows);

    // Runs `work` in one transaction (a savepoint when a transaction is already open): it is committed
    // when `work` gives no error and rolled back otherwise, an exception included. A writing transaction
    // takes the file's write lock before `work` starts; a reading one only pins a snapshot at its first read.
    YSqliteResult<void> inTransaction(const std::function<std::optional<YSqliteError>()>& work, bool writing = true);

    // Runs text that may hold several statements; a transaction it opens and leaves open by failing is
    // rolled back.
    YSqliteResult<void> runScript(const std::string& sql);

private:
    // Enough for the store's statements, whose texts are fixed: every value is bound.
    static constexpr std::size_t statementCacheCapacity = 64;

    // One sqlite3 handle and its prepared statements, most recently used first (the map points into the list).
    struct Handle {
        sqlite3* database = nullptr;
        std::list<std::pair<std::string, sqlite3_stmt*>> statements;
        std::unordered_map<std::string, std::list<std::pair<std::string, sqlite3_stmt*>>::iterator> index;

        // The cached statement for `sql`, or null.
        sqlite3_stmt* cached(const std::string& sql);
        // The cached statement for `sql`, prepared on first use; null with `error` set on failure.
        sqlite3_stmt* statement(const std::string& sql, YSqliteError& error);
        void close();
    };

    YSqliteConnection(sqlite3* writer, sqlite3* reader);

    // The handle `sql` runs on: the reader for a statement that only reads while the writer holds no
    // transaction (whose own writes a read inside it must see), the writer otherwise.
    Handle& handleFor(const std::string& sql);
    YSqliteResult<void> bindAll(sqlite3_stmt* statement, const std::vector<Binding>& bindings);
    YSqliteResult<void> runScript(sqlite3* database, const std::string& sql);
    static YSqliteError lastError(sqlite3* database, int code);

    std::recursive_mutex mutex_;
    Handle writer_;
    // A second, read-only handle with the file memory-mapped; none for a read-only configuration, where the
    // one handle is mapped, or for a database that lives in memory.
    Handle reader_;
    // Transactions open inside the outermost one, each under its own savepoint.
    int savepointDepth_ = 0;
};

}  // namespace ycontacts

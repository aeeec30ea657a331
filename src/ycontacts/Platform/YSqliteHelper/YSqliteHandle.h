#pragma once
// YSqliteHandle: one sqlite3 handle of a connection, with its prepared statements and open savepoints.

#include <cstddef>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "ycontacts/Platform/YSqliteHelper/YSqliteResult.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"

struct sqlite3;
struct sqlite3_stmt;

namespace ycontacts {

// Not thread-safe: one thread at a time uses a handle, which its connection sees to.
class YSqliteHandle {
public:
    // One bound parameter; a null pointer binds NULL.
    using Binding = const YSqliteValue*;

    // Opens the file with a 5 s busy timeout, synchronous=NORMAL and foreign keys off. A writer creates the
    // file when missing and puts it in WAL mode; it reads its pages with system calls, so that a long
    // download does not map the whole file into the process. A reader opens it read-only and maps up to
    // 256 MiB of it, so that a search touching scattered pages already in the OS cache makes no system call
    // per page.
    static YSqliteResult<std::unique_ptr<YSqliteHandle>> open(const std::string& path, bool reader);

    ~YSqliteHandle();
    YSqliteHandle(const YSqliteHandle&) = delete;
    YSqliteHandle& operator=(const YSqliteHandle&) = delete;

    // Whether a transaction is open on the handle.
    bool inTransaction() const;

    // Whether `sql` only reads. The statement is prepared and kept for the run that follows; text that does
    // not prepare is an error.
    YSqliteResult<bool> readsOnly(const std::string& sql);

    // Runs one statement with its parameters bound in order and returns the rows it yields (none for a
    // write). Text holding a second statement is refused.
    YSqliteResult<std::vector<YSqliteRow>> run(const std::string& sql, const std::vector<Binding>& bindings);

    // Runs one statement once per list of bindings, all in one transaction (a savepoint when a transaction
    // is already open); the first failure rolls the whole call back.
    YSqliteResult<void> runEach(const std::string& sql, const std::vector<std::vector<Binding>>& bindingRows);

    // Runs `work` in one transaction (a savepoint when a transaction is already open): it is committed
    // when `work` gives no error and rolled back otherwise, an exception included. A writing transaction
    // takes the file's write lock before `work` starts; a reading one only pins a snapshot at its first read.
    YSqliteResult<void> inTransaction(const std::function<std::optional<YSqliteError>()>& work, bool writing);

    // Runs text that may hold several statements; a transaction it opens and leaves open by failing is
    // rolled back.
    YSqliteResult<void> runScript(const std::string& sql);

private:
    // Enough for the store's statements, whose texts are fixed: every value is bound.
    static constexpr std::size_t statementCacheCapacity = 64;
    using Statements = std::list<std::pair<std::string, sqlite3_stmt*>>;

    explicit YSqliteHandle(sqlite3* database) : database_(database) {}

    // The cached statement for `sql`, prepared on first use; null with `error` set on failure.
    sqlite3_stmt* statement(const std::string& sql, YSqliteError& error);
    YSqliteResult<void> bindAll(sqlite3_stmt* statement, const std::vector<Binding>& bindings);
    YSqliteError lastError(int code) const;

    sqlite3* database_;
    // Most recently used first; the index points into the list.
    Statements statements_;
    std::unordered_map<std::string, Statements::iterator> index_;
    // Transactions open inside the outermost one, each under its own savepoint.
    int savepointDepth_ = 0;
};

}  // namespace ycontacts

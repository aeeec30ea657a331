#pragma once
// YSqliteConnection: the sqlite3 handles of one registered database (a writer and, for a file, a mapped reader).

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ycontacts/Platform/YSqliteHelper/YSqliteConfiguration.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHandle.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteResult.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"

namespace ycontacts {

// Not thread-safe by itself: whoever calls the statement functions holds mutex() for the whole call. The
// mutex is recursive so that the helper's calls made inside a transaction, on its thread, can take it again.
class YSqliteConnection {
public:
    using Binding = YSqliteHandle::Binding;

    // Opens the file (see YSqliteHandle::open); a readWrite file gets a writer and a reader handle, a
    // readOnly one a single reader handle.
    static YSqliteResult<std::shared_ptr<YSqliteConnection>> open(const YSqliteConfiguration& configuration);

    ~YSqliteConnection() = default;
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
    YSqliteConnection(std::unique_ptr<YSqliteHandle> writer, std::unique_ptr<YSqliteHandle> reader)
        : writer_(std::move(writer)), reader_(std::move(reader)) {}

    // The handle `sql` runs on: the reader for a statement that only reads while the writer holds no
    // transaction (whose own writes a read inside it must see), the writer otherwise.
    YSqliteHandle& handleFor(const std::string& sql);

    std::recursive_mutex mutex_;
    std::unique_ptr<YSqliteHandle> writer_;
    // A second, read-only handle with the file memory-mapped; none for a read-only configuration, where the
    // one handle is mapped, or for a database that lives in memory.
    std::unique_ptr<YSqliteHandle> reader_;
};

}  // namespace ycontacts

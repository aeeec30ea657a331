#pragma once
// YSqliteConnection: a registered database's writer handle and, for a file, its pool of mapped read handles.

// Locks, outermost first; a thread holding one takes only those listed after it:
//
//   1. YSqliteHelper::registryMutex_: held only to find, add or swap a connection, never during a call.
//   2. writerMutex_ (recursive): the writer handle, its statements and savepoints, writerDepth_. Held for a
//      whole write call and a whole transaction, whose work re-enters it on the same thread.
//   3. readersMutex_: the idle read handles and the snapshot each thread has pinned. Held only to hand a
//      read handle out or take it back: no statement runs and no handle opens or closes under it.
//
// A read handle that is out belongs to its thread alone until it is given back, so it has no lock. Its
// thread may take writerMutex_ (a write made inside a snapshot); a thread holding writerMutex_ reads on the
// writer and never waits for a read handle, and none is ever waited for: one is opened when none is idle.

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "ycontacts/Platform/YSqliteHelper/YSqliteConfiguration.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteHandle.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteResult.h"
#include "ycontacts/Platform/YSqliteHelper/YSqliteValue.h"

namespace ycontacts {

// Thread-safe. Writes run one at a time on the writer. A read from a thread that has no write transaction
// open runs on a read handle of its own and sees the last committed state without waiting for the writer;
// a read from the thread that has one runs on the writer, so that it sees that transaction's writes.
class YSqliteConnection {
public:
    using Binding = YSqliteHandle::Binding;

    // Opens the file (see YSqliteHandle::open): a readWrite file gets a writer and one read handle, more read
    // handles being opened when reads overlap; a readOnly file or a database in memory gets one handle only,
    // which every call uses in turn.
    static YSqliteResult<std::shared_ptr<YSqliteConnection>> open(const YSqliteConfiguration& configuration);

    ~YSqliteConnection();
    YSqliteConnection(const YSqliteConnection&) = delete;
    YSqliteConnection& operator=(const YSqliteConnection&) = delete;

    // One statement that is expected to read, with the rows it yields; text that turns out to write runs
    // on the writer.
    YSqliteResult<std::vector<YSqliteRow>> read(const std::string& sql, const std::vector<Binding>& bindings);

    // These run on the writer, under its lock; see YSqliteHandle for what each does.
    YSqliteResult<std::vector<YSqliteRow>> run(const std::string& sql, const std::vector<Binding>& bindings);
    YSqliteResult<void> runEach(const std::string& sql, const std::vector<std::vector<Binding>>& bindingRows);
    YSqliteResult<void> inTransaction(const std::function<std::optional<YSqliteError>()>& work);
    YSqliteResult<void> runScript(const std::string& sql);

    // Runs `work` on one read snapshot: the reads it makes on this thread all see the file as at the first
    // of them. Inside a write transaction of this thread it is a savepoint of that transaction instead.
    YSqliteResult<void> inSnapshot(const std::function<std::optional<YSqliteError>()>& work);

private:
    // Read handles kept open while idle: one per use-case thread (UsecaseQueue::threadCount). Reads beyond
    // that many at once open a handle for the time of the read.
    static constexpr std::size_t idleReaderLimit = 4;

    class ReaderLease;

    YSqliteConnection(std::string path, std::unique_ptr<YSqliteHandle> writer, std::unique_ptr<YSqliteHandle> reader,
                      bool pooled);

    // Runs `work` on the writer under its lock, keeping track of the thread whose transaction is open on it.
    template <typename Work>
    auto onWriter(Work&& work);
    // Whether this thread's reads must run on the writer: it holds the writer lock, or left a transaction
    // open on the writer (a "BEGIN" run as a statement).
    bool readsOnWriter() const;

    const std::string path_;
    // Read handles exist only for a read-write file: a second handle on a database in memory would be
    // another database, and a readOnly file's one handle is a mapped reader already.
    const bool pooled_;

    std::recursive_mutex writerMutex_;
    const std::unique_ptr<YSqliteHandle> writer_;
    // Nesting of writerMutex_ on the thread that holds it.
    int writerDepth_ = 0;
    // The thread whose reads run on the writer (see readsOnWriter); written only under writerMutex_.
    std::atomic<std::thread::id> writerThread_;

    std::mutex readersMutex_;
    std::vector<std::unique_ptr<YSqliteHandle>> idleReaders_;
    // The read handle each thread in a snapshot has pinned; its reads and nested snapshots use it.
    std::vector<std::pair<std::thread::id, YSqliteHandle*>> snapshots_;
};

}  // namespace ycontacts

#include "ycontacts/Platform/YSqliteHelper/YSqliteConnection.h"

#include <algorithm>
#include <string>

namespace ycontacts {

// A read handle for one call: the one this thread pinned for its snapshot when it is in one, an idle one
// otherwise, or a newly opened one; given back when the lease ends. Pinning makes it this thread's
// snapshot handle until then.
class YSqliteConnection::ReaderLease {
public:
    ReaderLease(YSqliteConnection& connection, bool pin) : connection_(connection) {
        const auto thread = std::this_thread::get_id();
        {
            std::lock_guard lock(connection_.readersMutex_);
            for (const auto& [owner, handle] : connection_.snapshots_) {
                if (owner == thread) {
                    handle_ = handle;
                    return;
                }
            }
            if (!connection_.idleReaders_.empty()) {
                owned_ = std::move(connection_.idleReaders_.back());
                connection_.idleReaders_.pop_back();
            }
        }
        if (!owned_) {
            // A handle that cannot be opened leaves the read to the writer; the next read tries again.
            auto opened = YSqliteHandle::open(connection_.path_, true);
            if (!opened.ok()) return;
            owned_ = opened.takeValue();
        }
        handle_ = owned_.get();
        if (pin) {
            std::lock_guard lock(connection_.readersMutex_);
            connection_.snapshots_.emplace_back(thread, handle_);
            pinned_ = true;
        }
    }

    ~ReaderLease() {
        if (!owned_) return;
        // A handle not kept closes when owned_ is destroyed, after this body has released the lock.
        std::lock_guard lock(connection_.readersMutex_);
        if (pinned_) {
            auto& snapshots = connection_.snapshots_;
            snapshots.erase(std::find_if(snapshots.begin(), snapshots.end(),
                                         [&](const auto& entry) { return entry.second == handle_; }));
        }
        // A handle left inside a transaction (a select that ran "BEGIN") would hold its snapshot for the
        // next reader: it is closed rather than kept, which rolls that transaction back.
        if (!owned_->inTransaction() && connection_.idleReaders_.size() < idleReaderLimit) {
            connection_.idleReaders_.push_back(std::move(owned_));
        }
    }

    ReaderLease(const ReaderLease&) = delete;
    ReaderLease& operator=(const ReaderLease&) = delete;

    // Null when no read handle could be opened.
    YSqliteHandle* handle() const { return handle_; }

private:
    YSqliteConnection& connection_;
    std::unique_ptr<YSqliteHandle> owned_;
    YSqliteHandle* handle_ = nullptr;
    bool pinned_ = false;
};

YSqliteResult<std::shared_ptr<YSqliteConnection>> YSqliteConnection::open(const YSqliteConfiguration& configuration) {
    const bool readOnly = configuration.connectionMode == YSqliteConnectionMode::readOnly;
    auto writer = YSqliteHandle::open(configuration.dbPath, readOnly);
    if (!writer.ok()) return writer.error();
    // A second handle on ":memory:" or a temporary file would be another database.
    const bool ownFile = !configuration.dbPath.empty() && configuration.dbPath != ":memory:" &&
                         configuration.dbPath.rfind("file:", 0) != 0;
    std::unique_ptr<YSqliteHandle> reader;
    // Opened now so that the first read finds it; when it cannot be, reads open one themselves.
    if (!readOnly && ownFile) {
        if (auto opened = YSqliteHandle::open(configuration.dbPath, true); opened.ok()) reader = opened.takeValue();
    }
    return std::shared_ptr<YSqliteConnection>(
        new YSqliteConnection(configuration.dbPath, writer.takeValue(), std::move(reader), !readOnly && ownFile));
}

YSqliteConnection::YSqliteConnection(std::string path, std::unique_ptr<YSqliteHandle> writer,
                                     std::unique_ptr<YSqliteHandle> reader, bool pooled)
    : path_(std::move(path)), pooled_(pooled), writer_(std::move(writer)) {
    if (reader) idleReaders_.push_back(std::move(reader));
}

YSqliteConnection::~YSqliteConnection() = default;

template <typename Work>
auto YSqliteConnection::onWriter(Work&& work) {
    std::lock_guard lock(writerMutex_);
    writerThread_.store(std::this_thread::get_id());
    ++writerDepth_;
    // Destroyed before the lock is released. The outermost call gives the writer up unless it left a
    // transaction open there, whose later reads on this thread must still see its writes.
    struct Leave {
        YSqliteConnection& connection;
        ~Leave() {
            if (--connection.writerDepth_ == 0 && !connection.writer_->inTransaction()) {
                connection.writerThread_.store(std::thread::id());
            }
        }
    } leave{*this};
    return work(*writer_);
}

bool YSqliteConnection::readsOnWriter() const { return writerThread_.load() == std::this_thread::get_id(); }

YSqliteResult<std::vector<YSqliteRow>> YSqliteConnection::read(const std::string& sql,
                                                               const std::vector<Binding>& bindings) {
    if (pooled_ && !readsOnWriter()) {
        ReaderLease lease(*this, false);
        if (YSqliteHandle* reader = lease.handle()) {
            const auto readsOnly = reader->readsOnly(sql);
            if (!readsOnly.ok()) return readsOnly.error();
            if (readsOnly.value()) return reader->run(sql, bindings);
        }
    }
    return run(sql, bindings);
}

YSqliteResult<std::vector<YSqliteRow>> YSqliteConnection::run(const std::string& sql,
                                                              const std::vector<Binding>& bindings) {
    return onWriter([&](YSqliteHandle& writer) { return writer.run(sql, bindings); });
}

YSqliteResult<void> YSqliteConnection::runEach(const std::string& sql,
                                               const std::vector<std::vector<Binding>>& bindingRows) {
    return onWriter([&](YSqliteHandle& writer) { return writer.runEach(sql, bindingRows); });
}

YSqliteResult<void> YSqliteConnection::inTransaction(const std::function<std::optional<YSqliteError>()>& work) {
    return onWriter([&](YSqliteHandle& writer) { return writer.inTransaction(work, true); });
}

YSqliteResult<void> YSqliteConnection::runScript(const std::string& sql) {
    return onWriter([&](YSqliteHandle& writer) { return writer.runScript(sql); });
}

YSqliteResult<void> YSqliteConnection::inSnapshot(const std::function<std::optional<YSqliteError>()>& work) {
    if (pooled_ && !readsOnWriter()) {
        ReaderLease lease(*this, true);
        // Nested in a snapshot of this thread, the handle is that snapshot's and this is a savepoint on it.
        if (YSqliteHandle* reader = lease.handle()) return reader->inTransaction(work, false);
    }
    return onWriter([&](YSqliteHandle& writer) { return writer.inTransaction(work, false); });
}

}  // namespace ycontacts

#include "ycontacts/Platform/YSqliteHelper/YSqliteConnection.h"

#include <string>

namespace ycontacts {

YSqliteResult<std::shared_ptr<YSqliteConnection>> YSqliteConnection::open(const YSqliteConfiguration& configuration) {
    const bool readOnly = configuration.connectionMode == YSqliteConnectionMode::readOnly;
    auto writer = YSqliteHandle::open(configuration.dbPath, readOnly);
    if (!writer.ok()) return writer.error();
    // A second handle on ":memory:" or a temporary file would be another database.
    const bool ownFile = !configuration.dbPath.empty() && configuration.dbPath != ":memory:" &&
                         configuration.dbPath.rfind("file:", 0) != 0;
    std::unique_ptr<YSqliteHandle> reader;
    // Without its reader the connection reads through the writer: slower searches, nothing lost.
    if (!readOnly && ownFile) {
        if (auto opened = YSqliteHandle::open(configuration.dbPath, true); opened.ok()) reader = opened.takeValue();
    }
    return std::shared_ptr<YSqliteConnection>(new YSqliteConnection(writer.takeValue(), std::move(reader)));
}

YSqliteHandle& YSqliteConnection::handleFor(const std::string& sql) {
    if (!reader_ || writer_->inTransaction()) return *writer_;
    const auto readsOnly = reader_->readsOnly(sql);
    // A text that does not prepare fails on the writer as it would on the reader.
    return readsOnly.ok() && readsOnly.value() ? *reader_ : *writer_;
}

YSqliteResult<std::vector<YSqliteRow>> YSqliteConnection::run(const std::string& sql,
                                                              const std::vector<Binding>& bindings) {
    return handleFor(sql).run(sql, bindings);
}

YSqliteResult<void> YSqliteConnection::runEach(const std::string& sql,
                                               const std::vector<std::vector<Binding>>& bindingRows) {
    return writer_->runEach(sql, bindingRows);
}

YSqliteResult<void> YSqliteConnection::inTransaction(const std::function<std::optional<YSqliteError>()>& work,
                                                     bool writing) {
    // A read snapshot is taken on the reader, unless a write transaction is open: then it is part of that.
    return (!writing && reader_ && !writer_->inTransaction() ? *reader_ : *writer_).inTransaction(work, writing);
}

YSqliteResult<void> YSqliteConnection::runScript(const std::string& sql) { return writer_->runScript(sql); }

}  // namespace ycontacts

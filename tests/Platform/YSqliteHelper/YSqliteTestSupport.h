#pragma once
// Test support for the YSqliteHelper suites: a temporary directory for database files, and a capture of
// the shared logger's error lines.

#include <atomic>
#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>
#include <vector>

#include <unistd.h>

#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts::sqlitetest {

class TemporaryDirectory {
public:
    TemporaryDirectory() {
        static std::atomic<int> counter{0};
        path_ = std::filesystem::temp_directory_path() /
                ("ysqlite-test-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TemporaryDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

// Collects the error lines of Logger::shared() while it lives, and keeps them off the console.
class ErrorLogCapture {
public:
    ErrorLogCapture() {
        Logger::shared().setConsoleOutput(false);
        Logger::shared().setSink([this](const Logger::Record& record) {
            if (record.level != Logger::Level::error) return;
            std::lock_guard lock(mutex_);
            messages_.push_back(record.message);
        });
    }
    ~ErrorLogCapture() {
        Logger::shared().setSink({});
        Logger::shared().setConsoleOutput(true);
    }
    ErrorLogCapture(const ErrorLogCapture&) = delete;
    ErrorLogCapture& operator=(const ErrorLogCapture&) = delete;

    std::vector<std::string> messages() const {
        std::lock_guard lock(mutex_);
        return messages_;
    }

    void clear() {
        std::lock_guard lock(mutex_);
        messages_.clear();
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> messages_;
};

}  // namespace ycontacts::sqlitetest

#pragma once
// YUserDefaults: a persistent key-value store of numbers and flags, each key scoped by a group (a user id).

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace ycontacts {

// Backed by one SQLite table keyed by (group, key). A value keeps the kind it was written with; reading it
// as another kind converts the number: an integer reads as the same double, a double reads as an integer
// truncated toward zero, any non-zero number reads as true and a flag reads as 1 or 0. A NaN double is not
// kept and reads back as absent. A missing value, or any SQLite failure (logged), yields 0, false or 0.0.
// Every operation is thread-safe and nothing throws.
class YUserDefaults {
public:
    // Opens (creating if needed, parent folders included) the store at `path`; without a path the store
    // lives in memory. A file that cannot be opened is logged and the store falls back to memory.
    explicit YUserDefaults(std::optional<std::filesystem::path> path);
    ~YUserDefaults();
    YUserDefaults(const YUserDefaults&) = delete;
    YUserDefaults& operator=(const YUserDefaults&) = delete;

    // The process's store in memory, for preferences that need not outlive the process.
    static YUserDefaults& standard();

    void setInteger(const std::string& key, std::int64_t value, const std::string& group);
    std::int64_t integer(const std::string& key, const std::string& group) const;

    void setBool(const std::string& key, bool value, const std::string& group);
    bool boolean(const std::string& key, const std::string& group) const;

    void setDouble(const std::string& key, double value, const std::string& group);
    double doubleValue(const std::string& key, const std::string& group) const;

    void remove(const std::string& key, const std::string& group);

private:
    struct Statements;

    void open(const std::optional<std::filesystem::path>& path);
    bool openLocked(const std::string& location, std::vector<std::string>& problems);
    void closeLocked();
    template <class Bind>
    void write(sqlite3_stmt* Statements::*statement, const std::string& key, const std::string& group,
               Bind&& bind);
    template <class Read, class Value>
    Value read(const std::string& key, const std::string& group, Read&& read, Value fallback) const;

    mutable std::mutex mutex_;
    sqlite3* database_ = nullptr;
    std::unique_ptr<Statements> statements_;
};

}  // namespace ycontacts

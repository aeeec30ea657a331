#pragma once
// Logger: the library's log facility; each line carries the source file, function and line of the call.

#include <functional>
#include <memory>
#include <source_location>
#include <string>
#include <string_view>

#include "ycontacts/YContactsExport.h"

namespace ycontacts {

class YCONTACTS_EXPORT Logger {
public:
    enum class Level { debug, info, warning, error };

    struct Record {
        Level level;
        std::string message;
        std::string file;
        std::string function;
        unsigned line;
    };

    // Receives every record at or above the logger's level, in addition to the spdlog output.
    using Sink = std::function<void(const Record&)>;

    // A logger named "ycontacts" writing to stderr through spdlog.
    Logger();
    explicit Logger(std::string name);
    ~Logger();
    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    // The logger the library writes through: the one in `hostSlot()`.
    static Logger& shared();
    // Holds a Logger built without arguments until a host puts its own logger here (Configuration::logger
    // names this slot), before the library's first call and from one thread. Never to be left empty.
    static std::shared_ptr<Logger>& hostSlot();

    void log(Level level, std::string_view message,
             std::source_location location = std::source_location::current());
    void debug(std::string_view message, std::source_location location = std::source_location::current());
    void info(std::string_view message, std::source_location location = std::source_location::current());
    void warning(std::string_view message, std::source_location location = std::source_location::current());
    void error(std::string_view message, std::source_location location = std::source_location::current());

    void setLevel(Level level);
    // Replaces the extra sink (none by default); pass an empty function to remove it.
    void setSink(Sink sink);
    // Turns the spdlog console output on or off (on by default).
    void setConsoleOutput(bool enabled);

    // How a file path is written into a log line.
    static std::string logDescription(const std::string& path);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace ycontacts

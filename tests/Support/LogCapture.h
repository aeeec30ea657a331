#pragma once
// LogCapture: collects the shared logger's lines while alive, keeping them off the console meanwhile.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/Waiting.h"
#include "ycontacts/Platform/MarloComponents/Logger.h"

namespace ycontacts::testsupport {

class LogCapture {
public:
    // Every line, or only those of `level`.
    explicit LogCapture(std::optional<Logger::Level> level = std::nullopt) {
        Logger::shared().setConsoleOutput(false);
        // The sink owns what it writes to, so a line logged while the capture ends touches nothing freed.
        Logger::shared().setSink([lines = lines_, level](const Logger::Record& record) {
            if (!level || record.level == *level) lines->add(record.message);
        });
    }
    ~LogCapture() {
        Logger::shared().setSink({});
        Logger::shared().setConsoleOutput(true);
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> messages() const { return lines_->values(); }
    void clear() { lines_->clear(); }

    // True when a captured line contains `text`.
    bool contains(const std::string& text) const {
        const auto lines = messages();
        return std::any_of(lines.begin(), lines.end(),
                           [&](const std::string& line) { return line.find(text) != std::string::npos; });
    }

    // True when one captured line contains every one of `parts`.
    bool contains(const std::vector<std::string>& parts) const {
        const auto lines = messages();
        return std::any_of(lines.begin(), lines.end(), [&](const std::string& line) {
            return std::all_of(parts.begin(), parts.end(),
                               [&](const std::string& part) { return line.find(part) != std::string::npos; });
        });
    }

    // Waits until `count` captured lines contain `text`.
    bool waitForLinesContaining(const std::string& text, std::size_t count = 1) {
        return lines_->waitUntil([&](const std::vector<std::string>& lines) {
            return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
                       return line.find(text) != std::string::npos;
                   })) >= count;
        });
    }

private:
    std::shared_ptr<Received<std::string>> lines_ = std::make_shared<Received<std::string>>();
};

}  // namespace ycontacts::testsupport

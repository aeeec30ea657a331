#include "ycontacts/Platform/MarloComponents/Logger.h"

#include <atomic>
#include <mutex>

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

namespace ycontacts {

namespace {

spdlog::level::level_enum toSpdlog(Logger::Level level) {
    switch (level) {
        case Logger::Level::debug: return spdlog::level::debug;
        case Logger::Level::info: return spdlog::level::info;
        case Logger::Level::warning: return spdlog::level::warn;
        case Logger::Level::error: return spdlog::level::err;
    }
    return spdlog::level::info;
}

std::string_view baseName(std::string_view path) {
    const auto slash = path.find_last_of('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace

struct Logger::Impl {
    std::shared_ptr<spdlog::logger> logger;
    std::atomic<Level> level{Level::info};
    std::atomic<bool> console{true};
    std::mutex sinkMutex;
    std::shared_ptr<const Sink> sink;
};

Logger::Logger() : Logger("ycontacts") {}

Logger::Logger(std::string name) : impl_(std::make_unique<Impl>()) {
    auto consoleSink = std::make_shared<spdlog::sinks::stderr_color_sink_mt>();
    impl_->logger = std::make_shared<spdlog::logger>(std::move(name), std::move(consoleSink));
    impl_->logger->set_pattern("%Y-%m-%d %H:%M:%S.%e [%n] [%l] %v");
    impl_->logger->set_level(spdlog::level::trace);
}

Logger::~Logger() = default;

Logger& Logger::shared() { return *hostSlot(); }

std::shared_ptr<Logger>& Logger::hostSlot() {
    static std::shared_ptr<Logger> slot = std::make_shared<Logger>();
    return slot;
}

void Logger::log(Level level, std::string_view message, std::source_location location) {
    if (level < impl_->level.load()) return;
    if (impl_->console.load()) {
        impl_->logger->log(toSpdlog(level), "{}:{} {} - {}", baseName(location.file_name()), location.line(),
                           location.function_name(), message);
    }
    std::shared_ptr<const Sink> sink;
    {
        std::lock_guard lock(impl_->sinkMutex);
        sink = impl_->sink;
    }
    if (sink && *sink) {
        (*sink)(Record{level, std::string(message), std::string(baseName(location.file_name())),
                       location.function_name(), static_cast<unsigned>(location.line())});
    }
}

void Logger::debug(std::string_view message, std::source_location location) { log(Level::debug, message, location); }
void Logger::info(std::string_view message, std::source_location location) { log(Level::info, message, location); }
void Logger::warning(std::string_view message, std::source_location location) {
    log(Level::warning, message, location);
}
void Logger::error(std::string_view message, std::source_location location) { log(Level::error, message, location); }

void Logger::setLevel(Level level) { impl_->level.store(level); }

void Logger::setSink(Sink sink) {
    auto shared = sink ? std::make_shared<const Sink>(std::move(sink)) : nullptr;
    std::lock_guard lock(impl_->sinkMutex);
    impl_->sink = std::move(shared);
}

void Logger::setConsoleOutput(bool enabled) { impl_->console.store(enabled); }

std::string Logger::logDescription(const std::string& path) { return "file://" + path; }

}  // namespace ycontacts

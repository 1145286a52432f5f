#include "log.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <mutex>

namespace libfreenect2 {

namespace {

constexpr std::array levels = {Logger::None, Logger::Error, Logger::Warning, Logger::Info,
                               Logger::Debug};

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

class ConsoleLogger : public Logger {
public:
    explicit ConsoleLogger(Level level) { level_ = level; }

    void log(Level level, const std::string& message) override {
        if (level == None || level > level_)
            return;
        // One write for the whole line, so that lines of several threads do not mix.
        const std::string name = level2str(level);
        (level <= Warning ? std::cerr : std::cout) << "[" + name + "] " + message + "\n"
                                                   << std::flush;
    }
};

struct GlobalLogger {
    std::mutex mutex;
    std::shared_ptr<Logger> logger{createConsoleLoggerWithDefaultLevel()};
};

GlobalLogger& global() {
    static GlobalLogger instance;
    return instance;
}

std::shared_ptr<Logger> currentLogger() {
    const std::lock_guard lock(global().mutex);
    return global().logger;
}

} // namespace

Logger::~Logger() = default;

Logger::Level Logger::level() const {
    return level_;
}

Logger::Level Logger::getDefaultLevel() {
    const char* wanted = std::getenv("LIBFREENECT2_LOGGER_LEVEL");
    if (wanted == nullptr)
        return Info;
    const auto named = std::find_if(levels.begin(), levels.end(), [&](Level level) {
        return lower(level2str(level)) == lower(wanted);
    });
    return named == levels.end() ? Info : *named;
}

std::string Logger::level2str(Level level) {
    switch (level) {
    case None:
        return "None";
    case Error:
        return "Error";
    case Warning:
        return "Warning";
    case Info:
        return "Info";
    case Debug:
        return "Debug";
    }
    return "";
}

Logger* createConsoleLogger(Logger::Level level) {
    return new ConsoleLogger(level);
}

Logger* createConsoleLoggerWithDefaultLevel() {
    return createConsoleLogger(Logger::getDefaultLevel());
}

Logger* getGlobalLogger() {
    return currentLogger().get();
}

void setGlobalLogger(Logger* logger) {
    // The previous logger may be in use by another thread; it goes when the last user lets go of
    // it.
    std::shared_ptr<Logger> replaced(logger);
    const std::lock_guard lock(global().mutex);
    global().logger.swap(replaced);
}

} // namespace libfreenect2

namespace virtual_kinect {

void log(libfreenect2::Logger::Level level, const std::string& text) {
    if (const auto logger = libfreenect2::currentLogger())
        logger->log(level, "[virtual kinect] " + text);
}

} // namespace virtual_kinect

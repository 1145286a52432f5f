#pragma once

#include <libfreenect2/config.h>

#include <string>

namespace libfreenect2 {

/// Where the library's own log lines go.
class LIBFREENECT2_API Logger {
public:
    enum Level { None = 0, Error = 1, Warning = 2, Info = 3, Debug = 4 };

    /// The level that the environment variable LIBFREENECT2_LOGGER_LEVEL names (any case), else
    /// Info.
    static Level getDefaultLevel();
    static std::string level2str(Level level);

    virtual ~Logger();
    virtual Level level() const;
    /// Called from any of the library's threads.
    virtual void log(Level level, const std::string& message) = 0;

protected:
    Level level_ = Info;
};

/// A logger that writes lines up to `level`: errors and warnings to standard error, the others to
/// standard output. The caller owns it until it is given to setGlobalLogger.
LIBFREENECT2_API Logger* createConsoleLogger(Logger::Level level);
LIBFREENECT2_API Logger* createConsoleLoggerWithDefaultLevel();

/// The logger in use; null when logging is off. It stays the library's.
LIBFREENECT2_API Logger* getGlobalLogger();
/// Replaces and deletes the logger in use. `logger`, if not null, is the library's from then on.
LIBFREENECT2_API void setGlobalLogger(Logger* logger);

} // namespace libfreenect2

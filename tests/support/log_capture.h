#pragma once

#include <QStringList>

/// Collects every Qt log line written while it lives, from any thread, and passes none on. At most
/// one at a time.
class LogCapture {
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /// All lines so far, oldest first.
    QStringList lines() const;
    /// Those of them that start with `prefix`.
    QStringList linesStartingWith(const QString& prefix) const;
    /// Lines of the warning, critical or fatal kind.
    QStringList warnings() const;
};

#pragma once

#include <QString>

#include <chrono>
#include <optional>

class QIODevice;

namespace tool {

/// The lines that a tool writes for the person who started it. What it found goes to the standard
/// output; complaints and progress go to the standard error. Foreign texts may stand in the lines:
/// control characters are written as blanks.
///
/// Progress is one line. On a terminal it is rewritten in place and cut at the terminal's width; in
/// a file or a pipe it is a plain line, at most one a second.
class Console {
public:
    using Clock = std::chrono::steady_clock;

    /// The process's own standard output and error. `toolName` stands before each complaint.
    explicit Console(const QString& toolName);
    /// Given devices, which must be open and outlive the console. `terminalColumns`: the width of
    /// the terminal that `errors` is, nothing when it is not one.
    Console(const QString& toolName, QIODevice& output, QIODevice& errors,
            std::optional<int> terminalColumns = std::nullopt);
    /// Ends the progress line.
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    const QString& toolName() const { return name; }

    /// Writes one line to the standard output.
    void say(const QString& line);
    /// Writes a text of several lines, with its own line ends, to the standard output.
    void sayText(const QString& text);
    /// Writes "toolName: sentence" to the standard error.
    void complain(const QString& sentence);

    /// Shows how far the work is.
    void progress(const QString& text, Clock::time_point now = Clock::now());
    /// Leaves the newest progress text standing, written if it was held back. The next progress
    /// begins a new line.
    void endProgress();

private:
    void write(bool toErrors, const QString& text);
    std::optional<int> columns() const;

    QString name;
    QIODevice* output = nullptr; ///< null: the process's own
    QIODevice* errors = nullptr; ///< null: the process's own
    std::optional<int> givenColumns;

    QString heldBack;        ///< progress that was too early for a plain line
    bool lineIsOpen = false; ///< on a terminal: progress stands in the line of the cursor
    std::optional<Clock::time_point> lastPlainLine;
};

} // namespace tool

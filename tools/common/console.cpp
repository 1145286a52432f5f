#include "common/console.h"

#include <QIODevice>

#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace tool {

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds plainLineDistance{1};
constexpr int usualColumns = 80;

/// Control characters would move the cursor or begin a line of their own.
QString onOneLine(QString text) {
    for (QChar& letter : text)
        if (letter.category() == QChar::Other_Control)
            letter = u' ';
    return text;
}

} // namespace

Console::Console(const QString& toolName) : name(toolName) {}

Console::Console(const QString& toolName, QIODevice& toOutput, QIODevice& toErrors,
                 std::optional<int> terminalColumns)
    : name(toolName), output(&toOutput), errors(&toErrors), givenColumns(terminalColumns) {}

Console::~Console() {
    endProgress();
}

void Console::say(const QString& line) {
    sayText(onOneLine(line) + u'\n');
}

void Console::sayText(const QString& text) {
    endProgress();
    write(false, text);
}

void Console::complain(const QString& sentence) {
    endProgress();
    write(true, onOneLine(name + u": "_s + sentence) + u'\n');
}

void Console::progress(const QString& text, Clock::time_point now) {
    const QString line = onOneLine(text);
    if (const std::optional<int> width = columns()) {
        // A line that fills the last column would wrap, and only its last row be rewritten.
        write(true, u"\r\033[K"_s + line.left(*width - 1));
        lineIsOpen = true;
        return;
    }
    if (lastPlainLine && now - *lastPlainLine < plainLineDistance) {
        heldBack = line;
        return;
    }
    heldBack.clear();
    lastPlainLine = now;
    write(true, line + u'\n');
}

void Console::endProgress() {
    if (lineIsOpen)
        write(true, u"\n"_s);
    lineIsOpen = false;
    if (!heldBack.isEmpty())
        write(true, heldBack + u'\n');
    heldBack.clear();
}

void Console::write(bool toErrors, const QString& text) {
    const QByteArray bytes = text.toLocal8Bit();
    if (QIODevice* device = toErrors ? errors : output) {
        device->write(bytes);
        return;
    }
    std::FILE* stream = toErrors ? stderr : stdout;
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    std::fflush(stream);
}

/// Asked anew for each line, since people resize terminals. Nothing when it is not a terminal.
std::optional<int> Console::columns() const {
    if (errors != nullptr)
        return givenColumns;
    if (isatty(STDERR_FILENO) == 0)
        return std::nullopt;
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return usualColumns;
    return size.ws_col;
}

} // namespace tool

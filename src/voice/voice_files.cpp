#include "voice/voice_files.h"

#include <QFile>

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

struct FileRead {
    QByteArray bytes;
    qint64 modifiedMs = 0;
};

/// File systems can store times that do not fit into 64 bits of milliseconds: they are clamped.
qint64 toMs(const timespec& time) {
    constexpr qint64 limit = std::numeric_limits<qint64>::max() / 1000 - 1;
    return std::clamp<qint64>(time.tv_sec, -limit, limit) * 1000 + time.tv_nsec / 1000000;
}

/// The start of a regular file as text; nothing for everything else.
std::optional<FileRead> readRegularFile(const QString& path) {
    // Without O_NONBLOCK the mere opening of a FIFO waits for a writer.
    const int handle =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (handle < 0)
        return std::nullopt;
    QFile file;
    struct stat facts {};
    if (!file.open(handle, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle)) {
        ::close(handle);
        return std::nullopt;
    }
    if (::fstat(handle, &facts) != 0 || !S_ISREG(facts.st_mode))
        return std::nullopt;
    FileRead read{file.read(voiceFileLimitBytes), toMs(facts.st_mtim)};
    // Text mode would do the same, but reads on for as long as it finds carriage returns.
    if (read.bytes.contains('\r'))
        read.bytes.removeIf([](char byte) { return byte == '\r'; });
    return read;
}

bool processAlive(qint64 pid) {
    return pid > 0 && std::in_range<pid_t>(pid) && ::kill(static_cast<pid_t>(pid), 0) == 0;
}

} // namespace

VoiceFiles readVoiceFiles(const QString& homePath) {
    const QString folder = homePath + u"/.local/state/lumeno"_s;
    VoiceFiles files;
    if (const auto pidFile = readRegularFile(folder + u"/auralis-live.pid"_s))
        files.processAlive = processAlive(voiceServicePid(pidFile->bytes));
    files.eventPath = folder + u"/auralis-live-event.json"_s;
    files.eventExists = QFile::exists(files.eventPath);
    if (auto event = readRegularFile(files.eventPath)) {
        files.eventExists = true; // it may have appeared between the two checks
        files.eventOpened = true;
        files.eventBytes = std::move(event->bytes);
        files.eventModifiedMs = event->modifiedMs;
    }
    return files;
}

#include "common/whole_file.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>

namespace tool {

using namespace Qt::StringLiterals;

QString writeWholeFile(const QString& name, const char* bytes, std::size_t count) {
    const QByteArray path = QFile::encodeName(name);
    const int file = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0)
        return writeFailure(name);
    QString failure = writeAll(file, bytes, count) ? QString() : writeFailure(name);
    // Some file systems tell only now that the disk is full.
    if (::close(file) != 0 && failure.isEmpty())
        failure = writeFailure(name);
    if (!failure.isEmpty())
        ::unlink(path.constData());
    return failure;
}

bool writeAll(int file, const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = ::write(file, bytes, count);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

QString writeFailure(const QString& name) {
    const QString reason = QString::fromStdString(std::generic_category().message(errno));
    return u"\"%1\" cannot be written: %2"_s.arg(name, reason);
}

} // namespace tool

#include "doctor/places.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace doctor {

namespace {
constexpr qint64 maxContentBytes = 1024 * 1024;
}

Places thisMachine(const QString& home, const QString& folder) {
    const auto mayAccess = [](const QString& path, int mode) {
        return faccessat(AT_FDCWD, QFile::encodeName(path).constData(), mode, AT_EACCESS) == 0;
    };
    return {{}, home, folder, mayAccess};
}

QString programFolder(const QString& applicationFolder, const QString& home) {
    if (const QString asked = qEnvironmentVariable("LUMENO_HOME"); !asked.isEmpty())
        return asked;
    if (QFileInfo::exists(applicationFolder + u"/CMakeCache.txt"_s))
        return QDir::currentPath();
    const QString data = qEnvironmentVariable("XDG_DATA_HOME");
    return (data.isEmpty() ? home + u"/.local/share"_s : data) + u"/lumeno-control-center"_s;
}

QByteArray contentOf(const QString& path) {
    QFile file(path);
    // A FIFO or a device would hold up the reader.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    return file.read(maxContentBytes);
}

QString valueIn(const QString& path) {
    return QString::fromUtf8(contentOf(path)).trimmed();
}

} // namespace doctor

#include "doctor/places.h"

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

#include "common/program_folder.h"

#include <QDir>
#include <QFileInfo>

namespace tool {

using namespace Qt::StringLiterals;

QString programFolder(const QString& applicationFolder, const QString& home) {
    if (const QString asked = qEnvironmentVariable("LUMENO_HOME"); !asked.isEmpty())
        return asked;
    if (QFileInfo::exists(applicationFolder + u"/CMakeCache.txt"_s))
        return QDir::currentPath();
    const QString data = qEnvironmentVariable("XDG_DATA_HOME");
    return (data.isEmpty() ? home + u"/.local/share"_s : data) + u"/lumeno-control-center"_s;
}

} // namespace tool

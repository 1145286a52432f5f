#pragma once

#include <QString>

namespace tool {

/// The folder that the Control Center is started in: LUMENO_HOME if that is set. Else, where the
/// tool lies in a build tree, the current folder, as scripts/run.sh does; where it is installed,
/// the data folder that the launcher goes to. `applicationFolder` is the tool's own, `home` the
/// person's.
QString programFolder(const QString& applicationFolder, const QString& home);

} // namespace tool

#pragma once

#include <QStringList>

#include <functional>

namespace tool {
class Console;
}

namespace exporting {

/// Runs lumeno-export with a whole argument list, program path included, until it is done or
/// `stopped` says so. Returns the status to end with. Needs an application object.
int runExportTool(const QStringList& arguments, tool::Console& console,
                  const std::function<bool()>& stopped);

} // namespace exporting

#pragma once

#include <QStringList>

namespace tool {
class Console;
}

namespace enroll {

/// Leads through a sitting in a window; needs a QApplication. `arguments`: all of the process's,
/// program path included. Returns the exit status: 0 after the window was left, 1 when it cannot
/// be shown, 2 for wrong use.
int runWindow(const QStringList& arguments, tool::Console& console);

} // namespace enroll

#include "app/record_types.h"
#include "app/worker_thread.h"
#include "common/command_line.h"
#include "common/console.h"
#include "enroll/commands.h"
#include "enroll/enroll_program.h"

#include <QApplication>
#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

/// The window needs a display, the commands and --help do not.
bool wantsWindow(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "-h" || argument == "--help" || argument == "-v" || argument == "--version")
            return false;
    }
    return argc < 2 || argv[1][0] == '-';
}

/// Without a display Qt would end the process as if it had crashed.
bool hasDisplay() {
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
           qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

/// What the sensor's library tells of its own steps goes to the standard output, where it would
/// hide what the tool says.
void quietenSensorLibrary() {
    constexpr const char* level = "LIBFREENECT2_LOGGER_LEVEL";
    if (!qEnvironmentVariableIsSet(level))
        qputenv(level, "warning");
}

/// Runs the tool; its application object is gone when this returns.
int run(int& argc, char** argv) {
    tool::Console console(QStringLiteral("lumeno-enroll"));
    if (wantsWindow(argc, argv)) {
        if (!hasDisplay()) {
            console.complain(QStringLiteral("The window needs a display, and there is none: "
                                            "`lumeno-enroll take` works in a terminal."));
            return tool::Failed;
        }
        const QApplication application(argc, argv);
        registerRecordTypes();
        return enroll::runWindow(QCoreApplication::arguments(), console);
    }
    const QCoreApplication application(argc, argv);
    registerRecordTypes();
    const QStringList arguments = QCoreApplication::arguments();
    return arguments.at(1).startsWith(u'-') ? enroll::runWindow(arguments, console)
                                            : enroll::runCommand(arguments.mid(1), console);
}

} // namespace

int main(int argc, char** argv) {
    quietenSensorLibrary();
    const int status = run(argc, argv);
    if (WorkerThread::anyLetGoStillRuns()) {
        // A worker hangs in its driver. Ending without the static destructors keeps it from
        // stumbling over what they would take away.
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}

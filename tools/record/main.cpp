#include "common/console.h"
#include "common/stop_signals.h"
#include "record/record_tool.h"

#include <QCoreApplication>

#include <csignal>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    tool::Console console(QStringLiteral("lumeno-record"));
    const tool::StopSignals signals;
    // A file that grows past a limit of the shell is a failure to write like others.
    std::signal(SIGXFSZ, SIG_IGN);
    return record::runRecordTool(QCoreApplication::arguments(), console,
                                 &tool::StopSignals::requested);
}

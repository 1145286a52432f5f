#include "common/console.h"
#include "common/stop_signals.h"
#include "export/export_tool.h"

#include <QCoreApplication>

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    tool::Console console(QStringLiteral("lumeno-export"));
    const tool::StopSignals signals;
    return exporting::runExportTool(QCoreApplication::arguments(), console,
                                    &tool::StopSignals::requested);
}

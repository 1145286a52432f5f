#include "app/command_line.h"
#include "app/memory_policy.h"
#include "app/record_types.h"
#include "app/worker_thread.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QTimer>
#include <cstdio>
#include <cstdlib>

namespace {

/// Runs the program; its application and its window are gone when this returns.
int run(int& argc, char** argv) {
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Lumeno Qt Control Center"));
    QCoreApplication::setOrganizationName(QStringLiteral("Velmor"));
    QCoreApplication::setApplicationVersion(QStringLiteral(LUMENO_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("lumeno-control-center"));
    registerRecordTypes();

    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    MainWindow window(line.layoutDebug, line.mockMode, line.demoUi, line.demoSpeakerLights,
                      line.personLostMs, line.invertAudioDirection);
    window.show();
    if (line.autoQuitMs > 0)
        QTimer::singleShot(line.autoQuitMs, &window, &QWidget::close);
    return QApplication::exec();
}

} // namespace

int main(int argc, char** argv) {
    giveLargeBlocksBack();
    const int status = run(argc, argv);
    if (WorkerThread::anyLetGoStillRuns()) {
        // A worker hangs in its driver. Ending without the static destructors leaves it everything
        // that it may still use.
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}

#include "app/command_line.h"
#include "app/record_types.h"
#include "ui/main_window.h"

#include <QApplication>
#include <QTimer>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Lumeno Qt Control Center"));
    QCoreApplication::setOrganizationName(QStringLiteral("Velmor"));
    registerRecordTypes();

    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    MainWindow window(line.layoutDebug, line.mockMode, line.demoUi, line.demoSpeakerLights,
                      line.personLostMs, line.invertAudioDirection);
    window.show();
    if (line.autoQuitMs > 0)
        QTimer::singleShot(line.autoQuitMs, &window, &QWidget::close);
    return QApplication::exec();
}

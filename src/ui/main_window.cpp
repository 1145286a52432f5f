#include "ui/main_window.h"

MainWindow::MainWindow(bool, bool, bool, bool, int, bool, QWidget* parent) : QMainWindow(parent) {
    setWindowTitle(QStringLiteral("Lumeno Control Center"));
}

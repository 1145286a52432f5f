#include "support/log_capture.h"

#include <QMutex>
#include <QMutexLocker>

namespace {

struct Captured {
    QMutex mutex;
    QStringList lines;
    QStringList warnings;
    QtMessageHandler previous = nullptr;
};

Captured& captured() {
    static Captured instance;
    return instance;
}

void capture(QtMsgType type, const QMessageLogContext&, const QString& line) {
    Captured& all = captured();
    const QMutexLocker lock(&all.mutex);
    all.lines.append(line);
    if (type != QtInfoMsg && type != QtDebugMsg)
        all.warnings.append(line);
}

} // namespace

LogCapture::LogCapture() {
    captured().lines.clear();
    captured().warnings.clear();
    captured().previous = qInstallMessageHandler(capture);
}

LogCapture::~LogCapture() {
    qInstallMessageHandler(captured().previous);
}

QStringList LogCapture::lines() const {
    const QMutexLocker lock(&captured().mutex);
    return captured().lines;
}

QStringList LogCapture::linesStartingWith(const QString& prefix) const {
    QStringList matching;
    for (const QString& line : lines()) {
        if (line.startsWith(prefix))
            matching.append(line);
    }
    return matching;
}

QStringList LogCapture::warnings() const {
    const QMutexLocker lock(&captured().mutex);
    return captured().warnings;
}

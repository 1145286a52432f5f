#include "support/temporary_place.h"

#include <QDir>

using namespace Qt::StringLiterals;

TemporaryPlace::TemporaryPlace()
    : previousHome(qgetenv("HOME")), previousWork(QDir::currentPath()) {
    const QDir root(folder.path());
    if (!folder.isValid() || !root.mkdir(u"home"_s) || !root.mkdir(u"work"_s))
        qFatal("no temporary place for the test");
    qputenv("HOME", home().toLocal8Bit());
    QDir::setCurrent(work());
}

TemporaryPlace::~TemporaryPlace() {
    QDir::setCurrent(previousWork);
    qputenv("HOME", previousHome);
}

QString TemporaryPlace::home() const {
    return folder.filePath(u"home"_s);
}

QString TemporaryPlace::work() const {
    return folder.filePath(u"work"_s);
}

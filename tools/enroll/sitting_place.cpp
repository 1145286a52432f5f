#include "enroll/sitting_place.h"

#include "common/command_line.h"
#include "common/console.h"
#include "common/program_folder.h"
#include "enroll/sitting_files.h"
#include "face/face_options.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>

namespace enroll {

using namespace Qt::StringLiterals;

QString samplesFolder() {
    const QString samples = QFile::decodeName(face::Options().samplesDir.c_str());
    const QString started =
        tool::programFolder(QCoreApplication::applicationDirPath(), QDir::homePath());
    // A short name reads better where it means the same.
    return started == QDir::currentPath() ? samples : QDir(started).filePath(samples);
}

void addSittingOptions(tool::CommandLine& line) {
    line.addText(u"sitting"_s, u"NAME"_s, u"The sitting's name; without it the date and time."_s);
    line.addText(u"into"_s, u"DIR"_s, u"Where the samples go, instead of faces/tavin."_s);
}

std::variant<SittingPlace, int> sittingPlace(tool::CommandLine& line, tool::Console& console) {
    SittingPlace place;
    place.folder = line.text(u"into"_s).value_or(samplesFolder());
    place.sitting = line.text(u"sitting"_s)
                        .value_or(newSittingName(place.folder, QDateTime::currentDateTime()));
    if (!isSittingName(place.sitting))
        return line.refuse(
            u"A sitting's name is made of letters, digits, - and _, at most 60 of them."_s);
    if (const QString obstacle = obstacleFor(place.folder, place.sitting); !obstacle.isEmpty()) {
        console.complain(obstacle);
        return int(tool::Failed);
    }
    return place;
}

} // namespace enroll

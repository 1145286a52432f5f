#pragma once

#include "export/camera.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>
#include <utility>

namespace exporting {

/// For whom a recording is exported.
enum class Format { Open3d, RtabMap, Tum };

/// Where the pictures go.
struct Layout {
    QString name; ///< as in the option
    QString colorFolder;
    QString depthFolder;
    bool namesAreTimes = false; ///< pictures are named by seconds, else by their numbers
};

Layout layoutOf(Format format);

/// A moment whose pictures are written.
struct ExportedMoment {
    QString name; ///< of its pictures, without an ending
    double seconds = 0;
};

/// What the pictures of a moment are called, without an ending.
QString pictureName(Format format, qint64 number, double seconds);

/// The text files that belong to the pictures, with their names.
QList<std::pair<QString, QByteArray>> textFiles(Format format, const Camera& camera, bool hasColor,
                                                const QList<ExportedMoment>& moments);

} // namespace exporting

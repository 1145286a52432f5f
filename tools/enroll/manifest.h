#pragma once

#include "enroll/sitting.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <optional>

namespace enroll {

/// What a sitting's manifest says of one sample.
struct SampleEntry {
    QString file;      ///< Its name in the sitting's folder.
    QByteArray sha256; ///< Of the file as it was written, in hexadecimal.
    QDateTime takenAt;
    QString source; ///< Name of the photograph it was cut from; empty for the sensor.
    Distance distance = Distance::Near;
    QString pose;     ///< As poseName() has it.
    QString detector; ///< As FaceDetection names it.
    std::optional<double> meters;
    FaceMeasures measures; ///< The grade.
    bool good = false;     ///< Met every wish.
};

/// The file manifest.json that lies beside a sitting's samples. The scan of samples skips it.
struct Manifest {
    QString sitting;
    int light = 1; ///< 2 in the sitting's second light.
    QList<SampleEntry> samples;
};

inline const QString manifestName = QStringLiteral("manifest.json");

/// As JSON, indented.
QByteArray toJson(const Manifest& manifest);

/// Nothing when `json` is no manifest. Members that are missing or of another kind take their
/// defaults.
std::optional<Manifest> manifestFrom(const QByteArray& json);

/// The entry for a sample that was kept. Its time is milliseconds since the epoch.
SampleEntry entryFor(const KeptSample& sample, const QString& file, const QByteArray& content,
                     const QString& source);

/// The hash that an entry holds.
QByteArray contentHash(const QByteArray& content);

} // namespace enroll

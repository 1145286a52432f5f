#pragma once

#include <QString>
#include <QStringList>

namespace doctor {

/// The sensor library that this tree was built with.
struct SensorBuild {
    bool isRealLibrary = false; ///< libfreenect2, not the stand-in
    QString version;
    bool timedWaitsEnd = false; ///< built with C++11 threading
    QStringList pipelines;      ///< as LIBFREENECT2_PIPELINE names them, the default one first
};

SensorBuild sensorBuild();

/// Makes a packet pipeline of the sensor library, as opening a sensor does, and deletes it again.
/// Returns the status for the process to end with: 0 when the pipeline can be used. To be called in
/// a process of its own, since the OpenGL pipeline ends the process where it gets no window.
int tryPipeline(const QString& name);

} // namespace doctor

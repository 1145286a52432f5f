#pragma once

#include <QString>

namespace doctor {

/// The udev rule that lets a person open the sensor.
struct SensorRule {
    enum State {
        Missing,
        TooLate, ///< gives the device to whoever sits there, but sorts behind the file that does it
        Works,
    };
    State state = Missing;
    QString path; ///< of the file, without the root of a prepared tree; empty when it is missing
};

/// Looks through the rules folders below `root` for one that covers the product (four hexadecimal
/// digits) of the vendor 045e. As udev does: of files of one name only the one in the folder that
/// comes first counts, and names alone decide the order.
SensorRule findSensorRule(const QString& root, const QString& product);

} // namespace doctor

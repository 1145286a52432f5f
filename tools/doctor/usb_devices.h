#pragma once

#include <QList>
#include <QString>

namespace doctor {

/// What a USB port hangs on.
struct UsbController {
    QString address; ///< on the PCI bus; empty when it was not found
    QString vendor;  ///< four hexadecimal digits
    QString product;
    QString driver;
};

/// One of the USB devices that a Kinect v2 consists of.
struct KinectDevice {
    QString product; ///< four hexadecimal digits, the vendor is always 045e
    int bus = 0;
    int number = 0;
    int speed_Mbps = 0; ///< as negotiated with the port
    UsbController controller;

    /// The camera, in one of its two descriptors; else it is the sensor's own hub.
    bool isCamera() const;
    /// The file that libusb opens, without the root of a prepared tree.
    QString node() const;
};

/// The devices of Kinect v2 sensors in the sysfs below `root`, cameras first.
QList<KinectDevice> kinectDevices(const QString& root);

/// A process that has a file open.
struct Holder {
    qint64 pid = 0;
    QString name;
};

/// Who has `node` open, as far as the proc folder below `root` shows it: processes of other users
/// are not seen.
QList<Holder> holdersOf(const QString& root, const QString& node);

} // namespace doctor

#pragma once

#include "doctor/finding.h"
#include "doctor/places.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

/// A made-up machine in a temporary folder, on which all is well to begin with: a sensor at full
/// speed with its rule, both cascades, enough samples, and a voice service that runs.
class PreparedTree {
public:
    PreparedTree();

    /// Replaces the sensor's camera on the bus, or with an empty product all of the sensor.
    void plugIn(const QString& product, int speed_Mbps, const QString& controllerVendor = {});
    void leaveOnlyTheHub();
    /// Of the sensor's camera and hub, four hexadecimal digits.
    void setMaker(const QString& vendor);
    /// What the sensor hangs on is no USB controller of the PCI bus any more.
    void removeController();
    void forbidTheNode();
    void letOpen(int pid, const QString& name);
    void write(const QString& path, const QByteArray& text);
    void remove(const QString& path);

    /// Rights are those of the files' owner, since tests may run as root, who may do everything.
    doctor::Places places() const;
    QString path() const { return folder.path(); }

    /// The file that libusb opens for the camera, on the machine itself.
    static const QString node;
    /// Where the sensor's rule lies, on the machine itself.
    static const QString rule;

private:
    QString sample(int number) const;
    void addDevice(const QString& name, const QString& product, int number, int speed_Mbps);

    QTemporaryDir folder;
};

#include "doctor/usb_devices.h"

#include "doctor/places.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace doctor {

namespace {

/// 02c4 and 02d8 are the camera, 02d9 is the hub inside of the sensor.
const QStringList sensorProducts{u"02c4"_s, u"02d8"_s, u"02d9"_s};

/// Sysfs writes "0x8086".
QString hexDigits(const QString& path) {
    return valueIn(path).remove(u"0x"_s);
}

/// The nearest PCI device above a USB device that is a USB controller.
UsbController controllerOf(const QString& usbDevice, const QString& root) {
    const QString top = QFileInfo(root + u"/sys"_s).canonicalFilePath();
    QDir folder(QFileInfo(usbDevice).canonicalFilePath());
    while (folder.path().size() > top.size() && folder.cdUp()) {
        const QString path = folder.path();
        if (!valueIn(path + u"/class"_s).startsWith(u"0x0c03"_s)) // serial bus, USB
            continue;
        return {folder.dirName(), hexDigits(path + u"/vendor"_s), hexDigits(path + u"/device"_s),
                QFileInfo(QFileInfo(path + u"/driver"_s).symLinkTarget()).fileName()};
    }
    return {};
}

} // namespace

bool KinectDevice::isCamera() const {
    return product != u"02d9"_s;
}

QString KinectDevice::node() const {
    return u"/dev/bus/usb/%1/%2"_s.arg(bus, 3, 10, QChar(u'0')).arg(number, 3, 10, QChar(u'0'));
}

QList<KinectDevice> kinectDevices(const QString& root) {
    const QDir devices(root + u"/sys/bus/usb/devices"_s);
    QList<KinectDevice> found;
    for (const QString& name : devices.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QString path = devices.filePath(name);
        const QString product = valueIn(path + u"/idProduct"_s);
        if (valueIn(path + u"/idVendor"_s) != u"045e"_s || !sensorProducts.contains(product))
            continue;
        found.append({product, valueIn(path + u"/busnum"_s).toInt(),
                      valueIn(path + u"/devnum"_s).toInt(), valueIn(path + u"/speed"_s).toInt(),
                      controllerOf(path, root)});
    }
    std::stable_partition(found.begin(), found.end(), std::mem_fn(&KinectDevice::isCamera));
    return found;
}

QList<Holder> holdersOf(const QString& root, const QString& node) {
    QList<Holder> holders;
    const QDir processes(root + u"/proc"_s);
    for (const QString& pid : processes.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool isProcess = false;
        const qint64 number = pid.toLongLong(&isProcess);
        if (!isProcess)
            continue;
        const QDir files(processes.filePath(pid + u"/fd"_s));
        const auto opened =
            files.entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
        const bool holds = std::ranges::any_of(
            opened, [&](const QFileInfo& file) { return file.symLinkTarget() == node; });
        if (holds)
            holders.append({number, valueIn(processes.filePath(pid + u"/comm"_s))});
    }
    return holders;
}

} // namespace doctor

#include "doctor/prepared_tree.h"

#include "face/face_options.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QImage>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr int cameraNumber = 3;
constexpr int sampleCount = 20;
/// Any cascade does; this one is loaded quickly and has the same name in every version of OpenCV 4.
const QString smallCascade =
    u"/usr/share/opencv4/haarcascades/haarcascade_russian_plate_number.xml"_s;
const QString controllerFolder = u"/sys/devices/pci0000:00/0000:00:14.0"_s;

} // namespace

const QString PreparedTree::node = u"/dev/bus/usb/002/003"_s;
const QString PreparedTree::rule = u"/usr/lib/udev/rules.d/70-kinect-v2.rules"_s;

PreparedTree::PreparedTree() {
    plugIn(u"02c4"_s, 5000, u"8086"_s);
    write(rule,
          R"(SUBSYSTEM=="usb", ATTR{idVendor}=="045e", ATTR{idProduct}=="02c4", TAG+="uaccess")"
          "\n");
    for (const std::string& cascade :
         {face::Options().frontalCascadePath, face::Options().profileCascadePath}) {
        const QString name = path() + QFile::decodeName(cascade.c_str());
        QDir().mkpath(QFileInfo(name).path());
        QFile::link(smallCascade, name);
    }
    QDir().mkpath(path() + u"/data/faces/tavin"_s);
    QImage picture(8, 8, QImage::Format_Grayscale8);
    picture.fill(90);
    picture.save(sample(0));
    for (int number = 1; number < sampleCount; ++number)
        QFile::link(sample(0), sample(number));
    const QString state = u"/home/.local/state/lumeno/"_s;
    write(state + u"auralis-live.pid"_s, QByteArray::number(getpid()));
    write(state + u"auralis-live-event.json"_s, "{}");
}

QString PreparedTree::sample(int number) const {
    return path() + u"/data/faces/tavin/%1.png"_s.arg(number);
}

void PreparedTree::addDevice(const QString& name, const QString& product, int number,
                             int speed_Mbps) {
    const QString device = controllerFolder + u"/usb2/"_s + name;
    write(device + u"/idVendor"_s, "045e\n");
    write(device + u"/idProduct"_s, product.toUtf8() + '\n');
    write(device + u"/busnum"_s, "2\n");
    write(device + u"/devnum"_s, QByteArray::number(number) + '\n');
    write(device + u"/speed"_s, QByteArray::number(speed_Mbps) + '\n');
    QDir().mkpath(path() + u"/sys/bus/usb/devices"_s);
    QFile::link(u"../../../devices"_s + device.mid(QString(u"/sys/devices"_s).size()),
                path() + u"/sys/bus/usb/devices/"_s + name);
}

void PreparedTree::plugIn(const QString& product, int speed_Mbps, const QString& controllerVendor) {
    QDir(path() + u"/sys/bus"_s).removeRecursively();
    QDir(path() + controllerFolder + u"/usb2"_s).removeRecursively();
    QDir(path() + u"/dev"_s).removeRecursively();
    if (!controllerVendor.isEmpty()) {
        write(controllerFolder + u"/class"_s, "0x0c0330\n");
        write(controllerFolder + u"/vendor"_s, "0x" + controllerVendor.toUtf8() + '\n');
        write(controllerFolder + u"/device"_s, "0xa36d\n");
        QFile::link(u"../../../bus/pci/drivers/xhci_hcd"_s,
                    path() + controllerFolder + u"/driver"_s);
    }
    if (product.isEmpty())
        return;
    addDevice(u"2-1"_s, u"02d9"_s, 2, speed_Mbps);
    addDevice(u"2-1.1"_s, product, cameraNumber, speed_Mbps);
    write(node, "");
}

void PreparedTree::leaveOnlyTheHub() {
    plugIn({}, 0);
    addDevice(u"2-1"_s, u"02d9"_s, 2, 480);
}

void PreparedTree::setMaker(const QString& vendor) {
    for (const QString& device : {u"/usb2/2-1"_s, u"/usb2/2-1.1"_s})
        write(controllerFolder + device + u"/idVendor"_s, vendor.toUtf8() + '\n');
}

void PreparedTree::removeController() {
    write(controllerFolder + u"/class"_s, "0x060400\n"); // a bridge
}

void PreparedTree::forbidTheNode() {
    QFile::setPermissions(path() + node, QFile::ReadOwner);
}

void PreparedTree::letOpen(int pid, const QString& name) {
    const QString process = u"/proc/%1"_s.arg(pid);
    write(process + u"/comm"_s, name.toUtf8() + '\n');
    QDir().mkpath(path() + process + u"/fd"_s);
    QFile::link(u"/dev/null"_s, path() + process + u"/fd/0"_s);
    QFile::link(node, path() + process + u"/fd/17"_s);
}

void PreparedTree::write(const QString& relative, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path() + relative).path());
    QFile file(path() + relative);
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

void PreparedTree::remove(const QString& relative) {
    const QString whole = path() + relative;
    if (!QFile::remove(whole) && !QDir(whole).removeRecursively())
        qFatal("cannot remove %s", qPrintable(whole));
}

doctor::Places PreparedTree::places() const {
    const auto mayAccess = [](const QString& file, int mode) {
        const QFile::Permissions permissions = QFile::permissions(file);
        return ((mode & R_OK) == 0 || permissions.testFlag(QFile::ReadOwner)) &&
               ((mode & W_OK) == 0 || permissions.testFlag(QFile::WriteOwner)) &&
               ((mode & X_OK) == 0 || permissions.testFlag(QFile::ExeOwner));
    };
    return {path(), path() + u"/home"_s, path() + u"/data"_s, mayAccess};
}

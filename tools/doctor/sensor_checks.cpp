#include "doctor/sensor_checks.h"

#include "doctor/udev_rules.h"
#include "doctor/usb_devices.h"

#include <QStringList>

#include <optional>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace doctor {

namespace {

/// SuperSpeed; the depth stream alone is faster than a USB 2 port.
constexpr int neededSpeed_Mbps = 5000;
/// What most sensors are, for the rule's check while none is plugged in.
const QString usualProduct = u"02c4"_s;
/// The maker of controllers that libfreenect2's guide says not to work.
const QString troublesomeVendor = u"1b21"_s;

const QString noSensor = u"there is no sensor"_s;

Finding checkBus(const QList<KinectDevice>& devices) {
    const QString subject = u"Sensor"_s;
    if (devices.isEmpty())
        return {Verdict::Fault, subject, u"no Kinect v2 is on the USB bus"_s,
                u"Plug it into a USB 3 port and its own power supply into a socket."_s};
    if (!devices.first().isCamera())
        return {Verdict::Fault, subject,
                u"its hub (045e:02d9) is on the USB bus, its camera is not"_s,
                u"Use a USB 3 port of the machine itself, and the sensor's own power supply."_s};
    const KinectDevice& camera = devices.first();
    return {Verdict::Good,
            subject,
            u"Kinect v2 (045e:%1), bus %2, device %3"_s.arg(camera.product)
                .arg(camera.bus)
                .arg(camera.number),
            {}};
}

Finding checkSpeed(const KinectDevice& camera) {
    const QString subject = u"USB speed"_s;
    const QString speed = u"%1 Mbit/s"_s.arg(camera.speed_Mbps);
    if (camera.speed_Mbps >= neededSpeed_Mbps)
        return {Verdict::Good, subject, speed, {}};
    return {Verdict::Fault, subject,
            u"%1, where the sensor needs %2"_s.arg(speed).arg(neededSpeed_Mbps),
            u"Use a USB 3 port of the machine itself, with no hub and no USB 2 cable between."_s};
}

Finding checkController(const KinectDevice& camera, const Places& places) {
    const QString subject = u"USB controller"_s;
    const UsbController& controller = camera.controller;
    if (controller.address.isEmpty())
        return {Verdict::Note, subject, u"not found above the sensor"_s, {}};
    QString text = u"%1:%2 at %3"_s.arg(controller.vendor, controller.product, controller.address);
    if (!controller.driver.isEmpty())
        text += u" (%1)"_s.arg(controller.driver);
    QStringList warnings;
    if (controller.vendor == troublesomeVendor)
        warnings.append(u"controllers of this maker are known not to work with the sensor"_s);
    if (contentOf(places.inSystem(u"/proc/cpuinfo"_s)).contains(" hypervisor"))
        warnings.append(u"this is a virtual machine, where the sensor is unlikely to work"_s);
    if (warnings.isEmpty())
        return {Verdict::Good, subject, text, {}};
    return {Verdict::Note, subject, text + u"; "_s + warnings.join(u"; "_s), {}};
}

Finding checkRule(const SensorRule& rule, bool mayOpen) {
    const QString subject = u"udev rule"_s;
    if (rule.state == SensorRule::Works)
        return {Verdict::Good, subject, rule.path, {}};
    if (mayOpen)
        return {Verdict::Good, subject, u"none, and none is needed here"_s, {}};
    if (rule.state == SensorRule::TooLate)
        return {Verdict::Fault, subject,
                rule.path + u" sorts behind 73-seat-late.rules and has no effect"_s,
                u"Rename it so that its number is below 73, and plug the sensor in again."_s};
    return {Verdict::Fault, subject, u"none lets you open the sensor"_s,
            u"Run scripts/setup-kinect.sh, or copy packaging/70-kinect-v2.rules into "
            "/etc/udev/rules.d, and plug the sensor in again."_s};
}

Finding checkRights(const KinectDevice& camera, bool mayOpen, bool ruleWorks) {
    const QString subject = u"Rights"_s;
    if (mayOpen)
        return {Verdict::Good, subject, camera.node() + u" may be read and written"_s, {}};
    if (!ruleWorks)
        return {Verdict::NotLookedAt, subject, u"the udev rule gives them"_s, {}};
    return {Verdict::Fault, subject, camera.node() + u" may not be read and written"_s,
            u"Plug the sensor in again, while you are logged in at the machine itself."_s};
}

Finding checkHolders(const KinectDevice& camera, const Places& places) {
    const QString subject = u"In use"_s;
    const QList<Holder> holders = holdersOf(places.root, camera.node());
    if (holders.isEmpty())
        return {Verdict::Good, subject, u"by nobody, as far as can be seen"_s, {}};
    QStringList names;
    for (const Holder& holder : holders)
        names.append(u"%1 (process %2)"_s.arg(holder.name).arg(holder.pid));
    return {Verdict::Fault, subject, u"by "_s + names.join(u", "_s),
            u"End it before the program is started."_s};
}

} // namespace

Findings checkSensor(const Places& places) {
    const QList<KinectDevice> devices = kinectDevices(places.root);
    const std::optional<KinectDevice> camera = devices.isEmpty() || !devices.first().isCamera()
                                                   ? std::nullopt
                                                   : std::optional(devices.first());
    const SensorRule rule = findSensorRule(places.root, camera ? camera->product : usualProduct);
    if (!camera) {
        Findings findings{checkBus(devices)};
        for (const QString& subject : {u"USB speed"_s, u"USB controller"_s})
            findings.append({Verdict::NotLookedAt, subject, noSensor, {}});
        findings.append(checkRule(rule, false));
        for (const QString& subject : {u"Rights"_s, u"In use"_s})
            findings.append({Verdict::NotLookedAt, subject, noSensor, {}});
        return findings;
    }
    const bool mayOpen = places.mayAccess(places.inSystem(camera->node()), R_OK | W_OK);
    return {checkBus(devices),
            checkSpeed(*camera),
            checkController(*camera, places),
            checkRule(rule, mayOpen),
            checkRights(*camera, mayOpen, rule.state == SensorRule::Works),
            checkHolders(*camera, places)};
}

} // namespace doctor

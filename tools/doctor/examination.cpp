#include "doctor/examination.h"

#include "doctor/usb_devices.h"

#include <QProcessEnvironment>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace doctor {

namespace {

QString wordFor(Verdict verdict) {
    switch (verdict) {
    case Verdict::Good:
        return u"ok   "_s;
    case Verdict::Note:
        return u"note "_s;
    case Verdict::Fault:
        return u"FAULT"_s;
    case Verdict::NotLookedAt:
        return u"-    "_s;
    }
    return {};
}

/// The value of a key in a file of KEY=VALUE lines.
QString valueOf(const QString& key, const QByteArray& lines) {
    for (const QString& line : QString::fromUtf8(lines).split(u'\n'))
        if (line.startsWith(key + u'='))
            return line.mid(key.size() + 1).remove(u'"');
    return u"unknown"_s;
}

} // namespace

QString lineOf(const Finding& finding) {
    const QString line =
        u"%1 %2: %3"_s.arg(wordFor(finding.verdict), finding.subject, finding.text);
    return finding.cure.isEmpty() ? line : line + u". "_s + finding.cure;
}

int statusOf(const Findings& findings) {
    return std::ranges::any_of(
               findings, [](const Finding& finding) { return finding.verdict == Verdict::Fault; })
               ? 1
               : 0;
}

QString reportOf(const Findings& findings, const Places& places, const QString& versions) {
    const auto system = [&places](const QString& path) {
        const QString value = valueIn(places.inSystem(path));
        return value.isEmpty() ? u"unknown"_s : value;
    };
    QStringList lines{
        versions,
        u"System: %1, Linux %2"_s.arg(
            valueOf(u"PRETTY_NAME"_s, contentOf(places.inSystem(u"/etc/os-release"_s))),
            system(u"/proc/sys/kernel/osrelease"_s)),
        u"Memory for USB transfers in MiB: %1"_s.arg(
            system(u"/sys/module/usbcore/parameters/usbfs_memory_mb"_s))};
    for (const KinectDevice& device : kinectDevices(places.root))
        lines.append(
            u"USB: 045e:%1 on bus %2, device %3, %4 Mbit/s, controller %5:%6"_s.arg(device.product)
                .arg(device.bus)
                .arg(device.number)
                .arg(device.speed_Mbps)
                .arg(device.controller.vendor, device.controller.product));
    const QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    QStringList names = environment.keys();
    names.sort();
    for (const QString& name : names)
        if (name.startsWith(u"LIBFREENECT2_"_s) || name.startsWith(u"LUMENO_"_s) ||
            name == u"XDG_SESSION_TYPE"_s)
            lines.append(name + u'=' + environment.value(name));
    for (const Finding& finding : findings)
        lines.append(lineOf(finding));
    QString text = lines.join(u'\n') + u'\n';
    if (places.home.size() > 1)
        text.replace(places.home, u"~"_s);
    return text;
}

} // namespace doctor

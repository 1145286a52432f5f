#include "export/exporter.h"

#include "common/command_line.h"
#include "common/whole_file.h"
#include "export/point_cloud.h"

#include <opencv2/imgcodecs.hpp>

#include <QDir>
#include <QFileInfo>

#include <exception>
#include <stdexcept>
#include <utility>

namespace exporting {

using namespace Qt::StringLiterals;

namespace {

QString textOf(const std::exception& error) {
    return QString::fromLocal8Bit(error.what());
}

/// Makes the folders for the pictures. Returns what is wrong, empty when nothing is.
QString makeTarget(const QString& target, const Layout& layout, bool hasColor) {
    const QFileInfo info(target);
    if (info.exists() && (!info.isDir() || !QDir(target).isEmpty()))
        return u"\"%1\" is there already; an export needs a new or an empty folder."_s.arg(target);
    QStringList folders{layout.depthFolder};
    if (hasColor)
        folders.append(layout.colorFolder);
    for (const QString& folder : std::as_const(folders))
        if (!QDir().mkpath(target + u'/' + folder))
            return u"\"%1\" cannot be made."_s.arg(target + u'/' + folder);
    return {};
}

QString writePng(const QString& file, const cv::Mat& picture) {
    std::vector<uchar> bytes;
    if (!cv::imencode(".png", picture, bytes))
        return u"\"%1\" cannot be encoded."_s.arg(file);
    return tool::writeWholeFile(file, reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

} // namespace

std::unique_ptr<Exporter> Exporter::open(const QString& folder, QString& complaint) {
    try {
        RecordedMoments recording(folder);
        std::unique_ptr<Registration> registration = makePinholeRegistration(recording);
        if (!registration)
            registration = makeSensorRegistration(recording);
        if (registration)
            return std::unique_ptr<Exporter>(
                new Exporter(std::move(recording), std::move(registration)));
        complaint = u"\"%1\" needs libfreenect2's registration for its cameras, which this build "
                    "lacks, or its pictures are not of a sensor's size."_s.arg(folder);
    } catch (const std::exception& error) {
        complaint = u"\"%1\" cannot be exported: %2."_s.arg(folder, textOf(error));
    }
    return nullptr;
}

Exporter::Exporter(RecordedMoments moments, std::unique_ptr<Registration> how)
    : recording(std::move(moments)), registration(std::move(how)) {}

int Exporter::exportAll(Format format, const QString& target, tool::Console& console,
                        const std::function<bool()>& stopped) const {
    const Layout layout = layoutOf(format);
    QString failure = makeTarget(target, layout, recording.hasColor());
    QList<ExportedMoment> exported;
    int damaged = 0;
    QString firstDamage;
    for (std::size_t at = 0; at < recording.count() && failure.isEmpty() && !stopped(); ++at) {
        const double seconds = recording.seconds(at);
        const QString name = pictureName(format, recording.number(at), seconds);
        try {
            failure = writeMoment(layout, target, name, at);
            exported.append({name, seconds});
        } catch (const std::exception& error) {
            // One damaged picture is no reason to lose the others.
            if (damaged++ == 0)
                firstDamage = textOf(error);
        }
        console.progress(u"%1 of %2 moments"_s.arg(at + 1).arg(recording.count()));
    }
    if (failure.isEmpty())
        for (const auto& [name, text] : textFiles(format, camera(), recording.hasColor(), exported))
            if (failure.isEmpty())
                failure = tool::writeWholeFile(target + u'/' + name, text.constData(),
                                               static_cast<std::size_t>(text.size()));
    if (!failure.isEmpty()) {
        console.complain(failure);
        return tool::Failed;
    }
    console.say(
        u"%1: %2 moments, registered %3"_s.arg(target).arg(exported.size()).arg(description()));
    if (damaged > 0)
        console.complain(u"%1 moments are left out: %2."_s.arg(damaged).arg(firstDamage));
    const bool whole = exported.size() == static_cast<qsizetype>(recording.count());
    if (!whole && damaged == 0)
        console.complain(u"The export was stopped before its end."_s);
    return whole ? tool::Succeeded : tool::Failed;
}

int Exporter::exportPoints(qint64 number, const QString& target, tool::Console& console) const {
    for (std::size_t at = 0; at < recording.count(); ++at) {
        if (recording.number(at) != number)
            continue;
        try {
            const QByteArray points = pointCloud(moment(at), camera());
            const QString failure = tool::writeWholeFile(target, points.constData(),
                                                         static_cast<std::size_t>(points.size()));
            if (failure.isEmpty()) {
                console.say(u"%1: the moment %2, registered %3"_s.arg(target).arg(number).arg(
                    description()));
                return tool::Succeeded;
            }
            console.complain(failure);
        } catch (const std::exception& error) {
            console.complain(textOf(error) + u'.');
        }
        return tool::Failed;
    }
    console.complain(
        u"The recording has no moment with the number %1; it has %2 from %3 to %4."_s.arg(number)
            .arg(recording.count())
            .arg(recording.number(0))
            .arg(recording.number(recording.count() - 1)));
    return tool::Failed;
}

RegisteredPictures Exporter::moment(std::size_t at) const {
    const RegisteredPictures registered = registration->apply(recording.pictures(at));
    return recording.calibration().mirrored ? mirrored(registered) : registered;
}

Camera Exporter::camera() const {
    const Camera recorded = depthCamera(recording);
    return recording.calibration().mirrored ? mirrored(recorded) : recorded;
}

QString Exporter::writeMoment(const Layout& layout, const QString& target, const QString& name,
                              std::size_t at) const {
    const RegisteredPictures pictures = moment(at);
    const QString file = u'/' + name + u".png"_s;
    QString failure = writePng(target + u'/' + layout.depthFolder + file, pictures.depth);
    if (failure.isEmpty() && !pictures.color.empty())
        failure = writePng(target + u'/' + layout.colorFolder + file, pictures.color);
    return failure;
}

} // namespace exporting

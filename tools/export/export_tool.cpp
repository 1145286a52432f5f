#include "export/export_tool.h"

#include "common/command_line.h"
#include "common/console.h"
#include "export/exporter.h"

#include <QDir>

#include <array>
#include <limits>

namespace exporting {

using namespace Qt::StringLiterals;

namespace {

constexpr std::array formats = {Format::Open3d, Format::RtabMap, Format::Tum};

void describeLine(tool::CommandLine& line) {
    line.addArgument(u"FOLDER"_s, u"A recording of lumeno-record."_s);
    line.addSwitch(u"open3d"_s,
                   u"Colour and depth pictures and camera_intrinsic.json for Open3D."_s);
    line.addSwitch(u"rtabmap"_s,
                   u"Colour and depth pictures named by seconds and calibration.yaml for "
                   "RTAB-Map."_s);
    line.addSwitch(u"tum"_s, u"The layout of the TUM RGB-D data sets: rgb.txt, depth.txt and "
                             "associations.txt; depth is in metres * 1000."_s);
    line.addNumber(u"ply"_s, u"NUMBER"_s,
                   u"The point cloud of the moment with that number, in metres."_s, 0,
                   std::numeric_limits<qint64>::max());
    line.addText(
        u"to"_s, u"PATH"_s,
        u"New or empty folder, or the PLY file, to write. Without it FOLDER-open3d and the "
        "like beside the recording."_s);
}

/// The recording's path with something added to its last part.
QString beside(const QString& folder, const QString& ending) {
    return QDir::cleanPath(folder) + u'-' + ending;
}

} // namespace

int runExportTool(const QStringList& arguments, tool::Console& console,
                  const std::function<bool()>& stopped) {
    tool::CommandLine line(console,
                           u"Hands a recording to other programs: depth without distortion, a "
                           "colour for each depth pixel, left and right as the sensor sees them. "
                           "Exactly one of --open3d, --rtabmap, --tum and --ply says for whom."_s);
    describeLine(line);
    if (const auto status = line.read(arguments))
        return *status;
    const std::optional<qint64> number = line.number(u"ply"_s);
    std::optional<Format> wanted;
    int count = number ? 1 : 0;
    for (const Format format : formats)
        if (line.isSet(layoutOf(format).name)) {
            wanted = format;
            ++count;
        }
    if (count != 1)
        return line.refuse(u"Exactly one of --open3d, --rtabmap, --tum and --ply is needed."_s);

    const QString folder = line.argument(u"FOLDER"_s);
    QString complaint;
    const auto exporter = Exporter::open(folder, complaint);
    if (!exporter) {
        console.complain(complaint);
        return tool::Failed;
    }
    const std::optional<QString> to = line.text(u"to"_s);
    if (wanted)
        return exporter->exportAll(*wanted, to.value_or(beside(folder, layoutOf(*wanted).name)),
                                   console, stopped);
    const QString file = u"%1.ply"_s.arg(*number, 6, 10, QChar(u'0'));
    return exporter->exportPoints(*number, to.value_or(beside(folder, file)), console);
}

} // namespace exporting

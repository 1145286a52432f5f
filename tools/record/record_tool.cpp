#include "record/record_tool.h"

#include "common/command_line.h"
#include "common/console.h"
#include "record/recorder.h"

namespace record {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 bytesPerMegabyte = 1'000'000;
constexpr qint64 defaultKeepFree_MB = 2000;
constexpr qint64 defaultPatience_s = 10;
constexpr qint64 maxSeconds = 7 * 24 * 3600;

void describeLine(tool::CommandLine& line) {
    line.addArgument(u"FOLDER"_s, u"New or empty folder for the recording."_s);
    line.addNumber(u"seconds"_s, u"N"_s,
                   u"Ends after that many seconds. Without it Ctrl-C ends the recording."_s, 1,
                   maxSeconds);
    line.addSwitch(u"moment"_s, u"Records a single moment, one second after the sensor's start."_s);
    line.addSwitch(u"lossless"_s,
                   u"Keeps every bit of the colour pictures: PNG instead of JPEG. Takes ten times "
                   "the space and more than one processor core."_s);
    line.addSwitch(u"no-colour"_s, u"Records depth and infrared only."_s);
    line.addNumber(u"keep-free"_s, u"MB"_s,
                   u"Ends when less than that is left on the disk (%1)."_s.arg(defaultKeepFree_MB),
                   0, 1'000'000'000);
    line.addNumber(
        u"patience"_s, u"N"_s,
        u"Ends when the sensor sends nothing for that many seconds (%1)."_s.arg(defaultPatience_s),
        1, 3600);
}

} // namespace

int runRecordTool(const QStringList& arguments, tool::Console& console,
                  const std::function<bool()>& stopped) {
    tool::CommandLine line(console,
                           u"Records what a Kinect v2 sees into a folder of pictures that the "
                           "sensor stand-in plays and lumeno-export reads."_s);
    describeLine(line);
    if (const auto status = line.read(arguments))
        return *status;
    const bool moment = line.isSet(u"moment"_s);
    if (moment && line.isSet(u"seconds"_s))
        return line.refuse(u"--seconds does not go with --moment."_s);
    if (line.isSet(u"lossless"_s) && line.isSet(u"no-colour"_s))
        return line.refuse(u"--lossless is about colour and does not go with --no-colour."_s);

    RecordingOptions options;
    options.folder = line.argument(u"FOLDER"_s);
    if (const auto seconds = line.number(u"seconds"_s))
        options.length = std::chrono::seconds(*seconds);
    options.moment = moment;
    options.lossless = line.isSet(u"lossless"_s);
    options.withColor = !line.isSet(u"no-colour"_s);
    options.keepFreeBytes =
        line.number(u"keep-free"_s).value_or(defaultKeepFree_MB) * bytesPerMegabyte;
    options.patience = std::chrono::seconds(line.number(u"patience"_s).value_or(defaultPatience_s));
    return Recorder(options, console, stopped).run();
}

} // namespace record

#include "app/command_line.h"

#include <optional>

using namespace Qt::StringLiterals;

namespace {

/// The integer that follows the first occurrence of `name`, if it is there and in range of int.
std::optional<int> valueAfter(const QStringList& arguments, const QString& name) {
    const qsizetype at = arguments.indexOf(name);
    if (at < 0 || at + 1 >= arguments.size())
        return std::nullopt;
    bool ok = false;
    const int value = arguments.at(at + 1).toInt(&ok, 10);
    return ok ? std::optional(value) : std::nullopt;
}

} // namespace

CommandLine parseCommandLine(const QStringList& arguments) {
    CommandLine line;
    line.layoutDebug = arguments.contains(u"--layout-debug"_s);
    line.mockMode = arguments.contains(u"--mock"_s) || arguments.contains(u"--no-kinect"_s);
    line.demoUi = line.mockMode || arguments.contains(u"--demo-ui"_s);
    line.demoSpeakerLights = line.mockMode || arguments.contains(u"--demo-speaker-lights"_s);
    line.invertAudioDirection = arguments.contains(u"--invert-audio-direction"_s);
    if (const auto lost = valueAfter(arguments, u"--person-lost-ms"_s); lost && *lost >= 0)
        line.personLostMs = *lost;
    line.autoQuitMs = valueAfter(arguments, u"--auto-quit-ms"_s).value_or(0);
    return line;
}

// The switches: arguments are separated by line breaks.

#include "app/command_line.h"
#include "fuzz_input.h"

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const QString text = QString::fromUtf8(input.rest());
    const QStringList arguments = QStringList{u"program"_s} + text.split(u'\n');
    const CommandLine line = parseCommandLine(arguments);
    require(line.personLostMs >= 0, "the lost time is not negative");
    require(!line.mockMode || (line.demoUi && line.demoSpeakerLights),
            "mock mode implies the demo choices");

    CommandLine again = parseCommandLine(arguments + QStringList{u"--unknown"_s, u"7"_s});
    if (arguments.last() != u"--person-lost-ms"_s && arguments.last() != u"--auto-quit-ms"_s) {
        require(again.personLostMs == line.personLostMs && again.autoQuitMs == line.autoQuitMs,
                "unknown arguments change no value");
    }
    require(again.mockMode == line.mockMode && again.demoUi == line.demoUi &&
                again.demoSpeakerLights == line.demoSpeakerLights &&
                again.layoutDebug == line.layoutDebug &&
                again.invertAudioDirection == line.invertAudioDirection,
            "unknown arguments change no choice");
    return 0;
}

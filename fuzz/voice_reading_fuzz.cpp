// The voice service's event text at any time of day.

#include "fuzz_input.h"
#include "voice/voice_reading.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {

void checkRecord(const VoiceDirectionStatus& status, const VoiceFiles& files, qint64 nowMs) {
    require(std::isfinite(status.angleDegrees) && std::isfinite(status.confidence),
            "numbers are finite");
    require(!status.reason.isEmpty(), "there always is a reason");
    require(status.source == files.eventPath, "the source is the event file");
    if (status.fresh) {
        require(status.running && status.hasDirection, "fresh: a running service's direction");
        require(nowMs >= status.eventTimeMs || nowMs < 0, "nothing of the future is fresh");
    }
    if (!status.hasDirection) {
        require(status.angleDegrees == 0 && status.confidence == 0 && status.lowConfidence &&
                    status.eventTimeMs == 0,
                "no direction, no values");
        require(status.running == files.processAlive, "an event without direction says nothing");
    }
}

void checkTexts(const VoiceDirectionStatus& status) {
    const QString text = voiceStatusText(status).whole();
    require(text.startsWith(u"Auralis: "_s), "the text begins with its subject");
    require(text.contains(u" | "_s + status.reason + u" | audio direction mapping: "_s),
            "the reason stands in the text as it is");
    require(text.endsWith(u" | attention only, no trust granted"_s), "no trust is granted");
    QString line;
    QDebug(&line) << "Qt Auralis direction:" << status;
    require(!line.contains(u'\n'), "a log line is one line");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    VoiceFiles files;
    const std::uint8_t flags = input.byte();
    files.processAlive = (flags & 1) != 0;
    files.eventExists = (flags & 2) == 0;
    files.eventOpened = (flags & 4) == 0;
    const bool inverted = (flags & 8) != 0;
    files.eventPath = u"/home/somebody/event.json"_s;
    const qint64 nowMs = input.number<qint64>();
    // Half of the events are about as old as those of a live service.
    const auto ageMs = input.number<std::int16_t>();
    files.eventModifiedMs = (flags & 16) != 0 ? input.number<qint64>() : nowMs / 2 - ageMs;
    files.eventBytes = input.rest();

    const qint64 at = (flags & 16) != 0 ? nowMs : nowMs / 2;
    const VoiceDirectionStatus status = voiceDirectionStatus(files, at, inverted);
    require(status.inverted == inverted, "the switch decides the mapping");
    checkRecord(status, files, at);
    checkTexts(status);
    require(voiceServicePid(files.eventBytes) >= 0, "a pid is positive or none");
    return 0;
}

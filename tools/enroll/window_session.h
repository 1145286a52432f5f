#pragma once

#include "enroll/report.h"
#include "enroll/sitting.h"

#include <QImage>
#include <QStringList>
#include <functional>

namespace enroll {

/// What the window is doing.
enum class WindowPhase {
    Opening,  ///< Waits for the first picture.
    NoSensor, ///< The sensor could not be started, or never gave a picture.
    Guiding,  ///< Asks for one station after the other.
    Report,   ///< Shows what came of it; nothing is kept yet.
    Kept,     ///< Everything is written.
};

/// What the window shows, all of it.
struct WindowView {
    WindowPhase phase = WindowPhase::Opening;
    QString prompt; ///< The one sentence in large letters.
    QString hint;   ///< What is in the way right now; one sentence, may be empty.
    QStringList report;
    bool canRepeat = false;
    bool canSkip = false;
    bool canFinish = false;
    bool canKeep = false;
    QImage lastCrop; ///< The newest sample; null before the first.
};

/// The window's logic without a widget and without a clock: pictures, keys and times come in, what
/// is to be shown comes out.
class WindowSession {
public:
    /// Writes the samples; returns one sentence when that failed, empty otherwise.
    using Writer = std::function<QString(const std::vector<KeptSample>&)>;
    /// What the folder would hold with these samples: fills in what a report says of the folder.
    using Surveyor = std::function<void(const std::vector<KeptSample>&, SittingResult&)>;

    WindowSession(const face::Options& options, Writer writer, Surveyor surveyor);

    // What the sensor says.
    void onLook(const FrameLook& look);
    void onFailed(const QString& sentence);
    void onSilent(const QString& sentence);

    // What the person wants.
    /// Asks for a station again. Without pictures it is the sensor that is to be tried again: then
    /// nothing is dropped, and the answer is true.
    bool repeat(qint64 nowMs);
    void skip(qint64 nowMs);
    void finish();
    void keep();

    /// Passes stations whose time is over.
    void passTime(qint64 nowMs);

    WindowView view() const;
    /// The newest look and what became of it, for the boxes in the picture.
    const FrameLook& newestLook() const { return newest; }
    Flaw newestFlaw() const { return flaw; }
    bool isGuiding() const { return phase == WindowPhase::Guiding; }
    /// Null before the first picture.
    const StationPlan* stationPlan() const { return sitting ? &sitting->stationPlan() : nullptr; }

private:
    void endWhenOver();
    QString promptText() const;

    face::Options options;
    Writer writer;
    Surveyor surveyor;
    WindowPhase phase = WindowPhase::Opening;
    std::optional<Sitting> sitting; ///< From the first look on.
    FrameLook newest;
    Flaw flaw = Flaw::NoFace;
    bool withoutPictures = false; ///< The sensor failed or fell silent, and no look came since.
    QString problem;              ///< Of the sensor or of the last try to keep.
    SittingResult result;
};

} // namespace enroll

#include "enroll/window_session.h"

#include "enroll/hints.h"

namespace enroll {

using namespace Qt::StringLiterals;

namespace {

/// A deep copy of a sample's pixels.
QImage imageOf(const cv::Mat& picture) {
    return QImage(picture.data, picture.cols, picture.rows, qsizetype(picture.step),
                  QImage::Format_Grayscale8)
        .copy();
}

QString openingPrompt() {
    return u"Opening the sensor."_s;
}

QString noPicturePrompt() {
    return u"There is no picture: press R to try again."_s;
}

} // namespace

WindowSession::WindowSession(const face::Options& settings, Writer write, Surveyor survey)
    : options(settings), writer(std::move(write)), surveyor(std::move(survey)) {}

void WindowSession::onLook(const FrameLook& look) {
    withoutPictures = false;
    if (phase == WindowPhase::Opening || phase == WindowPhase::NoSensor)
        phase = WindowPhase::Guiding;
    if (phase != WindowPhase::Guiding)
        return;
    if (!sitting)
        sitting.emplace(SittingMode::Guided, options, look.timeMs);
    problem.clear();
    newest = look;
    flaw = sitting->offer(look);
    endWhenOver();
}

void WindowSession::onFailed(const QString& sentence) {
    withoutPictures = true;
    // What was taken before is not lost.
    if (sitting && !sitting->kept().empty())
        finish();
    else if (phase != WindowPhase::Report && phase != WindowPhase::Kept)
        phase = WindowPhase::NoSensor;
    problem = sentence;
}

void WindowSession::onSilent(const QString& sentence) {
    withoutPictures = true;
    if (phase == WindowPhase::Opening)
        phase = WindowPhase::NoSensor;
    if (phase == WindowPhase::NoSensor || phase == WindowPhase::Guiding)
        problem = sentence;
}

bool WindowSession::repeat(qint64 nowMs) {
    problem.clear();
    if (phase == WindowPhase::NoSensor)
        phase = WindowPhase::Opening;
    else if (phase == WindowPhase::Report)
        phase = WindowPhase::Guiding;
    if (phase == WindowPhase::Guiding && sitting && !withoutPictures)
        sitting->repeat(nowMs);
    return withoutPictures;
}

void WindowSession::skip(qint64 nowMs) {
    if (phase != WindowPhase::Guiding || !sitting)
        return;
    sitting->skip(nowMs);
    endWhenOver();
}

void WindowSession::passTime(qint64 nowMs) {
    // While the sensor is silent nobody can do what is asked for.
    if (phase != WindowPhase::Guiding || !sitting || withoutPictures)
        return;
    sitting->passTime(nowMs);
    endWhenOver();
}

void WindowSession::endWhenOver() {
    if (sitting->isOver())
        finish();
}

void WindowSession::finish() {
    if (phase != WindowPhase::Guiding || !sitting)
        return;
    phase = WindowPhase::Report;
    problem.clear();
    result = SittingResult();
    result.kept = int(sitting->kept().size());
    result.framesLookedAt = sitting->framesLookedAt();
    result.tally = sitting->tally();
    for (const KeptSample& sample : sitting->kept())
        addSample(result.sitting, sample.distance);
    surveyor(sitting->kept(), result);
}

void WindowSession::keep() {
    if (!view().canKeep)
        return;
    problem = writer(sitting->kept());
    if (problem.isEmpty())
        phase = WindowPhase::Kept;
}

QString WindowSession::promptText() const {
    switch (phase) {
    case WindowPhase::Opening:
        return openingPrompt();
    case WindowPhase::NoSensor:
        return noPicturePrompt();
    case WindowPhase::Guiding:
        if (withoutPictures)
            return problem.isEmpty() ? openingPrompt() : noPicturePrompt();
        return stationPrompt(*sitting->asked());
    case WindowPhase::Report:
        if (result.kept == 0)
            return u"Nothing was taken."_s;
        return result.kept == 1 ? u"1 sample is ready: keep it?"_s
                                : u"%1 samples are ready: keep them?"_s.arg(result.kept);
    case WindowPhase::Kept:
        break;
    }
    return result.kept == 1 ? u"1 sample is kept."_s : u"%1 samples are kept."_s.arg(result.kept);
}

WindowView WindowSession::view() const {
    WindowView view;
    view.phase = phase;
    view.prompt = promptText();
    view.hint = problem;
    view.canRepeat = phase == WindowPhase::NoSensor || phase == WindowPhase::Guiding ||
                     phase == WindowPhase::Report;
    view.canSkip = phase == WindowPhase::Guiding && !withoutPictures;
    view.canFinish = phase == WindowPhase::Guiding;
    view.canKeep = phase == WindowPhase::Report && result.kept > 0;
    if (phase == WindowPhase::Guiding && !withoutPictures)
        view.hint = hintFor(flaw, largestFace(newest), sitting->asked(), options);
    if (phase == WindowPhase::Report)
        view.report = reportLines(result, options);
    if (phase == WindowPhase::Kept)
        view.hint = restartSentence();
    if (sitting && !sitting->kept().empty())
        view.lastCrop = imageOf(sitting->kept().back().face.input);
    return view;
}

} // namespace enroll

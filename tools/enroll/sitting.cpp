#include "enroll/sitting.h"

#include "face/face_detection.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace enroll {

namespace {

/// So long a station waits for a frame that meets every wish before it takes what it must.
constexpr qint64 wishingMs = stationTimeoutMs / 2;

// A person is the same while the box moves less than this between two frames that show it, and is
// not out of sight for longer. A head that turns to the side is lost for a moment.
constexpr double followedOverlap = 0.25;
constexpr qint64 outOfSightMs = 2000;
constexpr int looksToKnowAgain = 3;

// A second light changes the brightness of the face or its distribution by at least this much.
constexpr double otherBrightness = 0.12; ///< of the mean
constexpr double otherHalves = 0.10;

} // namespace

Sitting::Sitting(SittingMode sittingMode, const face::Options& settings, qint64 nowMs)
    : mode(sittingMode), options(settings), plan(startPlan(nowMs)), bins(emptyBins()) {}

Flaw Sitting::offer(const FrameLook& look) {
    passTime(look.timeMs);
    const Flaw flaw = judge(look);
    ++counts[std::size_t(flaw)];
    return flaw;
}

Flaw Sitting::judge(const FrameLook& look) {
    const std::vector<const FaceLook*> large = largeFaces(look, options);
    followPerson(look);
    if (large.size() != 1) {
        steadiness = {};
        if (large.size() > 1)
            return Flaw::SeveralFaces;
        return look.faces.empty() ? Flaw::NoFace : Flaw::TooSmall;
    }
    const FaceLook& face = *large.front();
    steadiness = nextSteadiness(steadiness, face.box);
    if (const Flaw flaw = flawOf(face.measures, options); flaw != Flaw::None)
        return flaw;
    if (!isSteady(steadiness))
        return Flaw::Unsteady;
    if (const Flaw flaw = suits(face, look.timeMs); flaw != Flaw::None)
        return flaw;
    const std::optional<double> nearest = index.nearestTo(face.input);
    if (!isSamePerson(face, nearest, look.timeMs))
        return Flaw::SomebodyElse;
    if (nearest && isCopy(*nearest))
        return Flaw::Copy;
    keep(face, look.timeMs);
    return Flaw::None;
}

Flaw Sitting::suits(const FaceLook& face, qint64 nowMs) const {
    if (isOver())
        return Flaw::Enough;
    return mode == SittingMode::Guided ? suitsStation(face, nowMs) : suitsBin(face);
}

Flaw Sitting::suitsStation(const FaceLook& face, qint64 nowMs) const {
    const Station& station = *asked();
    if (distanceOf(face.measures.sidePx) != station.distance)
        return Flaw::WrongDistance;
    if (!poseMatches(station.pose, face.detector))
        return Flaw::WrongPose;
    if (station.light > 1 && !isSecondLight(face, station.distance))
        return Flaw::SameLight;
    if (!meetsWishes(face.measures) && nowMs - plan.askedMs < wishingMs)
        return Flaw::BelowWish;
    return Flaw::None;
}

Flaw Sitting::suitsBin(const FaceLook& face) const {
    const std::optional<Distance> distance = distanceOf(face.measures.sidePx);
    if (!distance)
        return Flaw::WrongDistance;
    const std::optional<std::size_t> bin = binFor(bins, *distance, face.detector);
    if (!bin)
        return Flaw::WrongPose;
    return isFull(bins.bins[*bin]) ? Flaw::Enough : Flaw::None;
}

/// Compares with the straight looks of the first light at the same distance, or at any when that
/// station was skipped.
bool Sitting::isSecondLight(const FaceLook& face, Distance distance) const {
    const auto compare = [&](bool anyDistance) -> std::optional<bool> {
        std::optional<bool> differs;
        for (const KeptSample& sample : samples) {
            if (sample.light != 1 || sample.pose != Pose::Front ||
                (!anyDistance && sample.distance != distance))
                continue;
            const FaceMeasures& first = sample.face.measures;
            const bool other =
                std::abs(first.mean - face.measures.mean) >= otherBrightness * first.mean ||
                std::abs(first.halvesDiffer - face.measures.halvesDiffer) >= otherHalves;
            differs = differs.value_or(true) && other;
        }
        return differs;
    };
    if (const std::optional<bool> there = compare(false))
        return *there;
    return compare(true).value_or(true);
}

/// Moves on to where the followed person is in this frame, also beside others.
void Sitting::followPerson(const FrameLook& look) {
    if (look.timeMs - person.timeMs > outOfSightMs)
        person.box = {};
    const FaceLook* same = nullptr;
    double best = followedOverlap;
    for (const FaceLook& face : look.faces) {
        if (const double overlap = face::rectIou(person.box, face.box); overlap >= best) {
            same = &face;
            best = overlap;
        }
    }
    if (same) {
        person.box = same->box;
        person.timeMs = look.timeMs;
    }
}

bool Sitting::isSamePerson(const FaceLook& face, std::optional<double> nearest, qint64 nowMs) {
    if (!nearest || face.box == person.box)
        return true;
    person.recognized = *nearest <= options.candidateThreshold ? person.recognized + 1 : 0;
    if (person.recognized < looksToKnowAgain)
        return false;
    person = {face.box, nowMs};
    return true;
}

void Sitting::keep(const FaceLook& face, qint64 nowMs) {
    KeptSample sample{face, *distanceOf(face.measures.sidePx), Pose::Front, 1, 0, nowMs};
    person = {face.box, nowMs};
    if (mode == SittingMode::Guided) {
        sample.pose = asked()->pose;
        sample.light = asked()->light;
        sample.station = plan.current;
        plan = keepForStation(std::move(plan), nowMs);
    } else {
        AutoBins::Bin& bin = bins.bins[*binFor(bins, sample.distance, face.detector)];
        sample.pose = bin.pose;
        ++bin.kept;
    }
    index.add(face.input);
    samples.push_back(std::move(sample));
}

void Sitting::passTime(qint64 nowMs) {
    if (mode == SittingMode::Guided)
        plan = enroll::passTime(std::move(plan), nowMs);
}

void Sitting::skip(qint64 nowMs) {
    if (mode == SittingMode::Guided)
        plan = skipStation(std::move(plan), nowMs);
}

void Sitting::repeat(qint64 nowMs) {
    if (mode != SittingMode::Guided)
        return;
    auto [repeated, station] = repeatStation(std::move(plan), nowMs);
    plan = std::move(repeated);
    dropStation(station);
}

void Sitting::dropStation(std::size_t station) {
    for (std::size_t i = samples.size(); i-- > 0;) {
        if (samples[i].station != station)
            continue;
        samples.erase(samples.begin() + std::ptrdiff_t(i));
        index.remove(i);
    }
}

bool Sitting::isOver() const {
    if (int(samples.size()) >= mostSamples)
        return true;
    return mode == SittingMode::Guided ? asked() == nullptr : allFull(bins);
}

const Station* Sitting::asked() const {
    return mode == SittingMode::Guided ? askedStation(plan) : nullptr;
}

int Sitting::framesLookedAt() const {
    return std::accumulate(counts.begin(), counts.end(), 0);
}

} // namespace enroll

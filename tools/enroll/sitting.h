#pragma once

#include "enroll/frame_look.h"
#include "enroll/sample_index.h"
#include "enroll/station_plan.h"

#include <array>
#include <optional>
#include <vector>

namespace enroll {

/// One sample of a sitting, before it is written.
struct KeptSample {
    FaceLook face;
    Distance distance = Distance::Near;
    Pose pose = Pose::Front;
    int light = 1;
    std::size_t station = 0; ///< Of a guided sitting.
    qint64 timeMs = 0;       ///< Of the caller's clock.
};

enum class SittingMode {
    Guided, ///< One station after the other is asked for.
    Auto,   ///< Whatever comes fills the bins.
};

/// Most samples of a sitting: every one also brings strangers nearer.
inline constexpr int mostSamples = 60;

/// Takes the looks at one person, frame by frame, and keeps those that make good samples. It has no
/// clock: times come with the frames and calls.
///
/// A frame is kept when, in this order, exactly one face is large enough; it has no flaw; it has
/// stood still; it suits what is asked for; it is the person whom the sitting began with; and it is
/// no copy. The person is the one whose box was followed without a break, or one whom the
/// recogniser took for the same three times in a row: when two people were in sight and one leaves,
/// the wrong one may be left.
class Sitting {
public:
    Sitting(SittingMode mode, const face::Options& options, qint64 nowMs);

    /// Looks at one frame. None: it was kept.
    Flaw offer(const FrameLook& look);

    /// Guided: passes a station that has been asked for too long.
    void passTime(qint64 nowMs);
    void skip(qint64 nowMs);
    /// Drops a station's samples and asks for it anew.
    void repeat(qint64 nowMs);

    /// Whether nothing is asked for any more.
    bool isOver() const;

    /// Null in an auto sitting, and at the end.
    const Station* asked() const;
    const StationPlan& stationPlan() const { return plan; }
    const std::vector<KeptSample>& kept() const { return samples; }
    /// How many frames there were of each flaw, by its number; None counts what was kept.
    const std::array<int, flawCount>& tally() const { return counts; }
    int framesLookedAt() const;

private:
    struct Followed {
        cv::Rect box; ///< Where the person was seen last; empty: not followed.
        qint64 timeMs = 0;
        int recognized = 0; ///< Looks in a row at somebody else's place that showed the person.
    };

    Flaw judge(const FrameLook& look);
    Flaw suits(const FaceLook& face, qint64 nowMs) const;
    Flaw suitsStation(const FaceLook& face, qint64 nowMs) const;
    Flaw suitsBin(const FaceLook& face) const;
    bool isSecondLight(const FaceLook& face, Distance distance) const;
    void followPerson(const FrameLook& look);
    bool isSamePerson(const FaceLook& face, std::optional<double> nearest, qint64 nowMs);
    void keep(const FaceLook& face, qint64 nowMs);
    void dropStation(std::size_t station);

    SittingMode mode;
    face::Options options;
    StationPlan plan;
    AutoBins bins;
    Steadiness steadiness;
    Followed person;
    SampleIndex index; ///< Of the samples, in their order.
    std::vector<KeptSample> samples;
    std::array<int, flawCount> counts{};
};

} // namespace enroll

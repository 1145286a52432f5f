#pragma once

#include "enroll/stations.h"

#include <optional>
#include <string>
#include <vector>

namespace enroll {

/// How far one station is.
struct StationState {
    int kept = 0;        ///< Samples that count for it.
    bool passed = false; ///< Skipped, or asked for too long.
};

/// Where a guided sitting stands. Times are milliseconds of the caller's clock.
struct StationPlan {
    std::vector<StationState> states; ///< One for each of allStations().
    std::size_t current = 0;          ///< What is asked for; past the end when nothing is left.
    qint64 askedMs = 0;               ///< Since when.
};

/// A plan that asks for the first station.
StationPlan startPlan(qint64 nowMs);

/// The station that is asked for; null when the plan is through.
const Station* askedStation(const StationPlan& plan);

/// Whether the station has all its samples.
bool isFilled(const StationPlan& plan, std::size_t station);
int filledStations(const StationPlan& plan);

/// Counts a sample for the station that is asked for, and goes on to the next once it is filled.
StationPlan keepForStation(StationPlan plan, qint64 nowMs);

/// Goes on to the next station, whatever the current one has.
StationPlan skipStation(StationPlan plan, qint64 nowMs);

/// Skips the station when it has been asked for longer than stationTimeoutMs.
StationPlan passTime(StationPlan plan, qint64 nowMs);

/// A repetition, and the station whose samples are to be dropped for it.
struct Repetition {
    StationPlan plan;
    std::size_t station = 0;
};

/// Asks anew for the current station, or for the one before while the current one has no sample.
Repetition repeatStation(StationPlan plan, qint64 nowMs);

/// Milliseconds until the current station is passed, 0 or more.
qint64 timeLeftMs(const StationPlan& plan, qint64 nowMs);

/// Fills the stations' kinds with whatever comes, for somebody who just walks about. Straight looks
/// and small turns of the head cannot be told apart, so that a distance has one bin for them.
struct AutoBins {
    struct Bin {
        Distance distance = Distance::Near;
        Pose pose = Pose::Front;
        int wanted = 0;
        int kept = 0;
    };
    std::vector<Bin> bins;
};

AutoBins emptyBins();

/// The bin that takes a face of this detector at this distance; nothing when there is none. A full
/// bin is returned too.
std::optional<std::size_t> binFor(const AutoBins& bins, Distance distance,
                                  const std::string& detector);
bool isFull(const AutoBins::Bin& bin);
bool allFull(const AutoBins& bins);

} // namespace enroll

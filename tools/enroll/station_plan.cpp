#include "enroll/station_plan.h"

#include <algorithm>

namespace enroll {

namespace {

/// Most samples that walking about brings of one station's kind.
constexpr int mostPerStation = 3;

StationPlan ask(StationPlan plan, std::size_t station, qint64 nowMs) {
    plan.current = station;
    plan.askedMs = nowMs;
    return plan;
}

/// Asks for the next station that is neither filled nor passed.
StationPlan askNext(StationPlan plan, qint64 nowMs) {
    std::size_t next = plan.current;
    while (next < plan.states.size() && (plan.states[next].passed || isFilled(plan, next)))
        ++next;
    return ask(std::move(plan), next, nowMs);
}

bool isProfile(Pose pose) {
    return pose == Pose::ProfileLeft || pose == Pose::ProfileRight;
}

} // namespace

StationPlan startPlan(qint64 nowMs) {
    StationPlan plan;
    plan.states.resize(allStations().size());
    plan.askedMs = nowMs;
    return plan;
}

const Station* askedStation(const StationPlan& plan) {
    return plan.current < allStations().size() ? &allStations()[plan.current] : nullptr;
}

bool isFilled(const StationPlan& plan, std::size_t station) {
    return plan.states[station].kept >= allStations()[station].wanted;
}

int filledStations(const StationPlan& plan) {
    int filled = 0;
    for (std::size_t i = 0; i < plan.states.size(); ++i)
        filled += isFilled(plan, i);
    return filled;
}

StationPlan keepForStation(StationPlan plan, qint64 nowMs) {
    if (!askedStation(plan))
        return plan;
    ++plan.states[plan.current].kept;
    return isFilled(plan, plan.current) ? askNext(std::move(plan), nowMs) : plan;
}

StationPlan skipStation(StationPlan plan, qint64 nowMs) {
    if (!askedStation(plan))
        return plan;
    plan.states[plan.current].passed = true;
    return askNext(std::move(plan), nowMs);
}

StationPlan passTime(StationPlan plan, qint64 nowMs) {
    return askedStation(plan) && timeLeftMs(plan, nowMs) == 0 ? skipStation(std::move(plan), nowMs)
                                                              : plan;
}

Repetition repeatStation(StationPlan plan, qint64 nowMs) {
    std::size_t station = plan.current;
    if (station > 0 && (!askedStation(plan) || plan.states[station].kept == 0))
        --station;
    plan.states[station] = {};
    return {ask(std::move(plan), station, nowMs), station};
}

qint64 timeLeftMs(const StationPlan& plan, qint64 nowMs) {
    return std::max<qint64>(plan.askedMs + stationTimeoutMs - nowMs, 0);
}

AutoBins emptyBins() {
    AutoBins bins;
    for (const Station& station : allStations()) {
        const Pose pose = isProfile(station.pose) ? station.pose : Pose::Front;
        const auto same = [&](const AutoBins::Bin& bin) {
            return bin.distance == station.distance && bin.pose == pose;
        };
        auto bin = std::find_if(bins.bins.begin(), bins.bins.end(), same);
        if (bin == bins.bins.end())
            bin = bins.bins.insert(bin, {station.distance, pose, 0, 0});
        bin->wanted += mostPerStation;
    }
    return bins;
}

std::optional<std::size_t> binFor(const AutoBins& bins, Distance distance,
                                  const std::string& detector) {
    for (std::size_t i = 0; i < bins.bins.size(); ++i)
        if (bins.bins[i].distance == distance && poseMatches(bins.bins[i].pose, detector))
            return i;
    return std::nullopt;
}

bool isFull(const AutoBins::Bin& bin) {
    return bin.kept >= bin.wanted;
}

bool allFull(const AutoBins& bins) {
    return std::all_of(bins.bins.begin(), bins.bins.end(), isFull);
}

} // namespace enroll

#include "awareness/awareness_pass.h"

#include "app/identity.h"
#include "body_scenes.h"
#include "processor_time.h"
#include "ratio_table.h"

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr long budgetNanoseconds = 500'000;

FaceOverlay face(const QString& label, const QRect& rect) {
    FaceOverlay overlay;
    overlay.label = label;
    overlay.rect = rect;
    return overlay;
}

struct Room {
    AwarenessState state;
    AwarenessInput input;
    qint64 now = 1'700'000'000'000;

    Room() {
        input.depth = scenes::threePeople().frame();
        input.imageSize = scenes::colorSize;
        input.faceOverlays = {face(identity::owner, QRect(880, 210, 110, 110)),
                              face(identity::unknown, QRect(360, 285, 90, 90)),
                              face(identity::unknown, QRect(1480, 160, 120, 120))};
        input.voiceStatus.hasDirection = true;
        input.voiceStatus.fresh = true;
        input.voiceStatus.lowConfidence = false;
        for (int i = 0; i < 60; ++i)
            pass(); // until every track is stable and the view has settled
    }

    void pass() {
        now += 33;
        benchmark::DoNotOptimize(runAwarenessPass(state, input, [this] { return now; }));
    }
};

const RatioTable::Claim wholePass({
    .what = "awareness pass, three people",
    .against = "0.5 ms of processor time",
    .atMost = 1.0,
    .prepare =
        [] {
            const auto room = std::make_shared<Room>();
            return Contest{[room] { room->pass(); }, [] { spendProcessorTime(budgetNanoseconds); }};
        },
});

} // namespace

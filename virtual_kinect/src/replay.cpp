#include "replay.h"

#include <cmath>
#include <stdexcept>
#include <utility>

namespace virtual_kinect {

namespace {

using std::chrono::microseconds;

class ReplayedSource : public FrameSource {
public:
    ReplayedSource(std::unique_ptr<FrameSource> replayed, const Replay& how)
        : source(std::move(replayed)), replay(how), first(frameAt(how.start_s)),
          begin(source->timeOf(first)) {}

    std::string serialNumber() const override { return source->serialNumber(); }
    Calibration calibration() const override { return source->calibration(); }
    std::uint64_t framesInARound() const override { return source->framesInARound(); }

    bool ends(std::uint64_t number) const override {
        return replay.once && first + number >= source->framesInARound();
    }

    microseconds timeOf(std::uint64_t number) const override {
        const microseconds since = source->timeOf(first + number) - begin;
        return microseconds(std::llround(static_cast<double>(since.count()) / replay.speed));
    }

    void render(std::uint64_t number, FrameSet& out) override {
        source->render(first + number, out);
    }

private:
    /// The first frame of the first round that is not before that time.
    std::uint64_t frameAt(double seconds) const {
        const microseconds wanted(std::llround(seconds * 1e6));
        for (std::uint64_t number = 0; number < source->framesInARound(); ++number)
            if (source->timeOf(number) >= wanted)
                return number;
        throw std::runtime_error("it ends before the wanted start");
    }

    const std::unique_ptr<FrameSource> source;
    const Replay replay;
    const std::uint64_t first;
    const microseconds begin;
};

} // namespace

std::unique_ptr<FrameSource> makeReplayedSource(std::unique_ptr<FrameSource> source,
                                                const Replay& replay) {
    if (replay == Replay{})
        return source;
    return std::make_unique<ReplayedSource>(std::move(source), replay);
}

} // namespace virtual_kinect

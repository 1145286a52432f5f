#include "frame_source.h"

namespace virtual_kinect {

namespace {

/// A plain wall.
class PlainRoom : public FrameSource {
public:
    std::string serialNumber() const override { return "virtual-room"; }

    std::chrono::microseconds timeOf(std::uint64_t number) const override {
        return std::chrono::microseconds(number * 1'000'000 / 30);
    }

    void render(std::uint64_t number, FrameSet& out) override {
        out.colorWidth = 1920;
        out.colorHeight = 1080;
        out.bgrx.assign(std::size_t{1920} * 1080 * 4, static_cast<std::uint8_t>(96 + number % 64));
        out.depthWidth = 512;
        out.depthHeight = 424;
        out.infrared.assign(std::size_t{512} * 424, 800.0F);
        out.infrared.front() = 4000.0F;
        out.depth.assign(std::size_t{512} * 424, 4400.0F);
    }
};

} // namespace

std::unique_ptr<FrameSource> makeRoomSource() {
    return std::make_unique<PlainRoom>();
}

} // namespace virtual_kinect

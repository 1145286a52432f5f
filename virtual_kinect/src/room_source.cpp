#include "frame_source.h"
#include "room_background.h"
#include "room_compose.h"
#include "room_optics.h"
#include "room_person.h"
#include "room_story.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <future>

namespace virtual_kinect {
namespace {

using namespace room;

/// Ready-made noisy copies of the empty room; frames take them in turn.
constexpr std::size_t colorCopies = 3, depthCopies = 8;

/// Grey levels of the colour camera's noise, as standard deviation.
constexpr double colorNoise = 1.6;

/// Share of readings that an empty room loses, in standard deviations of its noise.
constexpr float lostInTheOpen = 3.0F, lostAtSteps = 0.2F;
/// Neighbours that differ by more than this (in millimetres) belong to different things.
constexpr float minStep_mm = 60;
/// The sensor's own light reaches the corners of its picture badly: beyond this distance from the
/// middle, as a share of the half diagonal, readings get lost, all of them at 1.
constexpr float wellLit = 0.86F;

/// A tile of colour noise, larger than a quarter of the picture so that copies can start elsewhere.
cv::Mat noiseTile() {
    constexpr int spare = 64;
    cv::RNG random(100);
    cv::Mat tile(colorHeight / 4 + spare, colorWidth / 4 + spare, CV_8SC4);
    random.fill(tile, cv::RNG::NORMAL, cv::Scalar::all(0), cv::Scalar(1, 1, 1, 0) * colorNoise);
    return tile;
}

cv::Mat noisyColor(const cv::Mat& clean, const cv::Mat& tile, int shift) {
    const cv::Rect piece(shift, 2 * shift, colorWidth / 4, colorHeight / 4);
    cv::Mat noisy(clean.size(), clean.type());
    for (int y = 0; y < clean.rows; y += piece.height)
        for (int x = 0; x < clean.cols; x += piece.width) {
            const cv::Rect area(x, y, piece.width, piece.height);
            cv::add(clean(area), tile(piece), noisy(area), cv::noArray(), CV_8U);
        }
    return noisy;
}

bool besideAStep(const cv::Mat& depth, int y, int x) {
    const float here = depth.at<float>(y, x);
    const auto far = [&](int row, int column) {
        return row >= 0 && row < depth.rows && column >= 0 && column < depth.cols &&
               std::abs(depth.at<float>(row, column) - here) > minStep_mm;
    };
    return far(y, x - 1) || far(y, x + 1) || far(y - 1, x) || far(y + 1, x);
}

/// How far out in the badly lit corners a pixel lies, 0 to 1.
float darkness(int y, int x) {
    const float dx = (static_cast<float>(x) + 0.5F) / (depthWidth / 2.0F) - 1;
    const float dy = (static_cast<float>(y) + 0.5F) / (depthHeight / 2.0F) - 1;
    const float out = std::sqrt((dx * dx + dy * dy) / 2);
    return std::clamp((out - wellLit) / (1 - wellLit), 0.0F, 1.0F);
}

struct DepthPictures {
    cv::Mat depth, infrared;
};

DepthPictures noisyDepth(const Background& room, const NoiseTable& noise, std::uint32_t salt) {
    DepthPictures pictures{room.depth.clone(), room.infrared.clone()};
    for (int y = 0; y < depthHeight; ++y) {
        for (int x = 0; x < depthWidth; ++x) {
            const auto index = static_cast<std::uint32_t>(y * depthWidth + x) + salt;
            const float deviation = noise.at(index);
            const float dark = darkness(y, x);
            float& depth = pictures.depth.at<float>(y, x);
            float& infrared = pictures.infrared.at<float>(y, x);
            infrared *= (1 - 0.6F * dark) * (1 + 0.04F * noise.at(index + 7919));
            infrared = std::max(0.0F, infrared + 6 * noise.at(index + 104729));
            if (depth <= 0)
                continue;
            const float limit = besideAStep(room.depth, y, x) ? lostAtSteps : lostInTheOpen;
            if (deviation > limit - 6 * dark)
                depth = 0;
            else
                depth += depthNoise_mm(depth / 1000) * deviation;
        }
    }
    return pictures;
}

class Room : public FrameSource {
public:
    Room() : noise(1) {
        auto owner = std::async(std::launch::async, [] { return PersonSprites(Person::Owner); });
        auto stranger =
            std::async(std::launch::async, [] { return PersonSprites(Person::Stranger); });
        const Background background = paintBackground();
        const cv::Mat tile = noiseTile();
        for (std::size_t i = 0; i < colorCopies; ++i)
            colors[i] = noisyColor(background.color, tile, static_cast<int>(i * 13));
        for (std::size_t i = 0; i < depthCopies; ++i)
            depths[i] = noisyDepth(background, noise, static_cast<std::uint32_t>(i * 8191));
        sprites.reserve(2);
        sprites.push_back(owner.get());
        sprites.push_back(stranger.get());
    }

    std::string serialNumber() const override { return "virtual-room"; }

    Calibration calibration() const override { return pinholeCalibration(); }

    std::uint64_t framesInARound() const override {
        return static_cast<std::uint64_t>(std::lround(loopSeconds * framesPerSecond));
    }

    std::chrono::microseconds timeOf(std::uint64_t number) const override {
        return std::chrono::microseconds(number * 1'000'000 / framesPerSecond);
    }

    void render(std::uint64_t number, FrameSet& out) override {
        out.colorWidth = colorWidth;
        out.colorHeight = colorHeight;
        out.bgrx.resize(std::size_t{colorWidth} * colorHeight * 4);
        out.depthWidth = depthWidth;
        out.depthHeight = depthHeight;
        out.infrared.resize(std::size_t{depthWidth} * depthHeight);
        out.depth.resize(out.infrared.size());
        cv::Mat color(colorHeight, colorWidth, CV_8UC4, out.bgrx.data());
        cv::Mat infrared(depthHeight, depthWidth, CV_32F, out.infrared.data());
        cv::Mat depth(depthHeight, depthWidth, CV_32F, out.depth.data());

        // Counted within the loop so that every round of the story shows the same bytes.
        const double seconds = storySeconds(number);
        const auto step = static_cast<std::uint32_t>(std::lround(seconds * framesPerSecond));
        colors[step % colorCopies].copyTo(color);
        depths[step % depthCopies].depth.copyTo(depth);
        depths[step % depthCopies].infrared.copyTo(infrared);
        for (const PersonMoment& moment : peopleAt(seconds)) {
            const PersonSprites& person = sprites[moment.who == Person::Owner ? 0 : 1];
            const Sprite& body = person.body(moment);
            const Sprite& head = person.head(moment);
            const auto at = [&](const Sprite& sprite, double height_m) {
                return Placement{project({moment.x_m, height_m + moment.lift_m, moment.z_m}),
                                 focalPixels / moment.z_m / sprite.pixelsPerMeter};
            };
            const Placement bodyPlace = at(body, 0), headPlace = at(head, headHeight_m(moment.who));
            composeColor(body, bodyPlace, color);
            composeColor(head, headPlace, color);
            composeDepth(body, bodyPlace, moment.z_m, noise, step * 6113, depth, infrared);
            composeDepth(head, headPlace, moment.z_m, noise, step * 6113 + 31, depth, infrared);
        }
    }

private:
    NoiseTable noise;
    std::vector<PersonSprites> sprites; ///< the owner, the stranger
    std::array<cv::Mat, colorCopies> colors;
    std::array<DepthPictures, depthCopies> depths;
};

} // namespace

std::unique_ptr<FrameSource> makeRoomSource() {
    return std::make_unique<Room>();
}

} // namespace virtual_kinect

#pragma once

#include <opencv2/core.hpp>

#include <vector>

/// Pictures of people as the built-in room needs them: small surfaces in three dimensions, drawn
/// once at start-up into sprites that hold colour, infrared reflectance and relief.
namespace virtual_kinect::room {

/// A curved patch: a grid of points in metres (x right, y up, z towards the viewer, seen from the
/// front) with a texture stretched over it.
struct Surface {
    int columns = 0, rows = 0;
    std::vector<cv::Vec3f> points; ///< rows x columns, row by row
    /// Blue, green, red and infrared reflectance, 0 to 255; column 0 to the last spans its width,
    /// row 0 to the last its height.
    cv::Mat texture;
};

/// What a person looks like from one side, without perspective.
struct Sprite {
    cv::Mat color;    ///< CV_8UC4, blue, green, red weighted by coverage; coverage, 0 to 255
    cv::Mat infrared; ///< CV_8U, reflectance times shading, 0 to 255
    cv::Mat relief;   ///< CV_32F, metres in front of the person's axis; only where covered
    double pixelsPerMeter = 1;
    cv::Point2d origin; ///< the pixel that shows the surfaces' origin
};

/// The part of a surface's own coordinates that a sprite shows, in metres.
struct SpriteFrame {
    double left = 0, right = 0, bottom = 0, top = 0;
    double pixelsPerMeter = 1;
};

/// Draws surfaces, nearest on top, into one sprite. `yaw` turns them about the vertical axis, in
/// radians; positive turns the front towards the picture's right.
class SpriteCanvas {
public:
    SpriteCanvas(const SpriteFrame& area, double yaw);
    void draw(const Surface& surface);
    /// What was drawn, without the empty margins. At least one surface must show.
    Sprite finish() const;

private:
    struct Corner {
        float x, y, z, u, v, light;
    };
    std::vector<Corner> project(const Surface& surface) const;
    void fillTriangle(const Corner& a, const Corner& b, const Corner& c, const cv::Mat& texture);
    void paintPixel(int y, int x, float u, float v, float light, const cv::Mat& texture);

    SpriteFrame area;
    double scale;
    float cosine, sine;
    cv::Mat color, infrared, nearest;
};

/// Mirror image of a sprite: what turning the other way looks like.
Sprite mirrored(const Sprite& sprite);

/// Smooth random values around 0 (about -1 to 1) of the given size, with one independent value
/// every `cell` pixels; the same for the same seed.
cv::Mat smoothNoise(cv::Size size, cv::Size2d cell, std::uint64_t seed);

} // namespace virtual_kinect::room

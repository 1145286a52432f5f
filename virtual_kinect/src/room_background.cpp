#include "room_background.h"

#include "room_optics.h"
#include "room_person.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace virtual_kinect::room {
namespace {

constexpr double wall_m = 4.5, sideWall_m = 3.75, ceiling_m = 3.4;
constexpr int grainSize = 512; ///< pixels of the repeated grain picture

struct Material {
    cv::Vec3f color; ///< blue, green, red
    float reflectance = 120;
    float grain = 0.03F;        ///< strength of its texture
    float grainsPerMeter = 300; ///< pixels of the grain picture that a metre takes
    bool returnsDepth = true;
};

/// Paints flat pieces of the room into the three pictures, the farthest first.
class Painter {
public:
    Painter() : grain(smoothNoise({grainSize, grainSize}, {4, 4}, 7)) {
        grain += 0.6F * smoothNoise({grainSize, grainSize}, {32, 32}, 8);
        room.color = cv::Mat::zeros(colorHeight, colorWidth, CV_8UC4);
        room.depth = cv::Mat::zeros(depthHeight, depthWidth, CV_32F);
        room.infrared = cv::Mat::zeros(depthHeight, depthWidth, CV_32F);
    }

    void quad(const std::array<cv::Point3d, 4>& corners, const Material& material,
              float light = 1.0F) {
        paintColor(corners, material, light);
        paintDepth(corners, material);
    }

    /// The faces of an upright box that the sensor sees.
    void box(double left, double right, double bottom, double top, double front, double back,
             const Material& material) {
        if (right < 0)
            quad({{{right, top, front},
                   {right, top, back},
                   {right, bottom, back},
                   {right, bottom, front}}},
                 material, 0.75F);
        if (left > 0)
            quad({{{left, top, front},
                   {left, top, back},
                   {left, bottom, back},
                   {left, bottom, front}}},
                 material, 0.75F);
        if (top < sensorHeight_m)
            quad({{{left, top, back}, {right, top, back}, {right, top, front}, {left, top, front}}},
                 material, 1.1F);
        sheet(left, right, bottom, top, front, material, 0.92F);
    }

    /// An upright rectangle that faces the sensor.
    void sheet(double left, double right, double bottom, double top, double z,
               const Material& material, float light = 1.0F) {
        quad({{{left, top, z}, {right, top, z}, {right, bottom, z}, {left, bottom, z}}}, material,
             light);
    }

    Background room;

private:
    using Corners = std::array<cv::Point3d, 4>;

    /// Coverage of the picture of `size` by the outline, within `bounds` only.
    static cv::Mat maskOf(const Corners& corners, cv::Size size, cv::Rect& bounds) {
        constexpr int shift = 4;
        std::vector<cv::Point2f> outline;
        for (const cv::Point3d& corner : corners) {
            const cv::Point2d p = project(corner);
            outline.emplace_back(static_cast<float>(p.x * size.width / colorWidth - 0.5),
                                 static_cast<float>(p.y * size.height / colorHeight - 0.5));
        }
        bounds = cv::boundingRect(outline) + cv::Size(4, 4) - cv::Point(2, 2);
        bounds &= cv::Rect({}, size);
        std::vector<cv::Point> inside;
        for (const cv::Point2f& p : outline)
            inside.emplace_back(cvRound((p.x - static_cast<float>(bounds.x)) * (1 << shift)),
                                cvRound((p.y - static_cast<float>(bounds.y)) * (1 << shift)));
        cv::Mat mask = cv::Mat::zeros(bounds.size(), CV_8U);
        if (!bounds.empty())
            cv::fillConvexPoly(mask, inside, cv::Scalar(255), cv::LINE_AA, shift);
        return mask;
    }

    /// The plane through the corners as normal . p = 1 (none of ours runs through the sensor).
    static cv::Vec3d planeOf(const Corners& corners) {
        const cv::Point3d toEye(0, sensorHeight_m, 0);
        const cv::Vec3d a(corners[0] - toEye);
        const cv::Vec3d normal =
            cv::Vec3d(corners[1] - corners[0]).cross(cv::Vec3d(corners[2] - corners[0]));
        return normal / normal.dot(a);
    }

    void paintColor(const Corners& corners, const Material& material, float light) {
        cv::Rect bounds;
        const cv::Mat mask = maskOf(corners, room.color.size(), bounds);
        const cv::Vec3d plane = planeOf(corners);
        for (int v = bounds.y; v < bounds.y + bounds.height; ++v) {
            const double rayY = -(v + 0.5 - colorHeight / 2.0) / focalPixels;
            for (int u = bounds.x; u < bounds.x + bounds.width; ++u) {
                const int cover = mask.at<uchar>(v - bounds.y, u - bounds.x);
                if (cover == 0)
                    continue;
                const double rayX = (u + 0.5 - colorWidth / 2.0) / focalPixels;
                const double z = 1 / (plane[0] * rayX + plane[1] * rayY + plane[2]);
                const float noise = grainAt(rayX * z, rayY * z, z, material.grainsPerMeter);
                const float shade = light * (1 + material.grain * noise);
                auto& pixel = room.color.at<cv::Vec4b>(v, u);
                for (int i = 0; i < 3; ++i) {
                    const float before = pixel[i];
                    const float painted = material.color[i] * shade;
                    pixel[i] = cv::saturate_cast<uchar>(
                        before + (painted - before) * static_cast<float>(cover) / 255);
                }
            }
        }
    }

    void paintDepth(const Corners& corners, const Material& material) {
        cv::Rect bounds;
        const cv::Mat mask = maskOf(corners, room.depth.size(), bounds);
        const cv::Vec3d plane = planeOf(corners);
        for (int v = bounds.y; v < bounds.y + bounds.height; ++v) {
            const double rayY =
                -((v + 0.5) * colorHeight / depthHeight - colorHeight / 2.0) / focalPixels;
            for (int u = bounds.x; u < bounds.x + bounds.width; ++u) {
                if (mask.at<uchar>(v - bounds.y, u - bounds.x) < 128)
                    continue;
                const double rayX =
                    ((u + 0.5) * colorWidth / depthWidth - colorWidth / 2.0) / focalPixels;
                const auto z =
                    static_cast<float>(1 / (plane[0] * rayX + plane[1] * rayY + plane[2]));
                room.depth.at<float>(v, u) = material.returnsDepth ? z * 1000 : 0;
                room.infrared.at<float>(v, u) = infraredReturn(material.reflectance, z);
            }
        }
    }

    float grainAt(double x, double y, double z, float perMetre) const {
        // Which two coordinates run along the surface does not matter for a grain.
        const int column = cvFloor((x + 0.7 * z) * perMetre), row = cvFloor((y + z) * perMetre);
        // Every second repetition is mirrored, so that no seam shows.
        const auto folded = [](int i) {
            const int within = i & (2 * grainSize - 1);
            return within < grainSize ? within : 2 * grainSize - 1 - within;
        };
        return grain.at<float>(folded(row), folded(column));
    }

    cv::Mat grain;
};

void paintShell(Painter& painter) {
    const Material wall{.color = {176, 190, 198}, .reflectance = 150, .grain = 0.004F};
    const Material ceiling{.color = {205, 212, 215}, .reflectance = 150, .grain = 0.01F};
    // Deep pile of black fibre: no light comes back from it, which is why nobody's feet touch
    // anything in depth.
    const Material carpet{.color = {66, 58, 62},
                          .reflectance = 6,
                          .grain = 0.22F,
                          .grainsPerMeter = 260,
                          .returnsDepth = false};
    const Material skirting{.color = {215, 222, 226}, .reflectance = 150, .grain = 0.01F};
    painter.sheet(-sideWall_m, sideWall_m, 0, ceiling_m, wall_m, wall);
    painter.sheet(-sideWall_m, sideWall_m, 0, 0.1, wall_m - 0.01, skirting);
    for (const double side : {-sideWall_m, sideWall_m})
        painter.quad({{{side, ceiling_m, wall_m},
                       {side, ceiling_m, 3.85},
                       {side, 0, 3.85},
                       {side, 0, wall_m}}},
                     wall, 0.82F);
    painter.quad({{{-4.2, ceiling_m, wall_m},
                   {4.2, ceiling_m, wall_m},
                   {4.2, ceiling_m, 3.85},
                   {-4.2, ceiling_m, 3.85}}},
                 ceiling);
    painter.quad({{{-6, 0, 1.0}, {6, 0, 1.0}, {sideWall_m, 0, wall_m}, {-sideWall_m, 0, wall_m}}},
                 carpet);
}

void paintWindow(Painter& painter) {
    const double z = wall_m - 0.02;
    const Material frame{.color = {225, 230, 232}, .reflectance = 150, .grain = 0.01F};
    // Glass lets the sensor's light out of the room. The sky has little grain: with more, a cascade
    // takes a patch of it for a face where the crop around a body is equalised.
    const Material sky{
        .color = {236, 214, 190}, .reflectance = 5, .grain = 0.004F, .returnsDepth = false};
    const Material hill{
        .color = {120, 160, 130}, .reflectance = 5, .grain = 0.08F, .returnsDepth = false};
    const Material curtain{.color = {120, 140, 175}, .reflectance = 130, .grain = 0.06F};
    painter.sheet(-1.30, 0.60, 1.15, 2.75, z, frame);
    for (const double left : {-1.24, -0.32}) {
        painter.sheet(left, left + 0.86, 1.21, 2.69, z - 0.01, sky);
        painter.sheet(left, left + 0.86, 1.21, 1.55, z - 0.01, hill);
    }
    for (const double left : {-1.62, 0.56}) {
        for (int fold = 0; fold < 6; ++fold)
            painter.sheet(left + 0.06 * fold, left + 0.06 * (fold + 1), 0.95, 2.9, z - 0.06,
                          curtain, fold % 2 == 0 ? 0.92F : 1.05F);
    }
}

void paintShelf(Painter& painter) {
    const Material wood{.color = {70, 105, 150}, .reflectance = 110, .grain = 0.08F};
    const Material inside{.color = {45, 70, 100}, .reflectance = 90, .grain = 0.05F};
    constexpr double left = 2.05, right = 3.15, front = 4.15;
    painter.box(left, right, 0, 2.1, front, wall_m, wood);
    cv::RNG random(5);
    for (int board = 0; board < 5; ++board) {
        const double floor = 0.08 + 0.4 * board;
        painter.sheet(left + 0.05, right - 0.05, floor, floor + 0.36, front + 0.2, inside);
        double x = left + 0.07;
        const double end = right - 0.1 - random.uniform(0.0, 0.35);
        while (x < end) {
            const double width = random.uniform(0.025, 0.06);
            const Material book{.color = {static_cast<float>(random.uniform(40, 190)),
                                          static_cast<float>(random.uniform(40, 170)),
                                          static_cast<float>(random.uniform(50, 200))},
                                .reflectance = 110};
            painter.sheet(x, x + width, floor, floor + random.uniform(0.2, 0.31), front + 0.05,
                          book);
            x += width + 0.004;
        }
    }
}

void paintSofa(Painter& painter) {
    const Material cloth{.color = {125, 108, 72}, .reflectance = 125, .grain = 0.07F};
    const Material cushion{.color = {70, 140, 205}, .reflectance = 140, .grain = 0.06F};
    painter.box(-0.95, 1.25, 0.12, 0.88, 4.25, wall_m, cloth);
    painter.box(-0.95, 1.25, 0.12, 0.46, 3.92, 4.25, cloth);
    painter.box(-1.15, -0.93, 0.08, 0.64, 3.90, 4.4, cloth);
    painter.box(1.23, 1.45, 0.08, 0.64, 3.90, 4.4, cloth);
    painter.quad(
        {{{-0.75, 0.86, 4.22}, {-0.35, 0.83, 4.22}, {-0.38, 0.46, 4.12}, {-0.78, 0.48, 4.12}}},
        cushion);
}

void paintSideboardAndPlant(Painter& painter) {
    const Material wood{.color = {150, 168, 182}, .reflectance = 130, .grain = 0.05F};
    const Material door{.color = {135, 152, 168}, .reflectance = 130, .grain = 0.05F};
    // A metal knob throws the sensor's own light straight back.
    const Material knob{.color = {190, 195, 200}, .reflectance = 255};
    painter.box(-2.85, -1.45, 0.12, 0.78, 4.05, wall_m, wood);
    for (const double left : {-2.80, -2.34, -1.88}) {
        painter.sheet(left, left + 0.40, 0.17, 0.73, 4.04, door);
        painter.sheet(left + 0.34, left + 0.37, 0.44, 0.47, 4.03, knob);
    }
    const Material pot{.color = {60, 85, 140}, .reflectance = 120};
    painter.box(-3.42, -3.10, 0, 0.36, 4.0, 4.25, pot);
    cv::RNG random(9);
    for (int leaf = 0; leaf < 46; ++leaf) {
        const double x = -3.26 + random.uniform(-0.30, 0.30), y = random.uniform(0.4, 1.5);
        const double tip = random.uniform(-0.13, 0.13), z = 4.05 + random.uniform(0.0, 0.2);
        const Material green{.color = {static_cast<float>(random.uniform(45, 80)),
                                       static_cast<float>(random.uniform(95, 150)),
                                       static_cast<float>(random.uniform(55, 90))},
                             .reflectance = 170};
        painter.quad({{{x, y + 0.14, z},
                       {x + 0.035 + tip, y, z},
                       {x + tip, y - 0.13, z},
                       {x - 0.035 + tip / 2, y, z}}},
                     green, static_cast<float>(random.uniform(0.75, 1.1)));
    }
}

void paintLamp(Painter& painter) {
    const Material metal{.color = {60, 62, 66}, .reflectance = 150};
    const Material shade{.color = {165, 205, 232}, .reflectance = 160, .grain = 0.02F};
    painter.box(1.56, 1.84, 0, 0.04, 4.1, 4.35, metal);
    painter.sheet(1.685, 1.715, 0.04, 1.5, 4.22, metal);
    painter.quad({{{1.58, 1.86, 4.2}, {1.82, 1.86, 4.2}, {1.92, 1.48, 4.2}, {1.48, 1.48, 4.2}}},
                 shade);
}

/// A printed face larger than life, high on the wall so that it meets nobody's head.
void paintPoster(Painter& painter) {
    const double left = posterFacePlace.x - 0.4, right = posterFacePlace.x + 0.4,
                 z = posterFacePlace.z;
    constexpr double bottom = 1.88, top = 2.88;
    constexpr double enlargement = 1.75;
    const Material rim{.color = {40, 40, 44}, .reflectance = 90};
    const Material paper{.color = {150, 175, 120}, .reflectance = 150, .grain = 0.02F};
    const Material dress{.color = {110, 60, 70}, .reflectance = 120, .grain = 0.05F};
    const Material neck{.color = {125, 148, 182}, .reflectance = 150, .grain = 0.02F};
    painter.sheet(left - 0.03, right + 0.03, bottom - 0.03, top + 0.03, z, rim);
    painter.sheet(left, right, bottom, top, z, paper);
    painter.quad({{{-2.28, 2.28, z}, {-2.16, 2.28, z}, {-2.13, 2.08, z}, {-2.31, 2.08, z}}}, neck);
    painter.quad({{{-2.40, 2.12, z}, {-2.04, 2.12, z}, {-1.90, bottom, z}, {-2.54, bottom, z}}},
                 dress);

    SpriteCanvas canvas({-0.12, 0.12, -0.14, 0.14, enlargement * focalPixels / wall_m}, 0);
    for (const Surface& part : makeHead(posterFace()))
        canvas.draw(part);
    const Sprite face = canvas.finish();
    const cv::Point2d middle = project(posterFacePlace);
    const cv::Point corner(cvRound(middle.x - face.origin.x), cvRound(middle.y - face.origin.y));
    cv::Mat target = painter.room.color(cv::Rect(corner, face.color.size()));
    for (int y = 0; y < target.rows; ++y) {
        for (int x = 0; x < target.cols; ++x) {
            const auto& ink = face.color.at<cv::Vec4b>(y, x);
            auto& pixel = target.at<cv::Vec4b>(y, x);
            for (int i = 0; i < 3; ++i)
                pixel[i] = cv::saturate_cast<uchar>(ink[i] + pixel[i] * (255 - ink[3]) / 255);
        }
    }
}

} // namespace

Background paintBackground() {
    Painter painter;
    paintShell(painter);
    paintWindow(painter);
    paintPoster(painter);
    paintShelf(painter);
    paintSideboardAndPlant(painter);
    paintSofa(painter);
    paintLamp(painter);
    return painter.room;
}

} // namespace virtual_kinect::room

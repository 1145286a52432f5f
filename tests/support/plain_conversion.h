#pragma once

#include <QImage>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>

/// The frame conversions as one would first write them, a pixel at a time. Tests hold the program's
/// own against them, benchmarks measure its lead.
namespace plain {

inline float floatAt(const unsigned char* frame, std::size_t index) {
    float value = 0.0F;
    std::memcpy(&value, frame + index * 4, sizeof value);
    return value;
}

inline std::size_t pixelIndex(int x, int y, int width) {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
           static_cast<std::size_t>(x);
}

inline QImage color(const unsigned char* frame, int width, int height, bool rgbx) {
    QImage image(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y) {
        uchar* out = image.scanLine(y);
        for (int x = 0; x < width; ++x) {
            const unsigned char* in = frame + pixelIndex(x, y, width) * 4;
            out[x * 3] = in[rgbx ? 0 : 2];
            out[x * 3 + 1] = in[1];
            out[x * 3 + 2] = in[rgbx ? 2 : 0];
        }
    }
    return image;
}

inline QImage infrared(const unsigned char* frame, int width, int height) {
    const auto valid = [](float value) { return std::isfinite(value) && value > 0.0F; };
    const std::size_t count = pixelIndex(0, height, width);
    double minimum = std::numeric_limits<double>::max();
    double maximum = 0.0;
    bool found = false;
    for (std::size_t i = 0; i < count; ++i) {
        const float value = floatAt(frame, i);
        if (!valid(value))
            continue;
        found = true;
        if (value < minimum)
            minimum = value;
        if (value > maximum)
            maximum = value;
    }
    if (!found || !(maximum > minimum))
        return {};
    double range = maximum - minimum;
    const double ceiling = minimum + (0.85 * range > 1200.0 ? 0.85 * range : 1200.0);
    if (ceiling < maximum) {
        maximum = ceiling;
        range = ceiling - minimum;
    }
    const double scale = range > 1.0 ? 255.0 / range : 255.0;

    QImage image(width, height, QImage::Format_RGB888);
    for (int y = 0; y < height; ++y) {
        uchar* out = image.scanLine(y);
        for (int x = 0; x < width; ++x) {
            const float value = floatAt(frame, pixelIndex(x, y, width));
            double level = 0.0;
            if (valid(value))
                level = value > maximum ? range * scale : (value - minimum) * scale;
            int grey = static_cast<int>(level);
            grey = grey < 0 ? 0 : grey > 255 ? 255 : grey;
            out[x * 3] = out[x * 3 + 1] = out[x * 3 + 2] = static_cast<uchar>(grey);
        }
    }
    return image;
}

inline uchar jetChannel(float level) {
    if (level >= 1.0F)
        return 255;
    return level > 0.0F ? static_cast<uchar>(level * 255.0F) : uchar{0};
}

/// One depth in millimetres to R, G, B; says whether it was valid.
inline bool depthColor(float depth, uchar* out) {
    if (!std::isfinite(depth) || depth < 250.0F || depth > 8000.0F) {
        out[0] = out[1] = out[2] = 0;
        return false;
    }
    if (depth >= 4500.0F) {
        out[0] = out[1] = 0;
        out[2] = 127;
        return true;
    }
    if (depth <= 500.0F) {
        out[0] = 127;
        out[1] = out[2] = 0;
        return true;
    }
    const auto nearness =
        static_cast<uchar>(static_cast<int>(255.0F - ((depth - 500.0F) / 4000.0F) * 255.0F));
    const float t = (static_cast<float>(nearness) / 255.0F) * 4.0F;
    out[0] = jetChannel(1.5F - std::fabs(t - 3.0F));
    out[1] = jetChannel(1.5F - std::fabs(t - 2.0F));
    out[2] = jetChannel(1.5F - std::fabs(t - 1.0F));
    return true;
}

inline QImage depth(const unsigned char* frame, int width, int height) {
    QImage image(width, height, QImage::Format_RGB888);
    bool anyValid = false;
    for (int y = 0; y < height; ++y) {
        uchar* out = image.scanLine(y);
        for (int x = 0; x < width; ++x) {
            const bool valid = depthColor(floatAt(frame, pixelIndex(x, y, width)), out + x * 3);
            anyValid = anyValid || valid;
        }
    }
    return anyValid ? image : QImage();
}

} // namespace plain

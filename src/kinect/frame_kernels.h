#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// The inner loops of the frame conversion. They are compiled several times, for different
/// instruction sets, and all of those give the same bytes. Source pixels need no alignment.

/// How infrared values become grey: see FrameConverter::infrared().
struct InfraredScale {
    double minimum = 0.0;
    double maximum = 0.0; ///< Values above it give range * scale.
    double range = 0.0;
    double scale = 0.0;
};

/// The smallest and largest valid value; found only if there was a valid one.
struct InfraredRange {
    float minimum = 0.0F;
    float maximum = 0.0F;
    bool found = false;
};

/// Colours of the depth ramp by nearness 0 (far) to 255 (near), and what stands for no reading.
/// Each holds R, G, B and a byte that is not used, so that one store of four bytes writes a pixel.
struct DepthPalette {
    static constexpr float near_mm = 500.0F; ///< This and all that is nearer has nearness 255.
    static constexpr float far_mm = 4500.0F; ///< This and all that is farther has nearness 0.
    static constexpr int noReading = 256;
    unsigned char colors[257][4];
};

struct FrameKernels {
    const char* name; ///< For tests and benchmarks.
    /// Four source bytes a pixel to R, G, B; the fourth is dropped. Without `rgbx` the source is
    /// B, G, R, X.
    void (*packColor)(const unsigned char* source, unsigned char* rgb, std::size_t pixels,
                      bool rgbx);
    /// Range of the valid (finite, positive) floats.
    InfraredRange (*infraredRange)(const unsigned char* floats, std::size_t pixels);
    /// One float a pixel to grey R, G, B.
    void (*infraredPixels)(const unsigned char* floats, unsigned char* rgb, std::size_t pixels,
                           const InfraredScale& scale);
    /// One float a pixel (millimetres) to R, G, B. Says whether any was a valid depth.
    bool (*depthPixels)(const unsigned char* floats, unsigned char* rgb, std::size_t pixels,
                        const DepthPalette& palette);
};

/// All kernels that this processor can run, the fastest first; never empty.
std::span<const FrameKernels> supportedFrameKernels();
